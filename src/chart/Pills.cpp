#include "chart/Pills.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "chart/AxisScale.h"
#include "market/Bars.h"

namespace vmr {

namespace {

constexpr float fillOpacity = 0.85F;
constexpr Rgba pillBrown{0.353F, 0.176F, 0.02F, fillOpacity};
constexpr Rgba pillOrangeText{1.0F, 0.478F, 0.0F, 1.0F};
constexpr Rgba pillGold{1.0F, 0.843F, 0.0F, fillOpacity};
constexpr Rgba pillPale{1.0F, 0.902F, 0.502F, fillOpacity};
constexpr Rgba pillHFBlue{0.0F, 0.314F, 0.627F, fillOpacity};
constexpr Rgba pillHFRed{0.627F, 0.157F, 0.157F, fillOpacity};
constexpr Rgba pillTeal{0.353F, 0.82F, 0.749F, fillOpacity};
constexpr Rgba black{0.0F, 0.0F, 0.0F, 1.0F}, white{1.0F, 1.0F, 1.0F, 1.0F};

/// How many bars the points' numbers are ahead of those of `bars`: a series may be older than the list.
double barsAhead(const OverlaySet::Anchor& anchor, std::span<const Candle> bars) {
    const auto bar = findBar(bars, anchor.time);
    return bar ? anchor.bar - static_cast<double>(*bar) : 0.0;
}

void appendFixed2(std::string& out, double value) {
    char text[352];
    out.append(text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 2).ptr);
}

}  // namespace

Pill& Pills::add() {
    if (used_ == pills_.size()) pills_.emplace_back();
    Pill& pill = pills_[used_++];
    pill.text.clear();
    return pill;
}

// The last point of a series, or the last in view, with a pill for it; null, and no pill, where there is none.
template <class Point, class ValueOf>
const Point* Pills::hangFrom(std::span<const Point> points, const Input& input, double ahead, ValueOf valueOf) {
    if (points.empty()) return nullptr;
    const auto xOf = [&](const Point& point) {
        return AxisScale::xForIndex(input.viewport, point.idx - ahead, input.width);
    };
    auto end = points.end();
    const bool past = xOf(points.back()) > input.plotRight;
    if (past)
        end = std::partition_point(points.begin(), points.end(),
                                   [&](const Point& point) { return xOf(point) <= input.plotRight; });
    if (end == points.begin()) return nullptr;
    const Point& point = *(end - 1);
    const double x = xOf(point), y = AxisScale::yFor(input.viewport, valueOf(point), input.height);
    if (!(x >= 0) || !(y > -verticalMargin && y < input.height + verticalMargin)) return nullptr;
    Pill& pill = add();
    pill.x = x;
    pill.y = y;
    pill.past = past;
    return &point;
}

std::span<const Pill> Pills::inView(const Input& input) {
    used_ = 0;
    if (!(input.viewport.count > 0)) return {};
    const double ahead = barsAhead(input.points.anchor, input.candles);
    const auto hang = [&](const auto& points, auto valueOf, const Rgba& fill, const Rgba& textColor, auto write) {
        const auto* const point = hangFrom(points, input, ahead, valueOf);
        if (!point) return;
        Pill& pill = pills_[used_ - 1];
        pill.fill = fill;
        pill.textColor = textColor;
        write(pill, *point);
    };
    const auto value = [](const auto& point) { return point.v; };
    const auto named = [&](std::string_view name) {
        return [&input, name](Pill& pill, const OvPoint& point) {
            pill.text.append(name);
            if (input.lineRates) pill.text.append(" ").append(AxisScale::fmtPrice(point.v).text());
        };
    };
    const OverlayPoints& points = input.points;
    if (!input.secondSymbol.empty())
        hang(
            points.secondCandles, [](const OvCandle& bar) { return bar.c; }, pillBrown, pillOrangeText,
            [&](Pill& pill, const OvCandle& bar) {
                pill.text.append(input.secondSymbol).append(" ").append(AxisScale::fmtPrice(bar.realC).text());
            });
    hang(points.vwapMain, value, pillGold, black, named("VWAP"));
    hang(points.vwapNY, value, pillPale, black, named("VWAP NY"));
    hang(points.hfLine, value, pillHFRed, white, [](Pill& pill, const OvColorPoint& point) {
        if (point.positive) pill.fill = pillHFBlue;
        pill.text.append(AxisScale::fmtHFPill(point.hf).text());
    });
    hang(points.vixLine, value, pillTeal, white, [&](Pill& pill, const OvPoint& point) {
        const auto close = pill.past && point.real > 0 ? std::optional(point.real) : points.vixSpot;
        pill.text.append("VIX ");
        if (close && std::isfinite(*close))
            appendFixed2(pill.text, *close);
        else
            pill.text.append("--");
        pill.text.append(" 30D");
    });
    return {pills_.data(), used_};
}

}  // namespace vmr
