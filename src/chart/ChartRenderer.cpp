#include "chart/ChartRenderer.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "market/SessionTime.h"

namespace vmr {

/// What waits to be delivered on the main thread's queue. A plain pointer to it is all that a posted task holds, so
/// that posting needs no memory of its own; when the renderer goes first, the box waits in `orphans` for its task.
struct ChartRenderer::Delivery {
    ChartRenderer* owner;
    Post post;
    Viewport viewport;
    bool viewportDue = false, labelsDue = false;
    bool pending = false;

    static std::vector<std::unique_ptr<Delivery>>& orphans() {
        static std::vector<std::unique_ptr<Delivery>> list;
        return list;
    }

    void send() {
        if (std::exchange(pending, true)) return;
        post([this] { run(); });
    }

    // `pending` stays on meanwhile, so that a handler that ends the renderer leaves the box alone.
    void run() {
        if (owner && std::exchange(viewportDue, false) && owner->onViewport)
            owner->onViewport(viewport.first, viewport.count, viewport.minP, viewport.maxP);
        if (owner && std::exchange(labelsDue, false) && owner->onBarLabels) owner->onBarLabels(owner->lastBarLabels_);
        pending = false;
        if (!owner)
            std::erase_if(orphans(), [this](const auto& box) { return box.get() == this; });
        else if (viewportDue || labelsDue)
            send();
    }
};

ChartRenderer::ChartRenderer(Gpu& gpu, const Clock& clock, Post post)
    : gpu_(gpu), clock_(clock), delivery_(new Delivery{this, std::move(post), {}, false, false, false}), arena_(gpu) {}

ChartRenderer::~ChartRenderer() {
    for (const Retained* retained : {&candleTris_, &candleWicks_, &candleBorders_, &overlayLines_, &sessionLines_,
                                     &second_, &secondBorders_, &walls_, &markers_}) {
        if (retained->buf != 0) gpu_.release(retained->buf);
    }
    delivery_->owner = nullptr;
    if (delivery_->pending) Delivery::orphans().push_back(std::move(delivery_));
}

void ChartRenderer::needsDisplay() {
    if (onNeedsDisplay) onNeedsDisplay();
}

void ChartRenderer::noteInput() {
    if (!inputAt_) inputAt_ = clock_.monotonic();
}

namespace {

/// How many of `old` went away at the front; 0 unless `fresh` begins with a later bar of `old`.
std::size_t droppedAtFront(std::span<const Candle> old, std::span<const Candle> fresh) {
    if (old.empty() || fresh.front().time <= old.front().time) return 0;
    const auto found = std::lower_bound(old.begin(), old.end(), fresh.front().time,
                                        [](const Candle& candle, std::int64_t time) { return candle.time < time; });
    if (found == old.end() || found->time != fresh.front().time) return 0;
    return static_cast<std::size_t>(found - old.begin());
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
    const bool historyCame = oldCount < few && n >= oldCount + few && camera_.followLive;
    const bool first = oldCount == 0 || historyCame;
    const bool countChanged = oldCount != n;
    const std::size_t dropped = droppedAtFront(candles_, candles);
    const bool shifted = countChanged || dropped > 0;
    const bool newBar = shifted || candles_.back().time != candles.back().time;
    const bool lastChanged = shifted || candles_.back() != candles.back();
    const bool staticChanged = shifted || (n > 1 && candles_[n - 2] != candles[n - 2]);
    candles_.assign(candles.begin(), candles.end());

    if (newBar) dispClose_ = candles_.back().close;
    if (first) {
        camera_.showFirstData(n, renderCfg_.initialCandles);
    } else {
        camera_.followData(n, dropped, lastChanged);
        if (!lastChanged) return;
    }
    if (staticChanged) barsMoved();
    needsDisplay();
}

void ChartRenderer::barsMoved() {
    const Candle& last = candles_.back();
    origin_ = {static_cast<double>(candles_.size() - 1), std::isfinite(last.close) ? last.close : 0.0};
    staticDirty_ = wallsDirty_ = markersDirty_ = true;
}

void ChartRenderer::startOver() {
    candles_.clear();
    dispClose_ = std::numeric_limits<double>::quiet_NaN();
    bubblePts_.clear();
    trianglePts_.clear();
    edges_.clear();
    markersDirty_ = true;
    setOverlayGeometry({});
}

void ChartRenderer::setRenderConfig(const RenderConfig& config) {
    if (config == renderCfg_) return;
    const auto markerLook = [](const RenderConfig& c) {
        return std::tie(c.bubblesEnabled, c.trianglesEnabled, c.bubbleOpacity, c.triangleOpacity, c.bubblePos,
                        c.bubbleNeg, c.hfCall, c.hfPut);
    };
    if (config.candleTheme != renderCfg_.candleTheme) staticDirty_ = true;
    if (config.wallsEnabled != renderCfg_.wallsEnabled) wallsDirty_ = true;
    if (markerLook(config) != markerLook(renderCfg_)) markersDirty_ = true;
    renderCfg_ = config;
    needsDisplay();
}

void ChartRenderer::setLevels(std::span<const PriceLevel> levels) {
    if (std::ranges::equal(levels, levels_)) return;
    levels_.assign(levels.begin(), levels.end());
    wallsDirty_ = true;
    needsDisplay();
}

void ChartRenderer::setStrikes(std::span<const StrikeRow> rows, double etfRatio, std::optional<double> flipStrike) {
    const double ratio = std::isfinite(etfRatio) && etfRatio > 0 ? etfRatio : etfRatio_;
    if (ratio == etfRatio_ && flipStrike == flipStrike_ && std::ranges::equal(rows, strikes_)) return;
    if (ratio != etfRatio_) markersDirty_ = true;
    strikes_.assign(rows.begin(), rows.end());
    etfRatio_ = ratio;
    flipStrike_ = flipStrike;
    needsDisplay();
}

void ChartRenderer::setSecStrikes(std::span<const StrikeRow> rows, double ratio) {
    const double usable = std::isfinite(ratio) && ratio != 0 ? ratio : secRatio_;
    if (usable == secRatio_ && std::ranges::equal(rows, secStrikes_)) return;
    secStrikes_.assign(rows.begin(), rows.end());
    secRatio_ = usable;
    needsDisplay();
}

void ChartRenderer::setBubbles(std::span<const BubblePt> bubbles, std::span<const TrianglePt> triangles) {
    const auto same = [](const auto& fresh, const auto& held) {
        return fresh.size() == held.size() && (fresh.empty() || fresh.back() == held.back());
    };
    if (same(bubbles, bubblePts_) && same(triangles, trianglePts_)) return;
    bubblePts_.assign(bubbles.begin(), bubbles.end());
    trianglePts_.assign(triangles.begin(), triangles.end());
    markersDirty_ = true;
    needsDisplay();
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
    if (!(camera_.yMinManual < camera_.yMaxManual)) return;
    noteInput();
    if (camera_.zoomPrice(factor)) needsDisplay();
}

void ChartRenderer::panByPrice(double dyPixels, double viewHeight) {
    if (!(viewHeight > 0) || !(camera_.yMinManual < camera_.yMaxManual)) return;
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

void ChartRenderer::setAutoY(bool on) {
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

void ChartRenderer::publishViewport() {
    if (!camera_.snapLerps) return;
    movedTo_ = camera_.viewport();
    if (!onViewport) return;
    delivery_->viewport = camera_.viewport();
    delivery_->viewportDue = true;
    delivery_->send();
}

void ChartRenderer::publishBarLabels(bool animating) {
    constexpr double leastApart = 1.0 / 120.0;  // seconds, while something moves
    const std::span<const BarLabel> labels = edges_.labels();
    if (!onBarLabels || std::ranges::equal(labels, lastBarLabels_)) return;
    if (animating && !(lastAnimTime_ - lastLabelPublish_ > leastApart)) return;
    lastLabelPublish_ = lastAnimTime_;
    lastBarLabels_.assign(labels.begin(), labels.end());
    delivery_->labelsDue = true;
    delivery_->send();
}

}  // namespace vmr
