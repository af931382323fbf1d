// The chart's GPU formats: what vertices and uniforms look like in memory, for every pipeline.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vmr {

/// A colour: r, g, b, a, each 0 to 1, not premultiplied.
using Rgba = std::array<float, 4>;

/// The same in bytes, as vertices carry it. Shares beyond 0 to 1 are cut to it; NaN is 0.
struct Rgba8 {
    std::uint8_t r = 0, g = 0, b = 0, a = 0;

    constexpr Rgba8() = default;
    constexpr Rgba8(const Rgba& color)  // meant to be implicit
        : r(byteOf(color[0])), g(byteOf(color[1])), b(byteOf(color[2])), a(byteOf(color[3])) {}
    bool operator==(const Rgba8&) const = default;
    constexpr Rgba shares() const { return {r / 255.0F, g / 255.0F, b / 255.0F, a / 255.0F}; }

 private:
    static constexpr std::uint8_t byteOf(float share) {
        return static_cast<std::uint8_t>((share > 0 ? share < 1 ? share : 1 : 0) * 255 + 0.5F);
    }
};

/// Flat shapes. Position x, y.
struct ChartVertex {
    float position[2] = {0, 0};
    Rgba8 color;
    bool operator==(const ChartVertex&) const = default;
};

/// Upright boxes, a quad each: a corner and the one opposite to it, the same colour in all four.
struct BoxVertex {
    float corner[2] = {0, 0};
    float opposite[2] = {0, 0};
    Rgba8 color;
    bool operator==(const BoxVertex&) const = default;
};
inline constexpr std::size_t boxVertices = 4;

/// The same with round corners.
struct RoundVertex {
    float corner[2] = {0, 0};
    float opposite[2] = {0, 0};
    float radius = 0;  ///< points
    Rgba8 color;
    bool operator==(const RoundVertex&) const = default;
};

/// Candles, a quad each: a body with a wick through it in one colour, or an outline around a body that is filled less
/// densely, with a wick above and one below.
struct CandleVertex {
    float corner[2] = {0, 0};        ///< a side of the body and an end of the wick
    float opposite[2] = {0, 0};      ///< the others
    float body[2] = {0, 0};          ///< where the body begins and ends in y
    float wick = 0;                  ///< its width as a share of the body's
    float halfStroke = 0;            ///< points of the outline to either side of the body's edges; 0 for none
    float fill = 1;                  ///< opacity within an outline
    float before[4] = {0, 0, 0, 0};  ///< bodies of the candles one bar to the left and two; 0 for none
    Rgba8 beforeLooks;               ///< half stroke and opacity of either; 0 for none
    Rgba8 color;
    bool operator==(const CandleVertex&) const = default;
};

/// Calls `write` with each corner of a box and the one opposite to it, in the order of a quad.
template <class Write>
void eachCorner(float x0, float y0, float x1, float y1, Write&& write) {
    write(x0, y0, x1, y1);
    write(x0, y1, x1, y0);
    write(x1, y1, x0, y0);
    write(x1, y0, x0, y1);
}

/// Writes the four corners of a box at `out` and returns the place after them.
inline BoxVertex* writeBox(BoxVertex* out, float x0, float y0, float x1, float y1, const Rgba8& color) {
    eachCorner(x0, y0, x1, y1, [&](float x, float y, float ox, float oy) { *out++ = {{x, y}, {ox, oy}, color}; });
    return out;
}

/// Added to how far a corner lies beside a ribbon's middle line, at the end of a segment.
inline constexpr float segmentEnd = 256;

/// Ribbons of constant width on the screen, a quad for each segment: an end of its middle line, the whole segment's dx
/// and dy, those of the segment that it joins at this end (0 where it ends), and how far to the left of the middle line
/// (above 0) or to the right the corner lies, in points, and `segmentEnd` farther where the segment ends.
struct LineVertex {
    float pos[2] = {0, 0};
    float dir[2] = {0, 0};
    float joined[2] = {0, 0};
    float beside = 0;
    Rgba8 color;
    bool operator==(const LineVertex&) const = default;

    bool atEnd() const { return beside >= segmentEnd || beside <= -segmentEnd; }
    float halfWidth() const { return (beside < 0 ? -beside : beside) - (atEnd() ? segmentEnd : 0); }
};
inline constexpr std::size_t segmentVertices = 4;

