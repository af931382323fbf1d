#include "base/JsonRepair.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "base/NumberText.h"

namespace vmr {

namespace {
constexpr std::string_view numberCharacters = "+-.0123456789Ee";

bool fitsInteger(std::string_view token) {
    const char* end = token.data() + token.size();
    std::int64_t whole = 0;
    std::uint64_t positive = 0;
    return std::from_chars(token.data(), end, whole).ec == std::errc() ||
           std::from_chars(token.data(), end, positive).ec == std::errc();
}

// Whether `token` follows JSON's own grammar of numbers, which is narrower than `parseDouble`'s.
bool isJsonNumber(std::string_view token) {
    const auto digits = [&token] {
        const std::size_t count = std::min(token.find_first_not_of("0123456789"), token.size());
        token.remove_prefix(count);
        return count;
    };
    if (token.starts_with('-')) token.remove_prefix(1);
    const bool leadingZero = token.starts_with('0');
    const std::size_t whole = digits();
    if (whole == 0 || (leadingZero && whole > 1)) return false;
    if (token.starts_with('.')) {
        token.remove_prefix(1);
        if (digits() == 0) return false;
    }
    if (token.starts_with('e') || token.starts_with('E')) {
        token.remove_prefix(1);
        if (token.starts_with('+') || token.starts_with('-')) token.remove_prefix(1);
        if (digits() == 0) return false;
    }
    return token.empty();
}

// What stands for a number that the decoder refuses; empty when it takes it.
std::string replacement(std::string_view token) {
    const bool isInteger = token.find_first_of(".eE") == std::string_view::npos;
    const auto value = parseDouble(token);
    if (!value || !isJsonNumber(token)) return {};
    if (std::isinf(*value)) return *value > 0 ? "\"inf\"" : "\"-inf\"";
    return isInteger && !fitsInteger(token) ? doubleText(*value) : std::string();
}

// The code unit of "\uXXXX" at `at`, or nothing.
std::optional<unsigned> codeUnit(std::string_view text, std::size_t at) {
    if (at + 6 > text.size() || text[at] != '\\' || text[at + 1] != 'u') return std::nullopt;
    unsigned unit = 0;
    const char* first = text.data() + at + 2;
    if (std::from_chars(first, first + 4, unit, 16).ptr != first + 4) return std::nullopt;
    return unit;
}

bool isHigh(unsigned unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLow(unsigned unit) { return unit >= 0xDC00 && unit < 0xE000; }

class Repair {
 public:
    explicit Repair(std::string_view text) : text_(text) {}

    std::optional<std::string> run() {
        while (at_ < text_.size()) {
            const char c = text_[at_];
            if (c == '"')
                string();
            else if (c == '-' || (c >= '0' && c <= '9'))
                number();
            else
                ++at_;
        }
        if (out_.empty()) return std::nullopt;
        out_.append(text_.substr(copied_));
        return std::move(out_);
    }

 private:
    void replace(std::size_t length, std::string_view with) {
        out_.append(text_.substr(copied_, at_ - copied_)).append(with);
        at_ += length;
        copied_ = at_;
    }

    void number() {
        const std::size_t end = std::min(text_.find_first_not_of(numberCharacters, at_), text_.size());
        const std::string_view token = text_.substr(at_, end - at_);
        const std::string other = replacement(token);
        if (other.empty())
            at_ = end;
        else
            replace(token.size(), other);
    }

    void string() {
        ++at_;
        while (at_ < text_.size() && text_[at_] != '"') {
            const auto unit = codeUnit(text_, at_);
            if (!unit) {
                at_ += text_[at_] == '\\' ? 2 : 1;
            } else if (isHigh(*unit) && isLow(codeUnit(text_, at_ + 6).value_or(0))) {
                at_ += 12;
            } else if (isHigh(*unit) || isLow(*unit)) {
                replace(6, "\\ufffd");
            } else {
                at_ += 6;
            }
        }
        ++at_;
    }

    std::string_view text_;
    std::string out_;
    std::size_t at_ = 0;
    std::size_t copied_ = 0;
};
}  // namespace

std::optional<std::string> repairedJson(std::string_view text) { return Repair(text).run(); }

}  // namespace vmr
