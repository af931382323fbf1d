// Keys as texts, such as "G", "$", "Ctrl+Shift+S" or "F11".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// What a keyboard event says, before it is a text.
struct KeyStroke {
    bool control = false, alt = false, shift = false, meta = false;
    /// The character that the key gives on this keyboard, as UTF-8; or the name of a key that gives none, such as
    /// "Escape", "Tab", "F11", "Left" or "Space".
    std::string key;
    bool operator==(const KeyStroke&) const = default;
};

/// The one text of a stroke: modifiers in the order Ctrl, Alt, Shift, Meta, then the key, its letter in upper case.
/// Shift is left out where it went into a character ("$"), except beside another modifier. Empty for an empty key.
std::string chordText(const KeyStroke& stroke);

/// Brings a text that a person or a file has into that form, in whatever case and order its words are; nothing where it
/// is no key.
std::optional<std::string> parseChord(std::string_view text);

/// As a person reads it: on a Mac with that machine's signs, where "Ctrl" is the Command key.
std::string chordLabel(std::string_view chord, bool mac);

}  // namespace vmr