/// Writes a segment from a to b that joins no other at `out` and returns the place after it.
inline LineVertex* writeSegment(LineVertex* out, float ax, float ay, float bx, float by, float halfWidth,
                                const Rgba8& color) {
    const float dx = bx - ax, dy = by - ay;
    *out++ = {{ax, ay}, {dx, dy}, {}, halfWidth, color};
    *out++ = {{ax, ay}, {dx, dy}, {}, -halfWidth, color};
    *out++ = {{bx, by}, {dx, dy}, {}, -halfWidth - segmentEnd, color};
    *out++ = {{bx, by}, {dx, dy}, {}, halfWidth + segmentEnd, color};
    return out;
}

/// Lets the segment at `first` run on into the one at `second`, which begins where it ends.
inline void joinSegments(LineVertex* first, LineVertex* second) {
    for (std::size_t i = 0; i < 2; ++i) {
        first[2].joined[i] = first[3].joined[i] = second->dir[i];
        second[0].joined[i] = second[1].joined[i] = first->dir[i];
    }
}

/// Markers of constant size on the screen, whose outline the GPU finds for each pixel: discs, a quad each, and
/// triangles as high as wide. The corners of one differ in their code alone.
struct MarkerVertex {
    float center[2] = {0, 0};
    float radius = 0;  ///< points, from the centre to the rim, or to the sides of a triangle's box
    float alpha = 1;   ///< not in the colour, since deep stacks are made of very faint ones
    Rgba8 color;  ///< in place of its alpha the corner: top left, bottom left, bottom right, top right, or tip, left
                  ///< and right of the base; 4 more where the tip is down
    bool operator==(const MarkerVertex&) const = default;

    bool isDown() const { return color.a >= 4; }
};
inline constexpr std::size_t discVertices = 4, triangleVertices = 3;

/// Writes the four corners of a disc at `out` and returns the place after them.
inline MarkerVertex* writeDisc(MarkerVertex* out, float x, float y, float radius, const Rgba& color) {
    MarkerVertex vertex{{x, y}, radius, color[3], color};
    for (std::uint8_t corner = 0; corner < discVertices; ++corner) {
        vertex.color.a = corner;
        *out++ = vertex;
    }
    return out;
}

/// The same with the three of a triangle.
inline MarkerVertex* writeTriangle(MarkerVertex* out, float x, float y, float radius, bool up, const Rgba& color) {
    MarkerVertex vertex{{x, y}, radius, color[3], color};
    for (std::uint8_t corner = 0; corner < triangleVertices; ++corner) {
        vertex.color.a = static_cast<std::uint8_t>(corner + (up ? 0 : 4));
        *out++ = vertex;
    }
    return out;
}

/// Glyph corners. Position in device pixels from the view's top left; `uv` into the glyph atlas.
struct TextVertex {
    float position[2] = {0, 0};
    float uv[2] = {0, 0};
    Rgba8 color;
    bool operator==(const TextVertex&) const = default;
};

/// clip = (x * xScale + xOffset, y * yScale + yOffset), for the flat and the text pipeline.
struct Uniforms {
    float xScale = 1, xOffset = 0, yScale = 1, yOffset = 0;
    bool operator==(const Uniforms&) const = default;
};

/// The same for the others, with the view in points. Markers: `pad0` fades alpha, `pad1` scales the
/// radius. Dashed lines: `pad0` is the bars from one dash to the next, 0 for no gaps, `pad1` the dashes' share.
struct LineUniforms {
    float xScale = 1, xOffset = 0, yScale = 1, yOffset = 0;
    float viewW = 0, viewH = 0, pad0 = 0, pad1 = 0;
    bool operator==(const LineUniforms&) const = default;
};

static_assert(sizeof(ChartVertex) == 12 && sizeof(BoxVertex) == 20 && sizeof(RoundVertex) == 24 &&
              sizeof(CandleVertex) == 60 && sizeof(LineVertex) == 32 && sizeof(MarkerVertex) == 20);
static_assert(sizeof(TextVertex) == 20 && sizeof(Uniforms) == 16 && sizeof(LineUniforms) == 32);

/// Points from the top left to clip space, for all but flat shapes and texts.
inline LineUniforms pointUniforms(double width, double height) {
    const auto w = static_cast<float>(width), h = static_cast<float>(height);
    return {2 / w, -1, -2 / h, 1, w, h, 1, 1};
}

/// Device pixels from the top left to clip space, for the text pipeline and for flat shapes placed on pixels.
inline Uniforms pixelUniforms(double width, double height, double pixelRatio) {
    return {static_cast<float>(2.0 / (width * pixelRatio)), -1.0F, static_cast<float>(-2.0 / (height * pixelRatio)),
            1.0F};
}

}  // namespace vmr
