// The text that sets the program's clock.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vmr {

/// A moment to start at and a speed to run at.
struct ClockSetting {
    double start = 0;  ///< seconds since 1970
    double speed = 1;  ///< market seconds per real second, above 0 to `Clock::fastest`
    bool operator==(const ClockSetting&) const = default;
};

/// Reads "<ISO 8601>[@speed]", such as "2026-06-10T10:00:00@60" or "2013-10-07T13:00Z". A date alone is its midnight;
/// seconds and a fraction may be left out; without "Z" or an offset the time is New York's. Nothing on anything else.
std::optional<ClockSetting> parseClockSetting(std::string_view text);

/// An ISO 8601 moment as above, without a speed; seconds since 1970.
std::optional<double> parseMoment(std::string_view text);

/// `now` while the futures market is open, else 10:00 New York on the latest weekday on which that moment has passed.
double practiceStart(double now);

}  // namespace vmr
