// The one checked conversion from a feed's floating-point value to an integer.
#pragma once

#include <cstdint>

namespace vmr {

/// `value` truncated toward zero. NaN and anything outside [-2^63, 2^63) is `fatal`; `what` names the value there.
std::int64_t checkedInt(double value, const char* what);

}  // namespace vmr
