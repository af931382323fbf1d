#include "chart/OverlayRibbons.h"

#include <cmath>
#include <utility>

#include "chart/OverlayGeometry.h"
#include "market/Bars.h"

namespace vmr {

namespace {

constexpr Rgba vwapMainColor{1.0F, 0.843F, 0.0F, 1.0F};
constexpr Rgba vwapNyColor{1.0F, 0.902F, 0.502F, 1.0F};
constexpr Rgba vixColor{0.353F, 0.82F, 0.749F, 1.0F};

/// The origin as the points of a series count bars: the series may be older than the list of bars.
DataOrigin originFor(const OverlaySet& series, std::span<const Candle> bars, DataOrigin origin) {
    if (const auto bar = findBar(bars, series.anchor.time)) origin.bar += series.anchor.bar - static_cast<double>(*bar);
    return origin;
}

void drawSeries(const OverlaySet& series, const OverlayStyle& style, const DataOrigin& origin, OverlayLists& out) {
    using namespace OverlayGeometry;
    polyline(out.lines, series.vwapMain, 2.0, vwapMainColor, std::nullopt, origin);
    polyline(out.lines, series.vwapNY, 1.0, vwapNyColor, Dash{0.5, 0.4}, origin);
    polyline(out.lines, series.vixLine, 2.0, vixColor, std::nullopt, origin);
    polyline(out.lines, series.ema1, 1.5, style.ema1Color, std::nullopt, origin);
    polyline(out.lines, series.ema2, 1.5, style.ema2Color, std::nullopt, origin);
    const auto flow = static_cast<float>(style.hfLineOpacity);
    hfPolyline(out.lines, series.hfLine, 2.0, {0.0F, 0.588F, 1.0F, flow}, {1.0F, 0.314F, 0.314F, flow}, origin);
    secondCandles(out.second, series.secondCandles, origin);
}

}  // namespace

const OverlayLists& OverlayRibbons::make(const Input& input) {
    if (input.candles.size() < 2) {
        clear();
        return lists_;
    }
    lists_.lines.clear();
    lists_.second.clear();
    makeSessionLines(input);
    if (input.series)
        drawSeries(*input.series, input.style, originFor(*input.series, input.candles, lists_.origin), lists_);
    return lists_;
}

void OverlayRibbons::clear() {
    lists_.lines.clear();
    lists_.second.clear();
    clearSessionLines();
}

void OverlayRibbons::clearSessionLines() {
    lineInputs_ = {};
    if (lists_.sessionLines.empty()) return;
    lists_.sessionLines.clear();
    lists_.sessionFar.clear();
    ++lists_.sessionRevision;
}

bool OverlayRibbons::isShown(const OverlayLine& line, const OverlayStyle& style) {
    if (line.label == "Open") return style.showOpen;
    if (line.label.starts_with("Prev")) return style.showPrev;
    return style.showLevels;
}

void OverlayRibbons::makeSessionLines(const Input& input) {
    const std::span<const Candle> bars = input.candles;
    const OverlayStyle& style = input.style;
    const LineInputs inputs{input.linesRevision, bars.size(),    bars.front().time, bars.back().time, input.timeframe,
                            style.showOpen,      style.showPrev, style.showLevels,  style.lineOpacity};
    if (std::exchange(lineInputs_, inputs) == inputs) return;
    const double close = bars.back().close;
    lists_.origin = {static_cast<double>(bars.size() - 1), std::isfinite(close) ? close : 0.0};
    lists_.originTime = bars.back().time;
    lists_.sessionLines.clear();
    lists_.sessionFar.clear();
    using OverlayGeometry::Gaps;
    for (const OverlayLine& line : input.lines) {
        if (!isShown(line, style)) continue;
        for (const auto& [list, gaps] :
             {std::pair(&lists_.sessionLines, Gaps::drawn), std::pair(&lists_.sessionFar, Gaps::blended)})
            OverlayGeometry::srLines(*list, {&line, 1}, bars, style.lineOpacity, lists_.origin, gaps);
    }
    ++lists_.sessionRevision;
}

}  // namespace vmr
