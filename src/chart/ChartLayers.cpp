// The layers of a frame, back to front.
#include "chart/CandleGeometry.h"
#include "chart/ChartRenderer.h"
#include "chart/PipelineState.h"

namespace vmr {

void ChartRenderer::drawDyn(Primitive primitive, const std::optional<DynUpload>& list) {
    if (list) gpu_.draw(primitive, list->buffer, list->offset, list->count);
}

void ChartRenderer::encodeEdges(const EdgeFrame& edges, double width, double height) {
    LineUniforms view = lineUniforms({}, width, height);
    view.pad0 = view.pad1 = 1;  // of markers
    for (const EdgeFrame::Wave& wave : edges.waves) {
        if (!wave.fill) continue;
        setFlat(gpu_, {});
        drawDyn(Primitive::quads, wave.fill);
        setWithView(gpu_, Pipeline::ribbon, view);
        drawDyn(Primitive::quads, wave.stroke);
        setWithView(gpu_, Pipeline::disc, view);
        drawDyn(Primitive::quads, wave.dots);
    }
    if (!edges.bars) return;
    setWithView(gpu_, Pipeline::box, view);
    drawDyn(Primitive::quads, edges.bars);
}

void ChartRenderer::encodeLayers(const Geometry& geometry, double width, double height) {
    const LineUniforms camera = lineUniforms(geometry.candleUniforms, width, height);
    markers_.draw(camera_, origin_, width, height);
    encodeEdges(geometry.edges, width, height);
    setWithView(gpu_, Pipeline::ribbon, camera);
    walls_.draw();
    if (geometry.forming.priceLine) {
        setFlat(gpu_, geometry.candleUniforms);
        drawDyn(Primitive::lines, geometry.forming.priceLine);
    }
    overlays_.draw(arena_, camera_, width, height);
    setWithView(gpu_, CandleGeometry::pipelineAt(width / camera_.visibleCount), camera);
    bars_.list.drawInView(camera_, origin_);
    drawDyn(Primitive::quads, geometry.forming.candle);
}

}  // namespace vmr
