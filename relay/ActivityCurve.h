// How busy a market is over its trading day.
#pragma once

#include <array>

#include "relay/Instruments.h"
#include "relay/SessionCalendar.h"

namespace vmr::relay {

/// One value for each minute of the trading day.
struct ActivityCurve {
    std::array<double, SessionCalendar::minutesPerDay> volume;      ///< about 1 on average from 09:30 to 16:00
    std::array<double, SessionCalendar::minutesPerDay> volatility;  ///< squares add up to 1
};

/// Equities and their indices: quiet nights, a rush at 09:30, a lull at noon, a rush at the close.
const ActivityCurve& equityActivity();

/// Metals and energy: busiest from 08:20 to 13:30.
const ActivityCurve& commodityActivity();

const ActivityCurve& activityOf(const Instrument& instrument);

}  // namespace vmr::relay
