#include "chart/KeptOverlays.h"

#include <utility>

#include "chart/PipelineState.h"

namespace vmr {

bool KeptOverlays::set(const OverlayLists& lists) {
    bool changed = std::exchange(origin_, lists.origin) != lists.origin;
    changed |= lines_.replace(lists.lines);
    if (std::exchange(sessionRevision_, lists.sessionRevision) != lists.sessionRevision)
        changed |= sessionLines_.replace(lists.sessionLines);
    changed |= second_.replace(lists.second);
    changed |= secondBorders_.replace(lists.secondBorders);
    return changed;
}

void KeptOverlays::draw(const Camera& camera, double width, double height) const {
    if (lineVertices() + second_.size() + secondBorders_.size() == 0) return;
    const LineUniforms place = lineUniforms(camera.uniforms(origin_), width, height);
    if (lineVertices() > 0) setWithView(gpu_, Pipeline::ribbon, place);
    lines_.drawInView(camera, origin_);
    sessionLines_.drawInView(camera, origin_);
    if (second_.size() > 0) setWithView(gpu_, Pipeline::box, place);
    second_.drawInView(camera, origin_);
    if (secondBorders_.size() > 0) setWithView(gpu_, Pipeline::ribbon, place);
    secondBorders_.drawInView(camera, origin_);
}

}  // namespace vmr
