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
constexpr double flowApart = 0.3, sparkApart = 0.5;  // points closer than this are drawn as one

constexpr Rgba white(float opacity) { return {1, 1, 1, opacity}; }
constexpr Rgba labelColor = white(0.53F);

struct Stroke {
    double width = 0, apart = 0;
    Rgba color{};
};

// Joins the points of one flow, which `at` places. Of points that lie closer together than the eye can tell one is
// enough: a sparkline has a dozen samples on each point of its width.
template <class Points, class Place>
void polyline(Painter& painter, const Points& points, const Stroke& stroke, Place at) {
    std::optional<Painter::Point> before, left;
    for (const auto& one : points) {
        const Painter::Point point = at(one);
        left = point;
        if (before && std::abs(point[0] - (*before)[0]) < stroke.apart &&
            std::abs(point[1] - (*before)[1]) < stroke.apart)
            continue;
        if (before) painter.line(*before, point, stroke.width, stroke.color);
        before = point;
        left.reset();
    }
    if (before && left) painter.line(*before, *left, stroke.width, stroke.color);
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
        polyline(painter_, samples, {flowWidth, flowApart, faded(color)}, [&](const HfpSample* sample) {
            return Painter::Point{x(sample->t), y(sample->*side)};
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

// The samples lie all over the memory, so they are gone through once for all strikes and both flows.
void HfPressurePlot::gatherSparks(const Samples& samples, std::span<const double> strikes) {
    for (std::vector<SparkPoint>& points : sparkPoints_) points.clear();
    for (const HfpSample* sample : samples)
        for (std::size_t i = 0; i < strikes.size(); ++i) {
            const bool inPlace =
                i < sample->atm.size() && sample->atm[i].strike == strikes[i];  // the band seldom moves
            const StrikeFlow* const flow = inPlace ? &sample->atm[i] : sample->atmAt(strikes[i]);
            if (flow) sparkPoints_[i].push_back({sample->t, flow->call, flow->put});
        }
}

void HfPressurePlot::drawSpark(const std::vector<SparkPoint>& points, const Scale& scale, double maxAbs,
                               const PointRect& place) {
    if (!(scale.span > 0) || !(maxAbs > 0) || place.width <= 0) return;
    painter_.horizontal(place.x, place.right(), place.bottom(), faded(white(0.13F)));
    const auto flow = [&](double SparkPoint::*side, const Rgba& color) {
        polyline(painter_, points, {sparkWidth, sparkApart, faded(color)}, [&](const SparkPoint& point) {
            return Painter::Point{place.x + place.width * (point.t - scale.t0) / scale.span,
                                  place.y + HfPressure::sparkY(point.*side, maxAbs, place.height)};
        });
    };
    flow(&SparkPoint::call, callColor);
    flow(&SparkPoint::put, putColor);
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
        gatherSparks(samples, ladder.band.first(sparks));
        for (std::size_t i = 0; i < sparks; ++i) drawSpark(sparkPoints_[i], scale, peak, places.sparks[i]);
        time("HFP.spark", since);
    });
}

}  // namespace vmr
