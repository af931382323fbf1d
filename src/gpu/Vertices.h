// The chart's GPU formats: what vertices and uniforms look like in memory, for every pipeline.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

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

/// What a marker looks like: a disc, or a triangle as high as wide with its tip up or down.
enum class MarkerShape : std::uint8_t { disc, up, down };

/// Markers of constant size on the screen, a quad each, whose outline the GPU finds for each pixel. The four corners
/// differ in `code` alone.
struct MarkerVertex {
    float center[2] = {0, 0};
    float radius = 0;  ///< points, from the centre to the rim, or to the sides of a triangle's box
    float alpha = 1;
    std::array<std::uint8_t, 3> color{};
    std::uint8_t code = 0;  ///< four times the shape, and the corner: top left, bottom left, bottom right, top right
    bool operator==(const MarkerVertex&) const = default;

    MarkerShape shape() const { return static_cast<MarkerShape>(code / 4); }
};
inline constexpr std::size_t markerVertices = 4;

/// Writes the four corners of a marker at `out` and returns the place after them. Alpha is the colour's.
inline MarkerVertex* writeMarker(MarkerVertex* out, float x, float y, float radius, MarkerShape shape,
                                 const Rgba& color) {
    MarkerVertex vertex{{x, y}, radius, color[3], {}, 0};
    for (std::size_t i = 0; i < 3; ++i) {
        const float full = color[i] > 0 ? color[i] : 0;  // 0 for NaN, too
        vertex.color[i] = static_cast<std::uint8_t>((full < 1 ? full : 1) * 255 + 0.5F);
    }
    for (std::uint8_t corner = 0; corner < markerVertices; ++corner) {
        vertex.code = static_cast<std::uint8_t>(static_cast<unsigned>(shape) * 4 + corner);
        *out++ = vertex;
    }
    return out;
}

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

static_assert(sizeof(ChartVertex) == 32 && sizeof(LineVertex) == 48 && sizeof(MarkerVertex) == 20);
static_assert(sizeof(TextVertex) == 32 && sizeof(Uniforms) == 16 && sizeof(LineUniforms) == 32);

/// Device pixels from the top left to clip space, for the text pipeline and for flat shapes placed on pixels.
inline Uniforms pixelUniforms(double width, double height, double pixelRatio) {
    return {static_cast<float>(2.0 / (width * pixelRatio)), -1.0F, static_cast<float>(-2.0 / (height * pixelRatio)),
            1.0F};
}

}  // namespace vmr
