// Candles as vertices. All places are in data space relative to the caller's origin.
#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

#include "gpu/Gpu.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr::CandleGeometry {

inline constexpr double halfBody = 0.32;  ///< bars
inline constexpr double halfWick = 0.06;  ///< bars
inline constexpr std::size_t candleVertices = 4;

/// What a candle is painted with. The body of an outlined one has a border of one point at any zoom and is filled with
/// a share of its colour.
struct Look {
    Rgba color;
    bool outlined = false;
    float fill = 0.4F;  ///< of any candle next to an outlined one
};

/// `theme` "classic", or anything else for mono.
const Look& look(std::string_view theme, bool up);

/// A bar that closes where it opened counts as up.
inline bool isUp(double open, double close) { return open <= close; }

/// Where a candle lies.
struct Place {
    double x, high, top, bot, low;
    double halfBody = CandleGeometry::halfBody, halfWick = CandleGeometry::halfWick;
};

/// The candles one bar before another and two; none without a look.
struct Before {
    struct Body {
        double top = 0, bot = 0;
        const Look* look = nullptr;
    };
    Body one, two;

    /// Makes room for the one that is now the last.
    void add(double top, double bot, const Look& look) { two = std::exchange(one, {top, bot, &look}); }
};

/// Writes `candleVertices` vertices at `out` and returns the place after them.
CandleVertex* write(CandleVertex* out, const Place& place, const Look& look, const Before& before);

/// What draws candles at this distance, in points: those that are close may share pixels, two and then three at a time.
constexpr Pipeline pipelineAt(double pointsABar) {
    return pointsABar < 1.5 ? Pipeline::crowded : pointsABar < 4 ? Pipeline::dense : Pipeline::candle;
}

}  // namespace vmr::CandleGeometry
