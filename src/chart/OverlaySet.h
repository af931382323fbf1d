// The analytic series over a chart as plain points.
#pragma once

#include <optional>
#include <vector>

#include "market/Records.h"

namespace vmr {

/// A series that is off, or has nothing to show, is empty. How each one looks: `OverlayRibbons`.
struct OverlaySet {
    std::vector<OvPoint> vwapMain, vwapNY, vixLine, ema1, ema2;
    std::vector<OvColorPoint> hfLine;     ///< net flow, on the sessions' opens
    std::vector<OvCandle> secondCandles;  ///< the paired instrument
    std::optional<double> vixSpot;        ///< the last close of the VIX; no line of its own
};

}  // namespace vmr
