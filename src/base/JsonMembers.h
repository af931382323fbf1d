// The members of a JSON object as they are written: what nobody here understands is kept to the letter.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// Decoded name to the JSON text of the value.
using JsonMembers = std::map<std::string, std::string, std::less<>>;

/// Takes one JSON object apart; of a name that comes twice the last counts. Nothing when `text` is not an object.
std::optional<JsonMembers> jsonMembers(std::string_view text);

/// One object, a line for each member.
std::string jsonObject(const JsonMembers& members);

/// The JSON text of a string; bytes that are no UTF-8 become U+FFFD.
std::string jsonString(std::string_view text);

/// The string that a member's text is, or nothing for other kinds.
std::optional<std::string> stringOf(std::string_view jsonText);

}  // namespace vmr
