// What a clock on a chart says: the time to the forming bar's close, and New York's time.
#pragma once

#include <cstdint>

#include "chart/AxisScale.h"
#include "market/SessionTime.h"

namespace vmr {

/// Market time from `now` to the end of the bar that holds it: "4:59", "3:59:59", "2d 03h". Bars are whole multiples
/// of `timeframe` minutes since 1970. "closed" while the market is. Parts of a second count as one, so that a bar's
/// last second reads "0:01".
AxisScale::Label countdownText(double now, int timeframe, bool isStock, SessionTime& session);

/// "NY 09:30", right to the minute on the days of a clock change too.
AxisScale::Label newYorkClock(double now);

/// The mark beside the clock of a practice market: "practice", and New York's date there unless it is that of
/// `machineNow`, today.
AxisScale::Label practiceMark(double now, double machineNow);

}  // namespace vmr
