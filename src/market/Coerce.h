// Lenient readers: what a payload's field means, whatever it was written as. None reports an error; integers that do
// not fit are counted.
#pragma once

#include <cstdint>
#include <optional>

#include "base/Json.h"
#include "market/RepairTally.h"

namespace vmr::coerce {

/// A number's value, 1 or 0 for a boolean, or a string that is one number from end to end (see `parseDouble`).
std::optional<double> dbl(JsonView value);

/// An exact integer as it is; another number truncated toward zero; 1 or 0 for a boolean; a string of a sign and
/// digits. Nothing otherwise, and `tally` counts a number that no 64-bit integer holds.
std::optional<std::int64_t> intv(JsonView value, RepairTally& tally);

/// As `intv`, with 0 for nothing.
std::int64_t intVal(JsonView value, RepairTally& tally);

/// `dbl` truncated toward zero, so that the text "12.7" is 12. For the minute of bubbles and triangles only.
std::optional<std::int64_t> minuteInt(JsonView value, RepairTally& tally);

/// A boolean itself, a number unless it is 0, text that reads as a number other than 0 (NaN counts as true).
bool boolean(JsonView value);

}  // namespace vmr::coerce
