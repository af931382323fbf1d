// The frame: time step, easing, and what each frame makes anew.
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "chart/CandleGeometry.h"
#include "chart/ChartRenderer.h"
#include "perf/Perf.h"

namespace vmr {

namespace {

bool positive(double value) { return std::isfinite(value) && value > 0; }

}  // namespace

bool ChartRenderer::drawFrame(double width, double height, double pixelRatio, double nowMonotonic) {
    const double start = clock_.monotonic();
    inputLagMs_.reset();
    movedTo_.reset();
    if (inputAt_) inputLagMs_ = (nowMonotonic - *std::exchange(inputAt_, std::nullopt)) * 1000.0;
    if (perf && inputLagMs_) perf->time("inputLag", *inputLagMs_);
    arena_.beginFrame();
    stepTime(nowMonotonic);

    gpu_.beginFrame(width, height, pixelRatio);
    gpu_.clear(clearColor);
    const bool drawable = positive(width) && positive(height) && positive(pixelRatio);
    if (drawable) camera_.lastViewW = width;  // also without bars, so that the first ones find their margin
    const bool animating = drawable && !candles_.empty() && drawChart(width, height, pixelRatio);
    gpu_.endFrame();
    if (perf) perf->frame((clock_.monotonic() - start) * 1000.0);
    return animating;
}

void ChartRenderer::stepTime(double now) {
    double f = 1.0;
    if (lastAnimTime_ > 0) {
        const double dt = now - lastAnimTime_;
        f = dt <= 1.0 / 240.0 ? 0.25 : std::min(dt, 1.0 / 15.0) * 60.0;
    }
    lastAnimTime_ = now;
    alphaX_ = 1.0 - std::pow(1.0 - lerpX, f);
    alphaY_ = 1.0 - std::pow(1.0 - lerpY, f);
    alphaClose_ = 1.0 - std::pow(1.0 - candleLerp, f);
}

bool ChartRenderer::drawChart(double width, double height, double pixelRatio) {
    rebuildRetained();
    Geometry geometry;
    if (!buildGeometry(width, height, geometry)) return false;

    const Candle& last = candles_.back();
    ScreenFrame frame{gpu_,           arena_,     width,
                      height,         pixelRatio, camera_.viewport(),
                      candles_,       dispClose_, CandleGeometry::isUp(last.open, dispClose_),
                      edges_.labels()};
    for (ScreenLayer* layer : screenLayers_) layer->drawBelow(frame);
    encodeLayers(geometry, width, height);
    bool animating = geometry.animating;
    publishBarLabels(animating);
    for (ScreenLayer* layer : screenLayers_) animating |= layer->drawAbove(frame);
    return animating;
}

bool ChartRenderer::buildGeometry(double viewW, double viewH, Geometry& geometry) {
    if (!camera_.settle(candles_)) return false;
    publishViewport();
    geometry.candleUniforms = camera_.uniforms(origin_);
    geometry.animating = easeClose();
    buildFormingCandle(viewH, geometry);
    buildPriceLine(viewW, geometry);
    buildEdges(viewW, viewH, geometry);
    return true;
}

bool ChartRenderer::easeClose() {
    const Candle& last = candles_.back();
    if (!std::isfinite(dispClose_)) dispClose_ = last.close;
    const double tolerance = std::max(std::abs(last.close) * 1e-6, 0.01);
    if (!(std::abs(last.close - dispClose_) > tolerance)) {
        dispClose_ = last.close;
        return false;
    }
    dispClose_ += (last.close - dispClose_) * alphaClose_;
    return true;
}

void ChartRenderer::buildFormingCandle(double viewH, Geometry& geometry) {
    using namespace CandleGeometry;
    const Candle& last = candles_.back();
    const double open = last.open;
    const double x = static_cast<double>(candles_.size() - 1) - origin_.bar;
    const Look& style = look(renderCfg_.candleTheme, isUp(open, dispClose_));  // may change while it eases

    double top = std::max(open, dispClose_);
    double bot = std::min(open, dispClose_);
    const double minBody = (camera_.yMaxManual - camera_.yMinManual) / std::max(viewH, 1.0) * 1.5;
    if (top - bot < minBody) {
        const double mid = (top + bot) * 0.5;
        top = mid + minBody * 0.5;
        bot = mid - minBody * 0.5;
    }
    const double wickHi = std::max({last.high, dispClose_, open}) - origin_.price;
    const double wickLo = std::min({last.low, dispClose_, open}) - origin_.price;
    top -= origin_.price;
    bot -= origin_.price;

    std::array<ChartVertex, bodyVertices> body;
    writeBody(body.data(), x, top, bot, style.body);
    geometry.formingTris = arena_.uploadDyn(body);
    std::array<ChartVertex, wickVertices> wicks;
    writeWicks(wicks.data(), x, wickHi, top, bot, wickLo, style.wick);
    geometry.formingWicks = arena_.uploadDyn(wicks);
    if (!style.outlined) return;
    std::array<LineVertex, outlineVertices> outline;
    appendBodyOutline(outline.data(), x, halfBody, top, bot, style.border);
    geometry.formingBorder = arena_.uploadDyn(outline);
}

void ChartRenderer::buildPriceLine(double viewW, Geometry& geometry) {
    constexpr std::size_t maxDashes = 6000;
    const double perPixel = camera_.visibleCount / viewW;
    const double end = camera_.firstVisible + camera_.visibleCount;
    const auto y = static_cast<float>(dispClose_ - origin_.price);
    const auto vertex = [&](double x) {
        flatScratch_.push_back({{static_cast<float>(x - origin_.bar), y, 0.0F, 1.0F}, priceLineColor});
    };
    flatScratch_.clear();
    for (std::size_t i = 0; i < maxDashes; ++i) {
        const double x = camera_.firstVisible + static_cast<double>(i) * 8.0 * perPixel;
        if (!(x < end)) break;
        vertex(x);
        vertex(std::min(x + 2.0 * perPixel, end));
    }
    geometry.priceLine = arena_.uploadDyn(flatScratch_);
}

void ChartRenderer::buildEdges(double viewW, double viewH, Geometry& geometry) {
    const EdgeFrame made = edges_.step({.strikes = strikes_,
                                        .etfRatio = etfRatio_,
                                        .flipStrike = flipStrike_,
                                        .secStrikes = secStrikes_,
                                        .secRatio = secRatio_,
                                        .config = renderCfg_,
                                        .viewW = viewW,
                                        .viewH = viewH,
                                        .yScale = camera_.yScale(),
                                        .yOffset = camera_.yOffset(),
                                        .snapLerps = camera_.snapLerps,
                                        .alphaX = alphaX_,
                                        .alphaY = alphaY_},
                                       arena_);
    geometry.waveFill = made.waveFill;
    geometry.edgeTris = made.edgeTris;
    geometry.waveStroke = made.waveStroke;
    geometry.animating |= made.animating;
}

}  // namespace vmr
