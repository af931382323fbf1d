// The analytic series over a chart as plain points.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "market/Records.h"

namespace vmr {

/// A series that is off, or has nothing to show, is empty. How each one looks: `OverlayRibbons`.
struct OverlaySet {
    /// A bar by its time and by the number that the points gave it. Bars come and go at the front while a series waits
    /// for its next rebuild; this tells where the points belong meanwhile.
    struct Anchor {
        std::int64_t time = 0;
        double bar = 0;
        bool operator==(const Anchor&) const = default;
    };

    std::vector<OvPoint> vwapMain, vwapNY, vixLine, ema1, ema2;
    std::vector<OvColorPoint> hfLine;     ///< net flow, on the sessions' opens
    std::vector<OvCandle> secondCandles;  ///< the paired instrument
    Anchor anchor;                        ///< the last bar that the points were made for
    std::optional<double> vixSpot;        ///< the last close of the VIX; no line of its own
};

}  // namespace vmr
