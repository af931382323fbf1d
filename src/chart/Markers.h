// GEX bubbles and HF triangles as vertices: centres in data space, sizes in pixels.
#pragma once

#include <span>
#include <vector>

#include "chart/Camera.h"
#include "chart/RenderConfig.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr::Markers {

/// What the markers of a chart are made of.
struct Input {
    std::span<const BubblePt> bubbles;
    std::span<const TrianglePt> triangles;
    std::span<const Candle> candles;  ///< ascending; a marker before the first or after the last bar lies on that bar
    double etfRatio = 1;              ///< strike to chart price
    const RenderConfig& config;
    DataOrigin origin;
};

struct Lists {
    std::vector<MarkerVertex> discs;      ///< bubbles
    std::vector<MarkerVertex> triangles;  ///< over them
};

/// Writes the markers into `out`, whose memory is used again. Empty without bars and with a ratio that is 0 or not
/// finite. A marker without a finite price and a triangle without a `minuteMax` are left out. Cheapest for points in
/// the order of their minutes.
void build(Lists& out, const Input& input);

/// How all markers fade and shrink when many bars are in view, so that deep stacks do not smear to a solid.
struct Zoom {
    float fade = 1;    ///< of the alpha, `LineUniforms::pad0`
    float shrink = 1;  ///< of the radius, `LineUniforms::pad1`
};
Zoom zoom(double barsInView);

}  // namespace vmr::Markers
