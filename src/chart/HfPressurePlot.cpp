#include "chart/HfPressurePlot.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "perf/Perf.h"

namespace vmr {

namespace {
using HfPressure::Samples, HfPressure::Scale;

constexpr Rgba callColor{0.149F, 0.651F, 0.604F, 1}, putColor{0.937F, 0.325F, 0.314F, 1};
constexpr TextStyle textStyle{FontFace::regular, 13}, smallStyle{FontFace::regular, 11};
constexpr double tickGap = 4, edge = 2;  // beside the numbers of the main plot
constexpr double flowWidth = 1.5, sparkWidth = 1.2;

constexpr Rgba white(float opacity) { return {1, 1, 1, opacity}; }
constexpr Rgba labelColor = white(0.53F);

// Joins the points of one flow; `at` places a sample, or tells nothing for one that is skipped. Of points that lie
// closer together than the eye can tell one is enough: a sparkline has a dozen samples on each point of its width.
template <class Place>
void polyline(Painter& painter, const Samples& samples, double width, const Rgba& color, Place at) {
    constexpr double close = 0.3;  // points
    std::optional<Painter::Point> before, left;
    for (const HfpSample* sample : samples) {
        const std::optional<Painter::Point> point = at(*sample);
        if (!point) continue;
        left = point;
        if (before && std::abs((*point)[0] - (*before)[0]) < close && std::abs((*point)[1] - (*before)[1]) < close)
            continue;
        if (before) painter.line(*before, *point, width, color);
        before = point;
        left.reset();
    }
    if (before && left) painter.line(*before, *left, width, color);
}
}  // namespace

void HfPressurePlot::time(std::string_view name, double since) const {
    if (perf_) perf_->time(name, (clock_.monotonic() - since) * 1000);
}

void HfPressurePlot::drawMain(const Samples& samples, const Scale& scale, const PointRect& place) {
    const double left = place.x + HfPressure::plotLeft, right = place.right() - HfPressure::plotRight;
    if (!scale.drawn || right <= left || place.height <= HfPressure::plotTop + HfPressure::plotBottom) return;
    const auto x = [&](double t) { return place.x + HfPressure::mainX(scale, t, place.width); };
    const auto y = [&](double value) { return place.y + HfPressure::mainY(scale, value, place.height); };
    HfPressure::timeTicks(scale, times_);
    for (const double t : times_) painter_.vertical(x(t), y(scale.top), y(0), faded(white(0.09F)));
    const std::vector<double> values = HfPressure::valueTicks(scale);
    const bool fit = std::all_of(values.begin(), values.end(), [this](double value) {
        return painter_.textWidth(HfPressure::fmt(value).text(), textStyle) <= HfPressure::plotRight - tickGap - edge;
    });
    for (const double value : values) {
        painter_.horizontal(left, right, y(value), faded(white(0.11F)));
        painter_.text(HfPressure::fmt(value).text(), fit ? textStyle : smallStyle, right + tickGap, y(value),
                      TextAlign::left, faded(labelColor));
    }
    const auto flow = [&](double HfpSample::*side, const Rgba& color) {
        polyline(painter_, samples, flowWidth, faded(color), [&](const HfpSample& sample) {
            return Painter::Point{x(sample.t), y(sample.*side)};
        });
    };
    flow(&HfpSample::call, callColor);
    flow(&HfpSample::put, putColor);
}

void HfPressurePlot::drawStrip(const Scale& scale, const PointRect& place) {
    constexpr double tickLength = 5;
    strip_.clear();
    if (!(scale.span > 0) || place.width <= 0) return;
    HfPressure::stripTicks(
        scale, place.width, [this](std::string_view text) { return painter_.textWidth(text, textStyle); }, strip_);
    const double middle = place.bottom() - 1 - painter_.lineHeight(textStyle) / 2;
    for (const HfPressure::StripTick& tick : strip_) {
        painter_.vertical(place.x + tick.x, place.y, place.y + tickLength, faded(white(0.3F)));
        if (tick.text.size > 0)
            painter_.text(tick.text.text(), textStyle, place.x + tick.left, middle, TextAlign::left, faded(labelColor));
    }
}

void HfPressurePlot::drawSpark(const Samples& samples, const Scale& scale, double strike, double maxAbs,
                               const PointRect& place) {
    if (!(scale.span > 0) || !(maxAbs > 0) || place.width <= 0) return;
    painter_.horizontal(place.x, place.right(), place.bottom(), faded(white(0.13F)));
    const auto flow = [&](double StrikeFlow::*side, const Rgba& color) {
        polyline(painter_, samples, sparkWidth, faded(color),
                 [&](const HfpSample& sample) -> std::optional<Painter::Point> {
                     const StrikeFlow* const at = sample.atmAt(strike);
                     if (!at) return std::nullopt;
                     return Painter::Point{place.x + place.width * (sample.t - scale.t0) / scale.span,
                                           place.y + HfPressure::sparkY(at->*side, maxAbs, place.height)};
                 });
    };
    flow(&StrikeFlow::call, callColor);
    flow(&StrikeFlow::put, putColor);
}

bool HfPressurePlot::draw(PaintSurface& surface, const Samples& samples, const Places& places, float opacity) {
    opacity_ = opacity;
    const Scale scale = HfPressure::scale(samples);
    const HfPressure::Ladder ladder = HfPressure::ladder(samples);
    const std::size_t sparks = std::min(ladder.band.size(), mostSparks);
    if (perf_) perf_->bump("HFP.mainCanvas");
    for (std::size_t i = 0; perf_ && i < sparks; ++i) perf_->bump("HFP.sparkCanvas");
    return painter_.paint(surface, [&] {
        double since = clock_.monotonic();
        drawMain(samples, scale, places.main);
        drawStrip(scale, places.strip);
        time("HFP.main", since);
        since = clock_.monotonic();
        const double peak = HfPressure::ladderPeak(samples);
        for (std::size_t i = 0; i < sparks; ++i) drawSpark(samples, scale, ladder.band[i], peak, places.sparks[i]);
        time("HFP.spark", since);
    });
}

}  // namespace vmr
