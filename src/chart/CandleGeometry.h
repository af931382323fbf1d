// The shapes of one candle as vertices. All places are in data space relative to the caller's origin.
#pragma once

#include <cstddef>
#include <string_view>

#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr::CandleGeometry {

inline constexpr double halfBody = 0.32;  ///< bars
inline constexpr double halfWick = 0.06;  ///< bars
inline constexpr std::size_t bodyVertices = boxVertices;
inline constexpr std::size_t wickVertices = 2 * boxVertices;
inline constexpr std::size_t outlineVertices = 4 * segmentVertices;

/// The colours of a candle; `outlined` when its body has a border of one pixel.
struct Look {
    Rgba body, wick, border;
    bool outlined = false;
};

/// `theme` "classic", or anything else for mono.
const Look& look(std::string_view theme, bool up);

/// A bar that closes where it opened counts as up.
inline bool isUp(double open, double close) { return open <= close; }

// Each writes its fixed number of vertices at `out` and returns the place after them.

/// A body.
BoxVertex* writeBody(BoxVertex* out, double x, double top, double bot, const Rgba& color);
/// The wick above and the wick below a body, both always.
BoxVertex* writeWicks(BoxVertex* out, double x, double high, double top, double bot, double low, const Rgba& color);
/// Four ribbons, one pixel wide at any zoom, around a body; corners overlap.
LineVertex* appendBodyOutline(LineVertex* out, double x, double halfWidth, double top, double bot, const Rgba& color);

}  // namespace vmr::CandleGeometry
