// The shapes of overlay series as vertices: ribbons of constant pixel width, and candles.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "chart/Camera.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

/// Each function appends to the lists that it is given, in data space relative to `origin`, so that pan and zoom
/// rebuild nothing. The segments of a line meet without gap or overlap. Pure; any thread.
namespace vmr::OverlayGeometry {

/// Dashes of `on` bars with gaps of `off` bars.
struct Dash {
    double on = 0, off = 0;
    constexpr double period() const { return on + off; }
};

/// Of the session lines.
inline constexpr Dash sessionDash{0.46, 0.46};

/// A line through the points, `width` in pixels. Two points more than 1.5 bars apart, or not in order, are not joined.
/// Dashes begin anew at each point.
void polyline(std::vector<LineVertex>& verts, std::span<const OvPoint> points, double width, const Rgba& color,
              const std::optional<Dash>& dash, const DataOrigin& origin);

/// A line that is `blue` where the points are positive and `red` elsewhere; it changes colour where it crosses its
/// base.
void hfPolyline(std::vector<LineVertex>& verts, std::span<const OvColorPoint> points, double width, const Rgba& blue,
                const Rgba& red, const DataOrigin& origin);

/// How dashed session lines are drawn: with their gaps, or without and as faint as dashes and gaps are together.
enum class Gaps : unsigned char { drawn, blended };

/// Horizontal lines of one pixel over the bars from their start to their end time. `opacity` is held within 0 to 1.
void srLines(std::vector<LineVertex>& verts, std::span<const OverlayLine> lines, std::span<const Candle> candles,
             double opacity, const DataOrigin& origin, Gaps gaps = Gaps::drawn);

/// The paired instrument's candles.
void secondCandles(std::vector<CandleVertex>& verts, std::span<const OvCandle> candles, const DataOrigin& origin);

}  // namespace vmr::OverlayGeometry
