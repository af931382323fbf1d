#include "model/PayloadBrief.h"

#include <algorithm>
#include <array>

namespace vmr {

namespace {
constexpr std::size_t shownKeys = 6;
constexpr std::size_t shownCharacters = 80;

std::string firstCharacters(std::string text, std::size_t count) {
    std::size_t at = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool startsCharacter = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
        if (startsCharacter && at++ == count) return text.substr(0, i);
    }
    return text;
}

std::string briefObject(JsonView object) {
    std::array<std::string_view, shownKeys + 1> smallest;  // sorted; one more than shown, so that the last falls out
    std::size_t kept = 0;
    std::size_t total = 0;
    for (const auto& [key, value] : object.members()) {
        ++total;
        if (kept == shownKeys && key >= smallest[kept - 1]) continue;
        std::size_t at = kept;
        for (; at > 0 && key < smallest[at - 1]; --at) smallest[at] = smallest[at - 1];
        smallest[at] = key;
        kept = std::min(kept + 1, shownKeys);
    }
    std::string out = "{ ";
    for (std::size_t i = 0; i < kept; ++i) {
        if (i > 0) out += ", ";
        out += smallest[i];
    }
    if (total > shownKeys) out += ", …";
    return out + " }";
}
}  // namespace

std::string briefForm(JsonView payload) {
    if (payload.isObject()) return briefObject(payload);
    if (payload.isArray()) return "[" + std::to_string(payload.size()) + " items]";
    if (payload.isString()) return firstCharacters(std::string(payload.string()), shownCharacters);
    return firstCharacters(payload.text(), shownCharacters);
}

}  // namespace vmr
