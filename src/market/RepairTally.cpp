#include "market/RepairTally.h"

#include "base/CheckedInt.h"

namespace vmr {

std::optional<std::int64_t> RepairTally::integer(double value, const char* what) {
    if (strict_) return checkedInt(value, what);
    const auto whole = fittingInt(value);
    if (!whole) ++count_;
    return whole;
}

}  // namespace vmr
