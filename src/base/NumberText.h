// Numbers in text, independent of the process's locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// A floating-point number that fills `text` from end to end, in the grammar of C's strtod ("C" locale): optional sign,
/// decimal or 0x-hexadecimal, inf, infinity, nan, nan(...); any case. Too large gives infinity, too small 0. Nothing
/// for empty text, for leading white space or NUL, and when any character is left over.
std::optional<double> parseDouble(std::string_view text);

/// A base-10 integer that fills `text`: optional "+" or "-", then digits. Nothing on anything else or on overflow.
std::optional<std::int64_t> parseInt(std::string_view text);

/// The shortest text that reads back as `value`.
std::string doubleText(double value);

}  // namespace vmr
