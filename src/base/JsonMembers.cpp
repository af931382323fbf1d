#include "base/JsonMembers.h"

#include <nlohmann/json.hpp>

#include "base/Json.h"

namespace vmr {

namespace {
// Walks through a text that is known to be one JSON object.
class Walk {
 public:
    explicit Walk(std::string_view text) : text_(text) {}

    JsonMembers members() {
        JsonMembers out;
        at_ = text_.find('{') + 1;
        while (skipTo('"')) {
            const std::string_view name = string();
            skipTo(':');
            ++at_;
            out.insert_or_assign(stringOf(name).value_or(""), std::string(value()));
        }
        return out;
    }

 private:
    // Whether `c` comes before the object's end; then it is the next character.
    bool skipTo(char c) {
        while (text_[at_] != c && text_[at_] != '}') ++at_;
        return text_[at_] == c;
    }

    std::string_view string() {
        const std::size_t first = at_++;
        for (; text_[at_] != '"'; ++at_)
            if (text_[at_] == '\\') ++at_;
        return text_.substr(first, ++at_ - first);
    }

    std::string_view value() {
        at_ = text_.find_first_not_of(blanks, at_);
        const std::size_t first = at_;
        for (int depth = 0; depth > 0 || (text_[at_] != ',' && text_[at_] != '}');) {
            const char c = text_[at_];
            if (c == '"') {
                string();
                continue;
            }
            if (c == '{' || c == '[') ++depth;
            if (c == '}' || c == ']') --depth;
            ++at_;
        }
        return text_.substr(first, text_.find_last_not_of(blanks, at_ - 1) + 1 - first);
    }

    static constexpr std::string_view blanks = " \t\r\n";
    std::string_view text_;
    std::size_t at_ = 0;
};
}  // namespace

std::optional<JsonMembers> jsonMembers(std::string_view text) {
    const auto document = Json::parse(text);
    if (!document || !document->isObject()) return std::nullopt;
    return Walk(text).members();
}

std::string jsonObject(const JsonMembers& members) {
    std::string out = "{";
    for (const auto& [name, value] : members) {
        out += out.size() == 1 ? "\n " : ",\n ";
        out += jsonString(name) + ": " + value;
    }
    return out + (members.empty() ? "}\n" : "\n}\n");
}

std::string jsonString(std::string_view text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::optional<std::string> stringOf(std::string_view jsonText) {
    const auto value = Json::parse(jsonText);
    if (!value || !value->isString()) return std::nullopt;
    return std::string(value->string());
}

}  // namespace vmr
