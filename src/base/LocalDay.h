// The machine's own calendar.
#pragma once

#include <cstdint>
#include <optional>

namespace vmr {

/// The number of the calendar day, in the machine's time zone, that holds `seconds` since 1970; days count from
/// 1970-01-01. Any thread. A time beyond the machine's calendar counts in UTC.
std::int64_t localDay(double seconds);

/// A moment on the machine's own clock on the wall.
struct LocalTime {
    int month = 1, day = 1;  ///< from 1
    int hour = 0, minute = 0, second = 0;
};

/// `seconds` since 1970 in the machine's time zone. Any thread. Nothing beyond the machine's calendar.
std::optional<LocalTime> localTime(double seconds);

}  // namespace vmr
