// The frame: what is rebuilt for it, its time step, and what each frame makes anew.
#include <algorithm>
#include <cmath>
#include <utility>

#include "chart/CandleGeometry.h"
#include "chart/ChartRenderer.h"
#include "perf/Perf.h"

namespace vmr {

namespace {

bool positive(double value) { return std::isfinite(value) && value > 0; }

}  // namespace

void ChartRenderer::InputTimes::endAt(double now) {
    lagMs.reset();
    if (at) lagMs = (now - *std::exchange(at, std::nullopt)) * 1000.0;
}

bool ChartRenderer::drawFrame(double width, double height, double pixelRatio, double nowMonotonic, bool whole) {
    const double start = clock_.monotonic();
    input_.endAt(nowMonotonic);
    if (perf && input_.lagMs) perf->time("inputLag", *input_.lagMs);
    movedTo_.reset();
    arena_.beginFrame();
    easing_.step(nowMonotonic, whole);

    gpu_.beginFrame(width, height, pixelRatio);
    gpu_.clear(clearColor);
    const bool drawable = positive(width) && positive(height) && positive(pixelRatio);
    if (drawable)
        camera_.resize(width, candles_.size());  // also without bars, so that the first ones find their margin
    const bool animating = drawable && !candles_.empty() && drawChart(width, height, pixelRatio);
    gpu_.endFrame();
    if (perf) perf->frame((clock_.monotonic() - start) * 1000.0, this);
    return animating;
}

bool ChartRenderer::drawChart(double width, double height, double pixelRatio) {
    rebuildKept();
    Geometry geometry;
    if (!buildGeometry(width, height, pixelRatio, geometry)) return false;
    if (perf) perf->bump("ChartOverlay");  // the axes and every text are made anew in each frame

    const Candle& last = candles_.back();
    const double close = forming_.close();
    ScreenFrame frame{{gpu_, arena_, width, height, pixelRatio}, camera_.viewport(), candles_,         close,
                      CandleGeometry::isUp(last.open, close),    edges_.labels(),    walls_.firstBar()};
    for (ScreenLayer* layer : screenLayers_) layer->drawBelow(frame);
    encodeLayers(geometry, width, height);
    bool animating = geometry.animating && easing_.alphaClose < 1;
    for (ScreenLayer* layer : screenLayers_) animating |= layer->drawAbove(frame);
    return animating;
}

void ChartRenderer::rebuildKept() {
    if (bars_.dirty) bars_.make(candles_, renderCfg_.candleTheme, origin_);
    overlays_.follow(candles_);
    if (walls_.dirty) walls_.make(renderCfg_.wallsEnabled, currentSessionStartIndex(), candles_.size() - 1, origin_);
    if (!markers_.dirty) return;
    const double start = clock_.monotonic();
    markers_.make(candles_, strikes_.etfRatio, renderCfg_, origin_);
    if (perf) perf->time("markers", (clock_.monotonic() - start) * 1000.0);
}

bool ChartRenderer::buildGeometry(double viewW, double viewH, double pixelRatio, Geometry& geometry) {
    if (!camera_.settle(candles_)) return false;
    if (camera_.snapLerps) movedTo_ = camera_.viewport();
    geometry.candleUniforms = camera_.uniforms(origin_);
    geometry.animating = forming_.ease(candles_.back().close, easing_.alphaClose);
    geometry.forming = forming_.write(candles_, renderCfg_.candleTheme, camera_, origin_, viewW, viewH, arena_);
    geometry.edges = stepEdges(viewW, viewH, pixelRatio);
    geometry.animating |= geometry.edges.animating;
    return true;
}

EdgeFrame ChartRenderer::stepEdges(double viewW, double viewH, double pixelRatio) {
    return edges_.step({.strikes = strikes_.rows,
                        .etfRatio = strikes_.etfRatio,
                        .flipStrike = strikes_.flip,
                        .secStrikes = strikes_.secRows,
                        .secRatio = strikes_.secRatio,
                        .config = renderCfg_,
                        .viewW = viewW,
                        .viewH = viewH,
                        .yScale = camera_.yScale(),
                        .yOffset = camera_.yOffset(),
                        .snapLerps = camera_.snapLerps,
                        .alphaX = easing_.alphaX,
                        .alphaY = easing_.alphaY,
                        .pixelRatio = pixelRatio},
                       arena_);
}

}  // namespace vmr
