// The layers of a frame, back to front.
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

void ChartRenderer::encodeMarkers(const Uniforms& camera, double width, double height) {
    if (markers_.n == 0) return;
    const Markers::Zoom zoom = Markers::zoom(camera_.visibleCount);
    LineUniforms uniforms = lineUniforms(camera, width, height);
    uniforms.pad0 = zoom.fade;
    uniforms.pad1 = zoom.shrink;
    setWithView(Pipeline::marker, uniforms);
    drawRetained(markers_);
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
    drawRetained(overlayLines_);
    drawRetained(sessionLines_);
    if (second_.n > 0) setFlat(camera);
    drawRetained(second_);
    if (secondBorders_.n > 0) setWithView(Pipeline::ribbon, ribbons);
    drawRetained(secondBorders_);
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
    drawRetained(candleTris_);
    drawDyn(Primitive::triangles, geometry.formingTris);
    drawRetained(candleWicks_);
    drawDyn(Primitive::triangles, geometry.formingWicks);
    if (candleBorders_.n == 0 && !geometry.formingBorder) return;
    setWithView(Pipeline::ribbon, lineUniforms(camera, width, height));
    drawRetained(candleBorders_);
    drawDyn(Primitive::triangles, geometry.formingBorder);
}

}  // namespace vmr
