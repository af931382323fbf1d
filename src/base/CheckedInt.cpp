#include "base/CheckedInt.h"

#include <string>

#include "base/Fatal.h"

namespace vmr {

std::optional<std::int64_t> fittingInt(double value) {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    if (!(value >= -limit && value < limit)) return std::nullopt;
    return static_cast<std::int64_t>(value);
}

std::int64_t checkedInt(double value, const char* what) {
    const auto whole = fittingInt(value);
    if (!whole) fatal(std::string(what) + " does not fit a 64-bit integer");
    return *whole;
}

}  // namespace vmr
