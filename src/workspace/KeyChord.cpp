#include "workspace/KeyChord.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace vmr {

namespace {
constexpr std::array<std::string_view, 15> namedKeys{"Escape", "Tab",  "Return", "Space",    "Backspace",
                                                     "Delete", "Left", "Right",  "Up",       "Down",
                                                     "Home",   "End",  "PageUp", "PageDown", "Insert"};

char lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }
char upper(char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); }

bool same(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

// F1 to F24.
bool isFunctionKey(std::string_view key) {
    if (key.size() < 2 || key.size() > 3 || upper(key[0]) != 'F' || key[1] == '0') return false;
    int number = 0;
    for (const char digit : key.substr(1)) {
        if (digit < '0' || digit > '9') return false;
        number = number * 10 + (digit - '0');
    }
    return number <= 24;
}

// One character, however many bytes of UTF-8 it takes; blanks and control characters are none.
bool isCharacter(std::string_view key) {
    if (key.empty() || static_cast<unsigned char>(key[0]) <= ' ' || key[0] == '\x7f') return false;
    const auto lead = static_cast<unsigned char>(key[0]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xc0 ? 0 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    return key.size() == length && std::all_of(key.begin() + 1, key.end(),
                                               [](char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; });
}

// The key's one spelling; empty where it is none.
std::string keyName(std::string_view key) {
    for (const std::string_view name : namedKeys)
        if (same(name, key)) return std::string(name);
    if (!isFunctionKey(key) && !isCharacter(key)) return {};
    std::string out(key);
    if (out.size() == 1 || isFunctionKey(key)) out[0] = upper(out[0]);
    return out;
}

bool takeModifier(KeyStroke& stroke, std::string_view word) {
    for (const auto& [name, field] : {std::pair("Ctrl", &KeyStroke::control),
                                      {"Control", &KeyStroke::control},
                                      {"Alt", &KeyStroke::alt},
                                      {"Shift", &KeyStroke::shift},
                                      {"Meta", &KeyStroke::meta}})
        if (same(name, word)) return stroke.*field = true;
    return false;
}
}  // namespace

std::string chordText(const KeyStroke& stroke) {
    const std::string key = keyName(stroke.key);
    if (key.empty()) return {};
    const bool others = stroke.control || stroke.alt || stroke.meta;
    std::string out;
    if (stroke.control) out += "Ctrl+";
    if (stroke.alt) out += "Alt+";
    if (stroke.shift && (others || !isCharacter(key))) out += "Shift+";
    if (stroke.meta) out += "Meta+";
    return out + key;
}

std::optional<std::string> parseChord(std::string_view text) {
    KeyStroke stroke;
    // a plus sign ends a word only where something stands before it and after it
    while (true) {
        const auto plus = text.find('+', 1);
        if (plus == std::string_view::npos || plus + 1 == text.size() || !takeModifier(stroke, text.substr(0, plus)))
            break;
        text.remove_prefix(plus + 1);
    }
    stroke.key = std::string(text);
    const std::string chord = chordText(stroke);
    return chord.empty() ? std::nullopt : std::optional(chord);
}

std::string chordLabel(std::string_view chord, bool mac) {
    constexpr std::array signs{std::pair("Ctrl+", "⌘"), std::pair("Alt+", "⌥"), std::pair("Shift+", "⇧"),
                               std::pair("Meta+", "⌃")};
    constexpr std::array shorter{std::pair("Escape", "Esc"), std::pair("Delete", "Del"), std::pair("PageUp", "PgUp"),
                                 std::pair("PageDown", "PgDn")};
    std::string out(chord);
    for (const auto& [name, label] : shorter)
        if (out.ends_with(name)) out.replace(out.size() - std::string_view(name).size(), std::string::npos, label);
    if (!mac) return out;
    for (const auto& [name, sign] : signs)
        if (const auto at = out.find(name); at != std::string::npos)
            out.replace(at, std::string_view(name).size(), sign);
    return out;
}

}  // namespace vmr
