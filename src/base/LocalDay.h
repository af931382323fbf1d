// The machine's own calendar.
#pragma once

#include <cstdint>

namespace vmr {

/// The number of the calendar day, in the machine's time zone, that holds `seconds` since 1970; days count from
/// 1970-01-01. Any thread. A time beyond the machine's calendar counts in UTC.
std::int64_t localDay(double seconds);

}  // namespace vmr
