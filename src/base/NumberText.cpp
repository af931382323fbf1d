#include "base/NumberText.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <limits>

namespace vmr {

namespace {
bool equalsIgnoringCase(std::string_view a, std::string_view lower) {
    if (a.size() != lower.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const char c = a[i] >= 'A' && a[i] <= 'Z' ? static_cast<char>(a[i] - 'A' + 'a') : a[i];
        if (c != lower[i]) return false;
    }
    return true;
}

bool isNan(std::string_view text) {
    if (equalsIgnoringCase(text.substr(0, 3), "nan") && text.size() > 4 && text[3] == '(' && text.back() == ')') {
        for (char c : text.substr(4, text.size() - 5)) {
            const bool word = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
            if (!word) return false;
        }
        return true;
    }
    return equalsIgnoringCase(text, "nan") || equalsIgnoringCase(text, "nan()");
}

// Whether a number out of a double's range is too large rather than too small: the place of its first non-zero digit,
// moved by the exponent. `base` 16 counts in binary.
bool isTooLarge(std::string_view text, int base) {
    const char mark = base == 16 ? 'p' : 'e';
    long place = 0;
    bool seenPoint = false;
    bool seenDigit = false;
    std::size_t i = 0;
    for (; i < text.size() && (text[i] | 0x20) != mark; ++i) {
        if (text[i] == '.') {
            seenPoint = true;
        } else {
            seenDigit = seenDigit || text[i] != '0';
            if (seenDigit && !seenPoint) ++place;
            if (!seenDigit && seenPoint) --place;
        }
    }
    if (base == 16) place *= 4;
    if (i < text.size()) {
        std::string_view power = text.substr(i + 1);
        const bool negative = !power.empty() && power.front() == '-';
        if (!power.empty() && (power.front() == '+' || negative)) power.remove_prefix(1);
        long exponent = 0;
        const auto read = std::from_chars(power.data(), power.data() + power.size(), exponent);
        constexpr long beyondAnyText = 1'000'000'000'000;  // so that adding it to a place in the text cannot overflow
        if (read.ec == std::errc::result_out_of_range || exponent > beyondAnyText) exponent = beyondAnyText;
        place += negative ? -exponent : exponent;
    }
    return place > 0;
}

std::optional<double> parseMagnitude(std::string_view text, std::chars_format format) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, format);
    if (end != text.data() + text.size()) return std::nullopt;
    if (error == std::errc::result_out_of_range)
        return isTooLarge(text, format == std::chars_format::hex ? 16 : 10) ? std::numeric_limits<double>::infinity()
                                                                            : 0.0;
    if (error != std::errc()) return std::nullopt;
    return value;
}
}  // namespace

std::optional<double> parseDouble(std::string_view text) {
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty()) return std::nullopt;
    std::optional<double> value;
    if (equalsIgnoringCase(text, "inf") || equalsIgnoringCase(text, "infinity")) {
        value = std::numeric_limits<double>::infinity();
    } else if (isNan(text)) {
        value = std::numeric_limits<double>::quiet_NaN();
    } else if (text.size() > 2 && text[0] == '0' && (text[1] | 0x20) == 'x') {
        text.remove_prefix(2);
        // from_chars takes words and a sign as well, which have no place behind a 0x
        const char lower = static_cast<char>(text[0] | 0x20);
        if ((text[0] >= '0' && text[0] <= '9') || (lower >= 'a' && lower <= 'f') || text[0] == '.')
            value = parseMagnitude(text, std::chars_format::hex);
    } else if ((text[0] >= '0' && text[0] <= '9') || text[0] == '.') {
        value = parseMagnitude(text, std::chars_format::general);
    }
    if (value && negative) value = -*value;
    return value;
}

std::optional<std::int64_t> parseInt(std::string_view text) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') return std::nullopt;
    }
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::string doubleText(double value) { return fmt::format("{}", value); }

}  // namespace vmr
