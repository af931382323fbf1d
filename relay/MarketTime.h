// Moments and minutes of market time.
#pragma once

#include <cmath>
#include <cstdint>

#include "base/Clock.h"

namespace vmr::relay {

/// The clock in whole milliseconds since 1970.
inline std::int64_t marketMs(const Clock& clock) { return static_cast<std::int64_t>(std::floor(clock.now() * 1000)); }

/// The whole minute, in seconds, that a moment in milliseconds lies in.
inline std::int64_t minuteOf(std::int64_t ms) {
    const std::int64_t minute = ms / 60000 - (ms % 60000 < 0 ? 1 : 0);
    return minute * 60;
}

}  // namespace vmr::relay
