#include "relay/Query.h"

#include <algorithm>

namespace vmr::relay {

namespace {
int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}
}  // namespace

std::string percentDecoded(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escape =
            text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 && hexDigit(text[i + 2]) >= 0;
        out += escape ? static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2])) : text[i];
        if (escape) i += 2;
    }
    return out;
}

std::optional<std::string> queryValue(std::string_view query, std::string_view name) {
    while (!query.empty()) {
        const std::string_view pair = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(query.size(), pair.size() + 1));
        const std::size_t equals = pair.find('=');
        if (percentDecoded(pair.substr(0, equals)) != name) continue;
        return equals == pair.npos ? std::string() : percentDecoded(pair.substr(equals + 1));
    }
    return std::nullopt;
}

std::optional<std::string> formValue(std::string_view form, std::string_view name) {
    std::string text(form);
    std::replace(text.begin(), text.end(), '+', ' ');
    return queryValue(text, name);
}

std::string_view queryOf(std::string_view target) {
    const std::size_t mark = target.find('?');
    return mark == target.npos ? std::string_view{} : target.substr(mark + 1);
}

}  // namespace vmr::relay
