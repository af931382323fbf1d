// What the line of an open position says of its result.
#pragma once

#include "chart/TradingTexts.h"
#include "gpu/PointRect.h"

namespace vmr {

/// It changes with every trade, so it is an item of its own over the chart and records no frame of it.
struct EntryPill {
    PointRect box;  ///< points from the chart's top left
    TradingTexts::Result result;
};

}  // namespace vmr
