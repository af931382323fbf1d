// The layers of a frame, back to front.
#include "chart/ChartRenderer.h"
#include "chart/PipelineState.h"

namespace vmr {

void ChartRenderer::drawDyn(Primitive primitive, const std::optional<DynUpload>& list) {
    if (list) gpu_.draw(primitive, list->buffer, list->offset, list->count);
}

void ChartRenderer::encodeEdges(const EdgeFrame& edges) {
    if (!edges.waveFill && !edges.edgeTris && !edges.waveStroke) return;
    setFlat(gpu_, {});
    drawDyn(Primitive::triangles, edges.waveFill);
    drawDyn(Primitive::triangles, edges.edgeTris);
    drawDyn(Primitive::lines, edges.waveStroke);
}

void ChartRenderer::encodeLayers(const Geometry& geometry, double width, double height) {
    const Uniforms& camera = geometry.candleUniforms;
    markers_.draw(camera_, origin_, width, height);
    encodeEdges(geometry.edges);
    setFlat(gpu_, camera);
    walls_.draw();
    drawDyn(Primitive::lines, geometry.forming.priceLine);
    if (overlays_.draw(camera_, width, height)) setFlat(gpu_, camera);
    bars_.bodies.drawInView(camera_, origin_);
    drawDyn(Primitive::triangles, geometry.forming.body);
    bars_.wicks.drawInView(camera_, origin_);
    drawDyn(Primitive::triangles, geometry.forming.wicks);
    if (bars_.borders.size() == 0 && !geometry.forming.border) return;
    setWithView(gpu_, Pipeline::ribbon, lineUniforms(camera, width, height));
    bars_.borders.drawInView(camera_, origin_);
    drawDyn(Primitive::triangles, geometry.forming.border);
}

}  // namespace vmr
