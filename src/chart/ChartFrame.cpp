// The frame: time step, retained geometry, the forming bar, and the layers in their order.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <type_traits>
#include <utility>

#include "chart/CandleGeometry.h"
#include "chart/ChartRenderer.h"

namespace vmr {

namespace {

std::array<float, 4> floats(const Uniforms& uniforms) { return std::bit_cast<std::array<float, 4>>(uniforms); }
std::array<float, 8> floats(const LineUniforms& uniforms) { return std::bit_cast<std::array<float, 8>>(uniforms); }

LineUniforms lineUniforms(const Uniforms& camera, double width, double height) {
    return {camera.xScale,
            camera.xOffset,
            camera.yScale,
            camera.yOffset,
            static_cast<float>(width),
            static_cast<float>(height),
            0.0F,
            0.0F};
}

bool positive(double value) { return std::isfinite(value) && value > 0; }

}  // namespace

bool ChartRenderer::drawFrame(double width, double height, double pixelRatio, double nowMonotonic) {
    inputLagMs_.reset();
    if (inputAt_) inputLagMs_ = (nowMonotonic - *std::exchange(inputAt_, std::nullopt)) * 1000.0;
    arena_.beginFrame();
    stepTime(nowMonotonic);

    gpu_.beginFrame(width, height, pixelRatio);
    gpu_.setPipeline(Pipeline::flat);
    gpu_.setUniforms(floats(Uniforms{}));
    drawRetained(background_);
    const bool drawable = positive(width) && positive(height) && positive(pixelRatio);
    if (drawable) camera_.lastViewW = width;  // also without bars, so that the first ones find their margin
    const bool animating = drawable && !candles_.empty() && drawChart(width, height, pixelRatio);
    gpu_.endFrame();
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
    if (staticDirty_) rebuildCandleGeometry();
    Geometry geometry;
    if (!buildGeometry(width, height, geometry)) return false;

    const Candle& last = candles_.back();
    ScreenFrame frame{gpu_,     arena_,     width,
                      height,   pixelRatio, camera_.viewport(),
                      candles_, dispClose_, CandleGeometry::isUp(last.open, dispClose_)};
    for (ScreenLayer* layer : screenLayers_) layer->drawBelow(frame);
    encodeLayers(geometry, width, height);
    bool animating = geometry.animating;
    for (ScreenLayer* layer : screenLayers_) animating |= layer->drawAbove(frame);
    return animating;
}

template <class Vertex>
void ChartRenderer::retain(Retained& retained, const std::vector<Vertex>& list) {
    static_assert(std::is_trivially_copyable_v<Vertex>);
    if (retained.buf != 0) gpu_.release(retained.buf);
    retained.buf = list.empty() ? 0 : gpu_.makeBuffer(std::as_bytes(std::span(list)));
    retained.n = list.size();
}

template void ChartRenderer::retain(Retained&, const std::vector<ChartVertex>&);

void ChartRenderer::setOverlayGeometry(const OverlayLists& lists) {
    retain(overlayLines_, lists.lines);
    if (std::exchange(sessionRevision_, lists.sessionRevision) != lists.sessionRevision)
        retain(sessionLines_, lists.sessionLines);
    retain(second_, lists.second);
    retain(secondBorders_, lists.secondBorders);
    overlayOrigin_ = lists.origin;
    needsDisplay();
}

void ChartRenderer::rebuildCandleGeometry() {
    using namespace CandleGeometry;
    staticDirty_ = false;
    const std::size_t n = candles_.size() - 1;  // the last one is the forming bar's
    origin_ = {static_cast<double>(n), std::isfinite(candles_.back().close) ? candles_.back().close : 0.0};

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

bool ChartRenderer::buildGeometry(double viewW, double viewH, Geometry& geometry) {
    if (!camera_.settle(candles_)) return false;
    publishViewport();
    geometry.candleUniforms = camera_.uniforms(origin_);
    geometry.animating = easeClose();
    buildFormingCandle(viewH, geometry);
    buildPriceLine(viewW, geometry);
    return true;
}

bool ChartRenderer::easeClose() {
    const Candle& last = candles_.back();
    if (!std::isfinite(dispClose_)) dispClose_ = last.close;
    dispHigh_ = last.high;
    dispLow_ = last.low;
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
    const double open = candles_.back().open;
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
    const double wickHi = std::max({dispHigh_, dispClose_, open}) - origin_.price;
    const double wickLo = std::min({dispLow_, dispClose_, open}) - origin_.price;
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

void ChartRenderer::drawDyn(Primitive primitive, const std::optional<DynUpload>& list) {
    if (list) gpu_.draw(primitive, list->buffer, list->offset, list->count);
}

void ChartRenderer::drawRetained(const Retained& retained) {
    if (retained.n > 0) gpu_.draw(Primitive::triangles, retained.buf, 0, retained.n);
}

// Between the price line and the candles: ribbons, then the paired instrument's candles and their outlines.
void ChartRenderer::encodeOverlays(double width, double height) {
    const Uniforms camera = camera_.uniforms(overlayOrigin_);
    const LineUniforms ribbons = lineUniforms(camera, width, height);
    const auto draw = [&](const Retained& retained, Pipeline pipeline) {
        if (retained.n == 0) return;
        gpu_.setPipeline(pipeline);
        pipeline == Pipeline::ribbon ? gpu_.setUniforms(floats(ribbons)) : gpu_.setUniforms(floats(camera));
        drawRetained(retained);
    };
    draw(overlayLines_, Pipeline::ribbon);
    draw(sessionLines_, Pipeline::ribbon);
    draw(second_, Pipeline::flat);
    draw(secondBorders_, Pipeline::ribbon);
}

void ChartRenderer::encodeLayers(const Geometry& geometry, double width, double height) {
    const Uniforms& camera = geometry.candleUniforms;
    // The back of the chart: markers, waves, bars and walls belong here, in this order.
    gpu_.setPipeline(Pipeline::flat);
    gpu_.setUniforms(floats(camera));
    drawDyn(Primitive::lines, geometry.priceLine);
    if (overlayLines_.n + sessionLines_.n + second_.n + secondBorders_.n > 0) {
        encodeOverlays(width, height);
        gpu_.setPipeline(Pipeline::flat);
        gpu_.setUniforms(floats(camera));
    }
    drawRetained(candleTris_);
    drawDyn(Primitive::triangles, geometry.formingTris);
    drawRetained(candleWicks_);
    drawDyn(Primitive::triangles, geometry.formingWicks);
    if (candleBorders_.n == 0 && !geometry.formingBorder) return;
    gpu_.setPipeline(Pipeline::ribbon);
    gpu_.setUniforms(floats(lineUniforms(camera, width, height)));
    drawRetained(candleBorders_);
    drawDyn(Primitive::triangles, geometry.formingBorder);
}

}  // namespace vmr
