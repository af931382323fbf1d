#include "chart/OverlayRibbons.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
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

}  // namespace

template <class Point, class Look>
template <class Vertex, class Add>
void SeriesSource<Point, Look>::update(SeriesList<Vertex>& out, const std::vector<Point>& points, const Look& look,
                                       const DataOrigin& origin, Add&& add) {
    const bool alike = look_ == look && origin_ == origin;
    const auto common = static_cast<std::size_t>(std::ranges::mismatch(points_, points).in1 - points_.begin());
    const std::size_t same = alike ? common : 0;
    if (same == points_.size() && same == points.size()) return;
    // the last point that is the same may now join another
    const std::size_t from = same > 0 ? same - 1 : 0, kept = from > 0 ? ends_[from - 1] : 0;
    look_ = look;
    origin_ = origin;
    points_.resize(from);
    points_.insert(points_.end(), points.begin() + static_cast<std::ptrdiff_t>(from), points.end());
    ends_.resize(from);
    out.vertices.resize(kept);
    for (std::size_t i = from; i < points.size(); ++i) {
        add(i);
        ends_.push_back(out.vertices.size());
    }
    settle(out, kept);
}

// Leaves out of what is settled the last points, which the next trade may move, and what has just changed behind them.
template <class Point, class Look>
template <class Vertex>
void SeriesSource<Point, Look>::settle(SeriesList<Vertex>& out, std::size_t changed) const {
    constexpr std::size_t restless = 3;    // points
    constexpr std::size_t mostLoose = 32;  // vertices
    const std::size_t size = out.vertices.size();
    if (changed >= out.settled && size - out.settled <= mostLoose && out.revision > 0) return;
    out.settled = ends_.size() > restless ? ends_[ends_.size() - 1 - restless] : 0;
    if (size - changed <= mostLoose) out.settled = std::min(out.settled, changed);
    ++out.revision;
}

template <class Point, class Look>
template <class Vertex>
void SeriesSource<Point, Look>::clear(SeriesList<Vertex>& out) {
    points_.clear();
    ends_.clear();
    if (out.vertices.empty()) return;
    out.vertices.clear();
    out.settled = 0;
    ++out.revision;
}

const OverlayLists& OverlayRibbons::make(const Input& input) {
    if (input.candles.size() < 2) {
        clear();
        return lists_;
    }
    makeSessionLines(input);
    if (input.series)
        makeSeries(*input.series, input.style, originFor(*input.series, input.candles, lists_.origin));
    else
        clearSeries();
    return lists_;
}

void OverlayRibbons::makeSeries(const OverlaySet& series, const OverlayStyle& style, const DataOrigin& origin) {
    using namespace OverlayGeometry;
    anchor_ = series.anchor;
    vixSpot_ = series.vixSpot;
    const struct {
        const std::vector<OvPoint>& points;
        double width;
        Rgba color;
        std::optional<Dash> dash;
    } looks[] = {{series.vwapMain, 2.0, vwapMainColor, {}},
                 {series.vwapNY, 1.0, vwapNyColor, Dash{0.5, 0.4}},
                 {series.vixLine, 2.0, vixColor, {}},
                 {series.ema1, 1.5, style.ema1Color, {}},
                 {series.ema2, 1.5, style.ema2Color, {}}};
    for (std::size_t k = 0; k < lines_.size(); ++k) {
        const auto& look = looks[k];
        OverlayLists::Ribbon& out = lists_.ribbons[k];
        out.dash = look.dash;
        lines_[k].update(out, look.points, look.color, origin,
                         [&](std::size_t i) { lineTo(out.vertices, look.points, i, look.width, look.color, origin); });
    }
    const auto opacity = static_cast<float>(style.hfLineOpacity);
    const Rgba blue{0.0F, 0.588F, 1.0F, opacity}, red{1.0F, 0.314F, 0.314F, opacity};
    auto& flow = lists_.ribbons.back();
    flow_.update(flow, series.hfLine, style.hfLineOpacity, origin,
                 [&](std::size_t i) { flowTo(flow.vertices, series.hfLine, i, 2.0, blue, red, origin); });
    second_.update(lists_.second, series.secondCandles, true, origin,
                   [&](std::size_t i) { secondCandle(lists_.second.vertices, series.secondCandles, i, origin); });
}

OverlayPoints OverlayRibbons::points() const {
    return {lines_[0].points(),
            lines_[1].points(),
            lines_[2].points(),
            flow_.points(),
            second_.points(),
            anchor_,
            vixSpot_};
}

void OverlayRibbons::clear() {
    clearSeries();
    clearSessionLines();
}

void OverlayRibbons::clearSeries() {
    for (std::size_t k = 0; k < lines_.size(); ++k) lines_[k].clear(lists_.ribbons[k]);
    flow_.clear(lists_.ribbons.back());
    second_.clear(lists_.second);
}

void OverlayRibbons::clearSessionLines() {
    lineInputs_ = {};
    if (lists_.sessionLines.empty() && lists_.sessionDashes.empty()) return;
    lists_.sessionLines.clear();
    lists_.sessionDashes.clear();
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
    lists_.sessionDashes.clear();
    for (const OverlayLine& line : input.lines)
        if (isShown(line, style))
            OverlayGeometry::srLines(lists_.sessionLines, lists_.sessionDashes, {&line, 1}, bars, style.lineOpacity,
                                     lists_.origin);
    ++lists_.sessionRevision;
}

}  // namespace vmr
