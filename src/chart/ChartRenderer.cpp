#include "chart/ChartRenderer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "market/Bars.h"
#include "market/SessionTime.h"

namespace vmr {

ChartRenderer::ChartRenderer(Gpu& gpu, const Clock& clock)
    : gpu_(gpu), clock_(clock), arena_(gpu), bars_(gpu), walls_(gpu), markers_(gpu), overlays_(gpu) {}

ChartRenderer::~ChartRenderer() = default;

void ChartRenderer::needsDisplay() {
    if (onNeedsDisplay) onNeedsDisplay();
}

void ChartRenderer::noteInput() {
    input_.lastAt = clock_.monotonic();
    if (!input_.at) input_.at = input_.lastAt;
}

namespace {

/// By how many places the bars near number `at` of `old` have moved in `fresh`; 0 when it has none of them. Bars come
/// and go at the front, and now and then within the list.
double shiftNear(double at, std::span<const Candle> old, std::span<const Candle> fresh) {
    if (old.empty()) return 0;
    const auto from = static_cast<std::size_t>(std::clamp(at, 0.0, static_cast<double>(old.size() - 1)));
    const auto moved = [&](std::size_t i) -> std::optional<double> {
        const auto found = findBar(fresh, old[i].time);
        if (!found) return std::nullopt;
        return static_cast<double>(*found) - static_cast<double>(i);
    };
    if (const auto shift = moved(from)) return *shift;
    const auto front = findBar(old, fresh.front().time);  // those in view have gone
    return front ? -static_cast<double>(*front) : 0;
}

}  // namespace

void ChartRenderer::setCandles(std::span<const Candle> candles) {
    const std::size_t oldCount = candles_.size();
    const std::size_t n = candles.size();
    if (n == 0) {
        candles_.clear();
        return;
    }
    // a bar or two may come ahead of their history: nobody has looked at them, and their camera would show as few
    constexpr std::size_t few = 10;
    const bool historyCame = oldCount < few && n >= oldCount + few && !camera_.touched;
    const bool first = oldCount == 0 || historyCame;
    const double shift = shiftNear(camera_.firstVisible + camera_.visibleCount / 2, candles_, candles);
    const bool shifted = oldCount != n || shift != 0;
    const bool newBar = shifted || candles_.back().time != candles.back().time;
    const bool lastChanged = shifted || candles_.back() != candles.back();
    const bool staticChanged = shifted || (n > 1 && candles_[n - 2] != candles[n - 2]);
    candles_.assign(candles.begin(), candles.end());

    if (newBar) forming_.jumpTo(candles_.back().close);
    if (first) {
        camera_.showFirstData(n, renderCfg_.initialCandles);
    } else {
        camera_.followData(n, shift, lastChanged);
        if (!lastChanged) return;
    }
    if (staticChanged) barsMoved();
    needsDisplay();
}

void ChartRenderer::barsMoved() {
    const Candle& last = candles_.back();
    origin_ = {static_cast<double>(candles_.size() - 1), std::isfinite(last.close) ? last.close : 0.0};
    bars_.dirty = walls_.dirty = markers_.dirty = true;
}

void ChartRenderer::startOver() {
    candles_.clear();
    camera_.startOver();
    strikes_ = {};
    forming_.jumpTo(std::numeric_limits<double>::quiet_NaN());
    markers_.clear();
    edges_.clear();
    setOverlayGeometry({});
}

void ChartRenderer::setRenderConfig(const RenderConfig& config) {
    if (config == renderCfg_) return;
    if (config.candleTheme != renderCfg_.candleTheme) bars_.dirty = true;
    if (config.wallsEnabled != renderCfg_.wallsEnabled) walls_.dirty = true;
    if (!KeptMarkers::looksAlike(config, renderCfg_)) markers_.dirty = true;
    renderCfg_ = config;
    needsDisplay();
}

void ChartRenderer::setLevels(std::span<const PriceLevel> levels) {
    if (walls_.set(levels)) needsDisplay();
}

void ChartRenderer::setStrikes(std::span<const StrikeRow> rows, double etfRatio, std::optional<double> flipStrike) {
    const double ratio = std::isfinite(etfRatio) && etfRatio > 0 ? etfRatio : strikes_.etfRatio;
    if (ratio == strikes_.etfRatio && flipStrike == strikes_.flip && std::ranges::equal(rows, strikes_.rows)) return;
    if (ratio != strikes_.etfRatio) markers_.dirty = true;
    strikes_.rows.assign(rows.begin(), rows.end());
    strikes_.etfRatio = ratio;
    strikes_.flip = flipStrike;
    needsDisplay();
}

void ChartRenderer::setSecStrikes(std::span<const StrikeRow> rows, double ratio) {
    const double usable = std::isfinite(ratio) && ratio != 0 ? ratio : strikes_.secRatio;
    if (usable == strikes_.secRatio && std::ranges::equal(rows, strikes_.secRows)) return;
    strikes_.secRows.assign(rows.begin(), rows.end());
    strikes_.secRatio = usable;
    needsDisplay();
}

void ChartRenderer::setBubbles(std::span<const BubblePt> bubbles, std::span<const TrianglePt> triangles) {
    if (markers_.set(bubbles, triangles)) needsDisplay();
}

void ChartRenderer::setOverlayGeometry(const OverlayLists& lists) {
    if (overlays_.set(lists)) needsDisplay();
}

void ChartRenderer::pan(double byCandles) {
    if (candles_.empty()) return;
    noteInput();
    if (camera_.pan(byCandles, candles_.size())) needsDisplay();
}

void ChartRenderer::zoom(double factor) {
    if (candles_.empty()) return;
    noteInput();
    if (camera_.zoom(factor, candles_.size())) needsDisplay();
}

void ChartRenderer::zoomPrice(double factor) {
    if (!camera_.settled() || !(camera_.yMinManual < camera_.yMaxManual)) return;
    noteInput();
    if (camera_.zoomPrice(factor)) needsDisplay();
}

void ChartRenderer::panByPrice(double dyPixels, double viewHeight) {
    if (!camera_.settled() || !(viewHeight > 0) || !(camera_.yMinManual < camera_.yMaxManual)) return;
    noteInput();
    if (camera_.panByPrice(dyPixels, viewHeight)) needsDisplay();
}

void ChartRenderer::mirrorView(double first, double count) {
    if (!candles_.empty() && camera_.mirrorView(first, count, candles_.size())) needsDisplay();
}

void ChartRenderer::mirrorViewRel(double gapRight, double count) {
    if (!candles_.empty() && camera_.mirrorViewRel(gapRight, count, candles_.size())) needsDisplay();
}

void ChartRenderer::mirrorPrice(double minP, double maxP) {
    if (camera_.mirrorPrice(minP, maxP)) needsDisplay();
}

void ChartRenderer::setPriceLineFrac(double frac) {
    camera_.setPriceLineFrac(frac);
    needsDisplay();
}

void ChartRenderer::applyView(const ViewSetup& setup, bool byHand) {
    if (byHand) input_.lastAt = clock_.monotonic();
    camera_.apply(setup, candles_.size());
    needsDisplay();
}

void ChartRenderer::setAutoY(bool on) {
    input_.lastAt = clock_.monotonic();
    camera_.autoY = on;
    needsDisplay();
}

void ChartRenderer::setInteracting(bool on) {
    const bool ended = interacting_ && !on;
    interacting_ = on;
    if (ended && onInteractionEnd) onInteractionEnd();
}

std::size_t ChartRenderer::currentSessionStartIndex() const {
    if (candles_.empty()) return 0;
    const std::int64_t open = SessionTime::calendarSessionOpenSec(candles_.back().time, sessionHHMM);
    const auto found = std::lower_bound(candles_.begin(), candles_.end(), open,
                                        [](const Candle& candle, std::int64_t time) { return candle.time < time; });
    return found == candles_.end() ? 0 : static_cast<std::size_t>(found - candles_.begin());
}

std::string ChartRenderer::benchDataSummary() const {
    return fmt::format("candles={} visible={:.0f} strikes={} bubbles={} triangles={} overlayLineVerts={} 2ndVerts={}",
                       candles_.size(), camera_.visibleCount, strikes_.rows.size(), markers_.bubbles(),
                       markers_.triangles(), overlays_.lineVertices(), overlays_.secondVertices());
}

}  // namespace vmr
