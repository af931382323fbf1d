#include "chart/ChartRenderer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "chart/CandleGeometry.h"
#include "market/SessionTime.h"

namespace vmr {

/// What waits to be delivered on the main thread's queue. A plain pointer to it is all that a posted task holds, so
/// that posting needs no memory of its own; when the renderer goes first, the box waits in `orphans` for its task.
struct ChartRenderer::Delivery {
    ChartRenderer* owner;
    Post post;
    Viewport viewport;
    bool pending = false;

    static std::vector<std::unique_ptr<Delivery>>& orphans() {
        static std::vector<std::unique_ptr<Delivery>> list;
        return list;
    }

    void run() {
        if (owner == nullptr) {
            std::erase_if(orphans(), [this](const auto& box) { return box.get() == this; });
            return;
        }
        pending = false;
        if (owner->onViewport) owner->onViewport(viewport.first, viewport.count, viewport.minP, viewport.maxP);
    }
};

ChartRenderer::ChartRenderer(Gpu& gpu, const Clock& clock, Post post)
    : gpu_(gpu), clock_(clock), delivery_(new Delivery{this, std::move(post), {}}), arena_(gpu) {
    constexpr float corners[6][2] = {{-1, 1}, {-1, -1}, {1, -1}, {-1, 1}, {1, -1}, {1, 1}};
    for (const auto& corner : corners) flatScratch_.push_back({{corner[0], corner[1], 0.0F, 1.0F}, clearColor});
    retain(background_, flatScratch_);
}

ChartRenderer::~ChartRenderer() {
    for (const Retained* retained : {&background_, &candleTris_, &candleWicks_, &candleBorders_, &overlayLines_,
                                     &sessionLines_, &second_, &secondBorders_}) {
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
    const bool first = oldCount == 0;
    const bool countChanged = oldCount != n;
    const std::size_t dropped = droppedAtFront(candles_, candles);
    const bool shifted = countChanged || dropped > 0;
    const bool newBar = shifted || candles_.back().time != candles.back().time;
    const bool lastChanged = shifted || candles_.back() != candles.back();
    const bool staticChanged = shifted || (n > 1 && candles_[n - 2] != candles[n - 2]);
    candles_.assign(candles.begin(), candles.end());

    if (newBar) {
        dispClose_ = candles_.back().close;
        dispHigh_ = candles_.back().high;
        dispLow_ = candles_.back().low;
    }
    if (first) {
        camera_.showFirstData(n, renderCfg_.initialCandles);
    } else {
        camera_.followData(n, dropped, lastChanged);
        if (!lastChanged) return;
    }
    if (staticChanged) staticDirty_ = true;
    needsDisplay();
}

void ChartRenderer::setRenderConfig(const RenderConfig& config) {
    if (config == renderCfg_) return;
    if (config.candleTheme != renderCfg_.candleTheme) staticDirty_ = true;
    renderCfg_ = config;
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
    if (!camera_.snapLerps || !onViewport) return;
    Delivery* box = delivery_.get();
    box->viewport = camera_.viewport();
    if (std::exchange(box->pending, true)) return;
    box->post([box] { box->run(); });
}

}  // namespace vmr
