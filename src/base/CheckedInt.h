// The one checked conversion from a floating-point value to an integer.
#pragma once

#include <cstdint>
#include <optional>

namespace vmr {

/// `value` truncated toward zero; nothing for NaN and anything outside [-2^63, 2^63).
std::optional<std::int64_t> fittingInt(double value);

/// The same for values that always fit; one that does not is `fatal`, and `what` names it there.
std::int64_t checkedInt(double value, const char* what);

}  // namespace vmr
