// Days on which the New York exchanges stay closed.
#pragma once

#include <cstdint>

namespace vmr::relay {

/// Whether the exchanges' yearly calendar has a holiday on a weekday (days since 1970). Single closures, such as days
/// of mourning, are not known.
bool isExchangeHoliday(std::int64_t date);

}  // namespace vmr::relay
