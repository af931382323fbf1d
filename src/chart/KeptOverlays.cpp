#include "chart/KeptOverlays.h"

#include <utility>

#include "chart/CandleGeometry.h"
#include "chart/OverlayGeometry.h"
#include "chart/PipelineState.h"
#include "market/Bars.h"

namespace vmr {

namespace {

constexpr double leastDash = 3;  // points from one dash to the next; finer ones shimmer

bool showsDashes(const Camera& camera, double width) {
    return OverlayGeometry::sessionDash.period() * width >= leastDash * camera.visibleCount;
}

}  // namespace

bool KeptOverlays::set(const OverlayLists& lists) {
    bool changed = std::exchange(origin_, lists.origin) != lists.origin;
    originTime_ = lists.originTime;
    changed |= lines_.replace(lists.lines);
    if (std::exchange(sessionRevision_, lists.sessionRevision) != lists.sessionRevision) {
        changed |= sessionLines_.replace(lists.sessionLines);
        changed |= sessionFar_.replace(lists.sessionFar);
    }
    changed |= second_.replace(lists.second);
    return changed;
}

void KeptOverlays::follow(std::span<const Candle> candles) {
    if (const auto bar = findBar(candles, originTime_)) origin_.bar = static_cast<double>(*bar);
}

void KeptOverlays::draw(const Camera& camera, double width, double height) const {
    if (lineVertices() + second_.size() == 0) return;
    const LineUniforms place = lineUniforms(camera.uniforms(origin_), width, height);
    if (lineVertices() > 0) setWithView(gpu_, Pipeline::ribbon, place);
    lines_.drawInView(camera, origin_);
    (showsDashes(camera, width) ? sessionLines_ : sessionFar_).drawInView(camera, origin_);
    const bool dense = CandleGeometry::areDense(width / camera.visibleCount);
    if (second_.size() > 0) setWithView(gpu_, dense ? Pipeline::dense : Pipeline::candle, place);
    second_.drawInView(camera, origin_);
}

}  // namespace vmr
