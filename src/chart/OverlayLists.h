// The geometry of a pane's overlay series, as it is handed to the renderer.
#pragma once

#include <cstdint>
#include <vector>

#include "chart/Camera.h"
#include "gpu/Vertices.h"

namespace vmr {

/// Vertices in data space relative to `origin`.
struct OverlayLists {
    std::vector<LineVertex> lines;          ///< ribbons of the series
    std::vector<LineVertex> sessionLines;   ///< ribbons of the session and support/resistance lines, over those
    std::uint64_t sessionRevision = 0;      ///< raised when `sessionLines` were made anew
    std::vector<BoxVertex> second;          ///< the paired instrument's candles
    std::vector<LineVertex> secondBorders;  ///< their outlines
    DataOrigin origin;
};

}  // namespace vmr
