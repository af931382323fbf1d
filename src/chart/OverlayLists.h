// The geometry of a pane's overlay series, as it is handed to the renderer.
#pragma once

#include <cstdint>
#include <vector>

#include "chart/Camera.h"
#include "gpu/Vertices.h"

namespace vmr {

/// Vertices in data space relative to `origin`.
struct OverlayLists {
    std::vector<LineVertex> lines;         ///< ribbons of the series
    std::vector<LineVertex> sessionLines;  ///< ribbons of the session and support/resistance lines, over those
    std::vector<LineVertex> sessionFar;    ///< the same without gaps, for when dashes are finer than pixels
    std::uint64_t sessionRevision = 0;     ///< raised when both were made anew
    std::vector<CandleVertex> second;      ///< the paired instrument's candles
    DataOrigin origin;
    std::int64_t originTime = 0;  ///< of the bar that the origin lies on
};

}  // namespace vmr
