// The shapes of overlay series as vertices: ribbons of constant pixel width, and candles.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "chart/Camera.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

/// Each function appends to the lists that it is given, in data space relative to `origin`, so that pan and zoom
/// rebuild nothing. The segments of a line meet without gap or overlap. Pure; any thread.
namespace vmr::OverlayGeometry {

/// The part of a line, `width` in pixels, that ends at point `i`. It joins what the list ends with where that ends at
/// the point before. Two points more than 1.5 bars apart, or not in order, are not joined.
void lineTo(std::vector<LineVertex>& verts, std::span<const OvPoint> points, std::size_t i, double width,
            const Rgba& color, const DataOrigin& origin);

/// The same of a line that is `blue` where the points are positive and `red` elsewhere; it changes colour where it
/// crosses its base.
void flowTo(std::vector<LineVertex>& verts, std::span<const OvColorPoint> points, std::size_t i, double width,
            const Rgba& blue, const Rgba& red, const DataOrigin& origin);

/// Horizontal lines of one pixel over the bars from their start to their end time, those with dashes into the list of
/// their own. `opacity` is held within 0 to 1.
void srLines(std::vector<LineVertex>& verts, std::vector<LineVertex>& dashed, std::span<const OverlayLine> lines,
             std::span<const Candle> candles, double opacity, const DataOrigin& origin);

/// The bars over which a line goes; nothing for one that has no price or covers no two bars.
struct LineSpan {
    std::size_t first = 0, last = 0;
};
std::optional<LineSpan> lineSpan(const OverlayLine& line, std::span<const Candle> candles);

/// The paired instrument's candle number `i`.
void secondCandle(std::vector<CandleVertex>& verts, std::span<const OvCandle> candles, std::size_t i,
                  const DataOrigin& origin);

}  // namespace vmr::OverlayGeometry
