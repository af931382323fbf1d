// The geometry of a pane's overlay series, as it is handed to the renderer.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "chart/Camera.h"
#include "gpu/Vertices.h"

namespace vmr {

/// Dashes of `on` bars with gaps of `off` bars.
struct Dash {
    double on = 0, off = 0;
    constexpr double period() const { return on + off; }
};

/// The vertices of a series. A trade moves its last points alone, so only its last vertices are ever handed over anew.
template <class Vertex>
struct SeriesList {
    std::vector<Vertex> vertices;
    std::size_t settled = 0;     ///< so many at the front stay the same under one revision
    std::uint64_t revision = 0;  ///< 0 for one that was never filled
};

/// Vertices in data space relative to `origin`.
struct OverlayLists {
    struct Ribbon : SeriesList<LineVertex> {
        std::optional<Dash> dash;  ///< begins anew with each segment
    };
    static constexpr std::size_t ribbonCount = 6;
    static constexpr Dash sessionDash{0.46, 0.46};

    std::array<Ribbon, ribbonCount> ribbons;  ///< of the series, back to front
    std::vector<LineVertex> sessionLines;     ///< ribbons of the session and support/resistance lines, over those
    std::vector<LineVertex> sessionDashes;    ///< of those that are dashed
    std::uint64_t sessionRevision = 0;        ///< raised when both were made anew
    SeriesList<CandleVertex> second;          ///< the paired instrument's candles
    DataOrigin origin;
    std::int64_t originTime = 0;  ///< of the bar that the origin lies on
};

}  // namespace vmr
