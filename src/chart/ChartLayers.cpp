// The layers of a frame, back to front.
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
        drawDyn(Primitive::triangles, wave.fill);
        setWithView(gpu_, Pipeline::ribbon, view);
        drawDyn(Primitive::quads, wave.stroke);
        setWithView(gpu_, Pipeline::marker, view);
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
    overlays_.draw(camera_, width, height);
    setWithView(gpu_, Pipeline::box, camera);
    bars_.bodies.drawInView(camera_, origin_);
    drawDyn(Primitive::quads, geometry.forming.body);
    bars_.wicks.drawInView(camera_, origin_);
    drawDyn(Primitive::quads, geometry.forming.wicks);
    if (bars_.borders.size() == 0 && !geometry.forming.border) return;
    setWithView(gpu_, Pipeline::ribbon, camera);
    bars_.borders.drawInView(camera_, origin_);
    drawDyn(Primitive::quads, geometry.forming.border);
}

}  // namespace vmr
