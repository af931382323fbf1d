// The layers of a frame, back to front.
#include <algorithm>
#include <array>
#include <bit>

#include "chart/ChartRenderer.h"
#include "chart/Markers.h"

namespace vmr {

namespace {

LineUniforms lineUniforms(const Uniforms& camera, double width, double height) {
    return {camera.xScale,
            camera.xOffset,
            camera.yScale,
            camera.yOffset,
            static_cast<float>(width),
            static_cast<float>(height),
            0.0F,
            0.0F};
}

}  // namespace

void ChartRenderer::setFlat(const Uniforms& uniforms) {
    gpu_.setPipeline(Pipeline::flat);
    gpu_.setUniforms(std::bit_cast<std::array<float, 4>>(uniforms));
}

void ChartRenderer::setWithView(Pipeline pipeline, const LineUniforms& uniforms) {
    gpu_.setPipeline(pipeline);
    gpu_.setUniforms(std::bit_cast<std::array<float, 8>>(uniforms));
}

void ChartRenderer::drawDyn(Primitive primitive, const std::optional<DynUpload>& list) {
    if (list) gpu_.draw(primitive, list->buffer, list->offset, list->count);
}

void ChartRenderer::drawRetained(const Retained& retained, Primitive primitive) {
    if (retained.n > 0) gpu_.draw(primitive, retained.buf, 0, retained.n);
}

// A history is mostly out of view: of a long list only the blocks in view are drawn, runs of them at once.
void ChartRenderer::drawInView(const Retained& retained, const DataOrigin& origin) {
    if (retained.blocks.empty()) return drawRetained(retained);
    const double first = camera_.firstVisible - origin.bar, last = first + camera_.visibleCount;
    const double barsPerPoint = camera_.visibleCount / std::max(camera_.lastViewW, 1.0);
    const auto isOut = [&](const Reach& reach) {
        const double beyond = (static_cast<double>(reach.points) + 1.0) * barsPerPoint;
        return static_cast<double>(reach.high) + beyond < first || static_cast<double>(reach.low) - beyond > last;
    };
    const std::size_t count = retained.blocks.size();
    for (std::size_t begin = 0, end; begin < count; begin = end) {
        end = begin + 1;
        if (isOut(retained.blocks[begin])) continue;
        while (end < count && !isOut(retained.blocks[end])) ++end;
        const std::size_t from = begin * blockVertices, to = std::min(end * blockVertices, retained.n);
        gpu_.draw(Primitive::triangles, retained.buf, from * retained.stride, to - from);
    }
}

void ChartRenderer::encodeMarkers(const Uniforms& camera, double width, double height) {
    if (markers_.n == 0) return;
    const Markers::Zoom zoom = Markers::zoom(camera_.visibleCount);
    LineUniforms uniforms = lineUniforms(camera, width, height);
    uniforms.pad0 = zoom.fade;
    uniforms.pad1 = zoom.shrink;
    setWithView(Pipeline::marker, uniforms);
    drawInView(markers_, origin_);
}

void ChartRenderer::encodeEdges(const Geometry& geometry) {
    if (!geometry.waveFill && !geometry.edgeTris && !geometry.waveStroke) return;
    setFlat({});
    drawDyn(Primitive::triangles, geometry.waveFill);
    drawDyn(Primitive::triangles, geometry.edgeTris);
    drawDyn(Primitive::lines, geometry.waveStroke);
}

// Between the price line and the candles: ribbons, then the paired instrument's candles and their outlines.
void ChartRenderer::encodeOverlays(double width, double height) {
    if (overlayLines_.n + sessionLines_.n + second_.n + secondBorders_.n == 0) return;
    const Uniforms camera = camera_.uniforms(overlayOrigin_);
    const LineUniforms ribbons = lineUniforms(camera, width, height);
    if (overlayLines_.n + sessionLines_.n > 0) setWithView(Pipeline::ribbon, ribbons);
    drawInView(overlayLines_, overlayOrigin_);
    drawInView(sessionLines_, overlayOrigin_);
    if (second_.n > 0) setFlat(camera);
    drawInView(second_, overlayOrigin_);
    if (secondBorders_.n > 0) setWithView(Pipeline::ribbon, ribbons);
    drawInView(secondBorders_, overlayOrigin_);
    setFlat(camera_.uniforms(origin_));
}

void ChartRenderer::encodeLayers(const Geometry& geometry, double width, double height) {
    const Uniforms& camera = geometry.candleUniforms;
    encodeMarkers(camera, width, height);
    encodeEdges(geometry);
    setFlat(camera);
    drawRetained(walls_, Primitive::lines);
    drawDyn(Primitive::lines, geometry.priceLine);
    encodeOverlays(width, height);
    drawInView(candleTris_, origin_);
    drawDyn(Primitive::triangles, geometry.formingTris);
    drawInView(candleWicks_, origin_);
    drawDyn(Primitive::triangles, geometry.formingWicks);
    if (candleBorders_.n == 0 && !geometry.formingBorder) return;
    setWithView(Pipeline::ribbon, lineUniforms(camera, width, height));
    drawInView(candleBorders_, origin_);
    drawDyn(Primitive::triangles, geometry.formingBorder);
}

}  // namespace vmr
