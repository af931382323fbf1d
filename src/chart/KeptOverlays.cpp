#include "chart/KeptOverlays.h"

#include <algorithm>
#include <utility>

#include "chart/CandleGeometry.h"
#include "chart/PipelineState.h"
#include "market/Bars.h"

namespace vmr {

namespace {

constexpr double leastDash = 3;  // points from one dash to the next; finer ones shimmer

/// How far a session line's dashes are apart on the screen.
double dashPoints(const Camera& camera, double width) {
    return OverlayLists::sessionDash.period() * width / camera.visibleCount;
}

/// The uniforms for dashed lines; without gaps these are as faint as dashes and gaps are together.
LineUniforms dashed(LineUniforms place, const Dash& dash, bool gaps) {
    place.pad0 = gaps ? static_cast<float>(dash.period()) : 0.0F;
    place.pad1 = static_cast<float>(dash.on / dash.period());
    return place;
}

}  // namespace

template <class Vertex>
bool KeptSeries<Vertex>::set(const SeriesList<Vertex>& list) {
    const std::span<const Vertex> all(list.vertices), end = all.subspan(list.settled);
    const bool settled = std::exchange(revision_, list.revision) != list.revision;
    if (settled) settled_.keep(all.first(list.settled));
    if (!settled && std::ranges::equal(end, end_)) return false;
    end_.assign(end.begin(), end.end());
    return true;
}

template <class Vertex>
void KeptSeries<Vertex>::drawInView(Gpu& gpu, FrameArena& arena, const Camera& camera, const DataOrigin& origin) const {
    settled_.drawInView(camera, origin);
    if (end_.empty() || !KeptList::isInView(end_, camera, origin)) return;
    const auto list = arena.uploadDyn(end_);
    gpu.draw(Primitive::quads, list->buffer, list->offset, list->count);
}

KeptOverlays::KeptOverlays(Gpu& gpu) : gpu_(gpu), sessionLines_(gpu), sessionDashes_(gpu), second_(gpu) {
    for (std::size_t i = 0; i < OverlayLists::ribbonCount; ++i) ribbons_.emplace_back(gpu);
}

bool KeptOverlays::set(const OverlayLists& lists) {
    bool changed = std::exchange(origin_, lists.origin) != lists.origin;
    originTime_ = lists.originTime;
    for (std::size_t i = 0; i < ribbons_.size(); ++i) {
        ribbons_[i].dash = lists.ribbons[i].dash;
        changed |= ribbons_[i].series.set(lists.ribbons[i]);
    }
    if (std::exchange(sessionRevision_, lists.sessionRevision) != lists.sessionRevision) {
        changed |= sessionLines_.replace(lists.sessionLines);
        changed |= sessionDashes_.replace(lists.sessionDashes);
    }
    changed |= second_.set(lists.second);
    return changed;
}

void KeptOverlays::follow(std::span<const Candle> candles) {
    if (const auto bar = findBar(candles, originTime_)) origin_.bar = static_cast<double>(*bar);
}

std::size_t KeptOverlays::lineVertices() const {
    std::size_t count = sessionLines_.size() + sessionDashes_.size();
    for (const Ribbon& ribbon : ribbons_) count += ribbon.series.size();
    return count;
}

void KeptOverlays::draw(FrameArena& arena, const Camera& camera, double width, double height) const {
    const LineUniforms place = lineUniforms(camera.uniforms(origin_), width, height);
    drawRibbons(arena, camera, place);
    if (sessionDashes_.size() > 0) {
        const bool gaps = dashPoints(camera, width) >= leastDash;
        setWithView(gpu_, Pipeline::dashed, dashed(place, OverlayLists::sessionDash, gaps));
        sessionDashes_.draw();
    }
    if (second_.size() == 0) return;
    setWithView(gpu_, CandleGeometry::pipelineAt(width / camera.visibleCount), place);
    second_.drawInView(gpu_, arena, camera, origin_);
}

// Each over the one before; the pipeline changes only where a dashed one comes.
void KeptOverlays::drawRibbons(FrameArena& arena, const Camera& camera, const LineUniforms& place) const {
    bool plain = false;
    const auto setPlain = [&] {
        if (!std::exchange(plain, true)) setWithView(gpu_, Pipeline::ribbon, place);
    };
    for (const Ribbon& ribbon : ribbons_) {
        const auto& [series, dash] = ribbon;
        if (series.size() == 0) continue;
        if (!dash) {
            setPlain();
        } else {
            setWithView(gpu_, Pipeline::dashed, dashed(place, *dash, true));
            plain = false;
        }
        series.drawInView(gpu_, arena, camera, origin_);
    }
    if (sessionLines_.size() == 0) return;
    setPlain();
    sessionLines_.draw();
}

}  // namespace vmr
