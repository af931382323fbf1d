// The layers of a frame, back to front.
#include "chart/ChartRenderer.h"
#include "chart/PipelineState.h"

namespace vmr {

void ChartRenderer::drawDyn(Primitive primitive, const std::optional<DynUpload>& list) {
    if (list) gpu_.draw(primitive, list->buffer, list->offset, list->count);
}

void ChartRenderer::encodeEdges(const EdgeFrame& edges, double width, double height) {
    for (const EdgeFrame::Wave& wave : edges.waves) {
        if (!wave.fill) continue;
        setFlat(gpu_, {});
        drawDyn(Primitive::triangles, wave.fill);
        LineUniforms dots = lineUniforms({}, width, height);
        dots.pad0 = dots.pad1 = 1;
        setWithView(gpu_, Pipeline::marker, dots);
        drawDyn(Primitive::quads, wave.dots);
    }
    if (!edges.edgeTris) return;
    setFlat(gpu_, {});
    drawDyn(Primitive::triangles, edges.edgeTris);
}

void ChartRenderer::encodeLayers(const Geometry& geometry, double width, double height) {
    const Uniforms& camera = geometry.candleUniforms;
    markers_.draw(camera_, origin_, width, height);
    encodeEdges(geometry.edges, width, height);
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
