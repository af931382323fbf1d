#include "base/CheckedInt.h"

#include <string>

#include "base/Fatal.h"

namespace vmr {

std::int64_t checkedInt(double value, const char* what) {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    if (!(value >= -limit && value < limit)) fatal(std::string(what) + " does not fit a 64-bit integer");
    return static_cast<std::int64_t>(value);
}

}  // namespace vmr
