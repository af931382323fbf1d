// What the GPU keeps from frame to frame: bodies and wicks, walls, markers and overlays, built when their inputs
// change.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "chart/CandleGeometry.h"
#include "chart/ChartRenderer.h"
#include "chart/Markers.h"
#include "perf/Perf.h"

namespace vmr {

namespace {
constexpr Rgba wallColor{0.667F, 0.667F, 0.667F, 0.85F};
constexpr double wallReach = 2.0;  // bars past the last one

struct Place {
    float bar, points;
};
Place placeOf(const ChartVertex& vertex) { return {vertex.position[0], 0}; }
Place placeOf(const LineVertex& vertex) { return {vertex.pos[0], vertex.pos[3]}; }
Place placeOf(const MarkerVertex& vertex) { return {vertex.center[0], vertex.off[2]}; }
}  // namespace

template <class Vertex>
void ChartRenderer::retain(Retained& retained, const std::vector<Vertex>& list) {
    if (retained.buf != 0) gpu_.release(retained.buf);
    retained.buf = list.empty() ? 0 : gpu_.makeBuffer(std::as_bytes(std::span(list)));
    retained.n = list.size();
    retained.stride = sizeof(Vertex);
    retained.blocks.clear();
    if (list.size() <= blockVertices) return;
    for (std::size_t begin = 0; begin < list.size(); begin += blockVertices) {
        const Place first = placeOf(list[begin]);
        Reach reach{first.bar, first.bar, first.points};
        for (std::size_t i = begin; i < std::min(begin + blockVertices, list.size()); ++i) {
            const Place place = placeOf(list[i]);
            reach.low = std::min(reach.low, place.bar);
            reach.high = std::max(reach.high, place.bar);
            reach.points = std::max(reach.points, place.points);
        }
        retained.blocks.push_back(reach);
    }
}

template <class Vertex>
bool ChartRenderer::replace(Retained& retained, const std::vector<Vertex>& list) {
    if (retained.n == list.size() && (list.empty() || gpu_.holds(retained.buf, std::as_bytes(std::span(list)))))
        return false;
    retain(retained, list);
    return true;
}

template void ChartRenderer::retain(Retained&, const std::vector<ChartVertex>&);

void ChartRenderer::setOverlayGeometry(const OverlayLists& lists) {
    bool changed = std::exchange(overlayOrigin_, lists.origin) != lists.origin;
    changed |= replace(overlayLines_, lists.lines);
    if (std::exchange(sessionRevision_, lists.sessionRevision) != lists.sessionRevision)
        changed |= replace(sessionLines_, lists.sessionLines);
    changed |= replace(second_, lists.second);
    changed |= replace(secondBorders_, lists.secondBorders);
    if (changed) needsDisplay();
}

void ChartRenderer::rebuildRetained() {
    if (staticDirty_) rebuildCandleGeometry();
    if (wallsDirty_) rebuildWallGeometry();
    if (markersDirty_) rebuildMarkers();
}

void ChartRenderer::rebuildCandleGeometry() {
    using namespace CandleGeometry;
    staticDirty_ = false;
    const std::size_t n = candles_.size() - 1;  // the last one is the forming bar's
    flatScratch_.resize(n * bodyVertices);
    ribbonScratch_.clear();
    ChartVertex* body = flatScratch_.data();
    const auto each = [&](auto&& make) {
        for (std::size_t i = 0; i < n; ++i) {
            const Candle& c = candles_[i];
            const bool up = isUp(c.open, c.close);
            const double top = (up ? c.close : c.open) - origin_.price;
            const double bot = std::min(c.open, c.close) - origin_.price;
            make(c, static_cast<double>(i) - origin_.bar, top, bot, look(renderCfg_.candleTheme, up));
        }
    };
    each([&](const Candle&, double x, double top, double bot, const Look& style) {
        body = writeBody(body, x, top, bot, style.body);
        if (!style.outlined) return;
        ribbonScratch_.resize(ribbonScratch_.size() + outlineVertices);
        appendBodyOutline(&*(ribbonScratch_.end() - outlineVertices), x, halfBody, top, bot, style.border);
    });
    retain(candleTris_, flatScratch_);
    retain(candleBorders_, ribbonScratch_);

    flatScratch_.resize(n * wickVertices);
    ChartVertex* wick = flatScratch_.data();
    each([&](const Candle& c, double x, double top, double bot, const Look& style) {
        wick = writeWicks(wick, x, c.high - origin_.price, top, bot, c.low - origin_.price, style.wick);
    });
    retain(candleWicks_, flatScratch_);
}

void ChartRenderer::rebuildWallGeometry() {
    wallsDirty_ = false;
    flatScratch_.clear();
    if (renderCfg_.wallsEnabled && !levels_.empty()) {
        const auto start = static_cast<float>(static_cast<double>(currentSessionStartIndex()) - origin_.bar);
        const auto end = static_cast<float>(static_cast<double>(candles_.size() - 1) + wallReach - origin_.bar);
        for (const PriceLevel& level : levels_) {
            if (!std::isfinite(level.price)) continue;
            const auto y = static_cast<float>(level.price - origin_.price);
            flatScratch_.push_back({{start, y, 0.0F, 1.0F}, wallColor});
            flatScratch_.push_back({{end, y, 0.0F, 1.0F}, wallColor});
        }
    }
    retain(walls_, flatScratch_);
}

void ChartRenderer::rebuildMarkers() {
    const double start = clock_.monotonic();
    markersDirty_ = false;
    Markers::build(markerScratch_, {bubblePts_, trianglePts_, candles_, etfRatio_, renderCfg_, origin_});
    retain(markers_, markerScratch_);
    if (perf) perf->time("markers", (clock_.monotonic() - start) * 1000.0);
}

bool ChartRenderer::hasOverlays() const { return overlayLines_.n + sessionLines_.n > 0; }

std::string ChartRenderer::benchDataSummary() const {
    return fmt::format("candles={} visible={:.0f} strikes={} bubbles={} triangles={} overlayLineVerts={} 2ndVerts={}",
                       candles_.size(), camera_.visibleCount, strikes_.size(), bubblePts_.size(), trianglePts_.size(),
                       overlayLines_.n + sessionLines_.n, second_.n);
}

}  // namespace vmr
