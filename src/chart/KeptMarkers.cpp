#include "chart/KeptMarkers.h"

#include <tuple>
#include <utility>

#include "chart/PipelineState.h"

namespace vmr {

bool KeptMarkers::set(std::span<const BubblePt> bubbles, std::span<const TrianglePt> triangles) {
    const auto same = [](const auto& fresh, const auto& held) {
        return fresh.size() == held.size() && (fresh.empty() || fresh.back() == held.back());
    };
    if (same(bubbles, bubblePts_) && same(triangles, trianglePts_)) return false;
    bubblePts_.assign(bubbles.begin(), bubbles.end());
    trianglePts_.assign(triangles.begin(), triangles.end());
    dirty = true;
    return true;
}

void KeptMarkers::clear() {
    bubblePts_.clear();
    trianglePts_.clear();
    dirty = true;
}

bool KeptMarkers::looksAlike(const RenderConfig& a, const RenderConfig& b) {
    const auto look = [](const RenderConfig& c) {
        return std::tie(c.bubblesEnabled, c.trianglesEnabled, c.bubbleOpacity, c.triangleOpacity, c.bubblePos,
                        c.bubbleNeg, c.hfCall, c.hfPut);
    };
    return look(a) == look(b);
}

void KeptMarkers::make(std::span<const Candle> candles, double etfRatio, const RenderConfig& config,
                       const DataOrigin& origin) {
    dirty = false;
    Markers::build(lists_, {bubblePts_, trianglePts_, candles, etfRatio, config, origin});
    discs_.keep(lists_.discs);
    triangles_.keep(lists_.triangles);
}

void KeptMarkers::draw(const Camera& camera, const DataOrigin& origin, double width, double height) const {
    const Markers::Zoom zoom = Markers::zoom(camera.visibleCount);
    LineUniforms uniforms = lineUniforms(camera.uniforms(origin), width, height);
    uniforms.pad0 = zoom.fade;
    uniforms.pad1 = zoom.shrink;
    for (const auto& [list, pipeline] :
         {std::pair(&discs_, Pipeline::disc), std::pair(&triangles_, Pipeline::triangle)}) {
        if (list->size() == 0) continue;
        setWithView(gpu_, pipeline, uniforms);
        list->drawInView(camera, origin);
    }
}

}  // namespace vmr
