// The geometry of a pane's overlay series, as it is handed to the renderer.
#pragma once

#include <vector>

#include "chart/Camera.h"
#include "chart/Vertices.h"

namespace vmr {

/// Vertices in data space relative to `origin`.
struct OverlayLists {
    std::vector<LineVertex> lines;          ///< ribbons
    std::vector<ChartVertex> second;        ///< the paired instrument's candles
    std::vector<LineVertex> secondBorders;  ///< their outlines
    DataOrigin origin;
};

}  // namespace vmr
