// Which moment lies at a place among bars, and where among them a moment lies.
#pragma once

#include <cstdint>
#include <span>

#include "market/Records.h"

namespace vmr {

/// A moment and a price on a chart, as another chart of the same instrument can show them.
struct ChartSpot {
    double time = 0;   ///< seconds since 1970
    double price = 0;  ///< NaN for none
    bool operator==(const ChartSpot&) const = default;
};

/// Places count bars, from the middle of the first one: bar `i` reaches from `i - 0.5` to `i + 0.5` and lasts
/// `timeframe` minutes from its time on. Times between two bars, of a closed market or of minutes without a trade, have
/// no width: they lie where the bar before them ends. Before the first bar and after the last one the timeframe goes
/// on. `bars` ascend by time and are not empty.
double timeAtPlace(std::span<const Candle> bars, double timeframe, double place);
double placeOfTime(std::span<const Candle> bars, double timeframe, double time);

}  // namespace vmr
