// The chart's GPU formats: what vertices and uniforms look like in memory, for every pipeline.
#pragma once

#include <array>

namespace vmr {

/// A colour: r, g, b, a, each 0 to 1, not premultiplied.
using Rgba = std::array<float, 4>;

/// Flat shapes. Position x, y, 0, 1.
struct ChartVertex {
    float position[4] = {0, 0, 0, 1};
    Rgba color{};
    bool operator==(const ChartVertex&) const = default;
};

/// Ribbons of constant pixel width: x, y, side (+1 or -1), half-width in pixels; `dir` is the whole segment's dx, dy.
struct LineVertex {
    float pos[4] = {0, 0, 0, 0};
    float dir[4] = {0, 0, 0, 0};
    Rgba color{};
    bool operator==(const LineVertex&) const = default;
};

/// Markers of constant pixel size: `off` is the unit offset x, y and the radius in pixels.
struct MarkerVertex {
    float center[4] = {0, 0, 0, 1};
    float off[4] = {0, 0, 0, 0};
    Rgba color{};
    bool operator==(const MarkerVertex&) const = default;
};

/// Glyph corners. Position in device pixels from the view's top left; `uv` into the glyph atlas.
struct TextVertex {
    float position[2] = {0, 0};
    float uv[2] = {0, 0};
    Rgba color{};
    bool operator==(const TextVertex&) const = default;
};

/// clip = (x * xScale + xOffset, y * yScale + yOffset), for the flat and the text pipeline.
struct Uniforms {
    float xScale = 1, xOffset = 0, yScale = 1, yOffset = 0;
    bool operator==(const Uniforms&) const = default;
};

/// The same for ribbons and markers, with the view in points. Markers: `pad0` fades alpha, `pad1` scales the radius.
struct LineUniforms {
    float xScale = 1, xOffset = 0, yScale = 1, yOffset = 0;
    float viewW = 0, viewH = 0, pad0 = 0, pad1 = 0;
    bool operator==(const LineUniforms&) const = default;
};

static_assert(sizeof(ChartVertex) == 32 && sizeof(LineVertex) == 48 && sizeof(MarkerVertex) == 48);
static_assert(sizeof(TextVertex) == 32 && sizeof(Uniforms) == 16 && sizeof(LineUniforms) == 32);

/// Device pixels from the top left to clip space, for the text pipeline and for flat shapes placed on pixels.
inline Uniforms pixelUniforms(double width, double height, double pixelRatio) {
    return {static_cast<float>(2.0 / (width * pixelRatio)), -1.0F, static_cast<float>(-2.0 / (height * pixelRatio)),
            1.0F};
}

}  // namespace vmr
