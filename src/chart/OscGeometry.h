// Where the oscillator's values lie, and which of them are drawn. Pure functions.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "chart/AxisScale.h"
#include "gpu/Vertices.h"
#include "market/Bars.h"
#include "market/Records.h"

namespace vmr {

/// What the oscillator below a chart shows. Borrowed: valid until its owner next changes it.
struct OscContent {
    const OscLines* lines = nullptr;              ///< null: there are none for this instrument
    std::array<bool, 6> shown{1, 1, 1, 1, 1, 1};  ///< in the order of `oscSeries`
    std::string_view primaryTitle = "NQ";         ///< whose values `nq` holds
    bool single = false;                          ///< one instrument alone: `es` is not shown
};

/// The same with the bars and the camera of the chart above it.
struct OscInput {
    OscContent content;
    std::span<const Candle> candles;  ///< strictly ascending by time
    double timeframe = 1;             ///< minutes a bar
    Viewport viewport;
};

/// One of the six series.
struct OscSeries {
    std::string_view name, title;  ///< no title: the primary instrument's
    std::vector<OscPt> OscLines::*points;
    Rgba color;
    bool darkText;  ///< of the label of its newest value
    bool breaks;    ///< a long time without a point ends the line; else it is bridged
};
/// In the order of drawing.
inline constexpr std::array<OscSeries, 6> oscSeries{
    {{"nq", {}, &OscLines::nq, {1, 1, 1, 1}, true, false},
     {"es", "ES", &OscLines::es, {1, 0.478F, 0, 1}, false, false},
     {"vix", "VIX", &OscLines::vix, {0, 1, 1, 1}, true, true},
     {"call", "CALL", &OscLines::call, {0.224F, 1, 0.078F, 1}, true, true},
     {"put", "PUT", &OscLines::put, {1, 0.18F, 0.976F, 1}, false, true},
     {"net", "NET", &OscLines::net, {1, 0.816F, 0, 1}, true, true}}};

namespace OscGeometry {

inline constexpr double limit = 150;                       ///< the scale goes from -limit to limit, and never elsewhere
inline constexpr double scaleStep = 50;                    ///< between the values that are named
inline constexpr double halfLabel = 9, halfScaleText = 7;  ///< points, of their heights

/// Points from the top of a plot of `height`.
inline double yFor(double value, double height) { return height * (1 - (value + limit) / (2 * limit)); }
inline double valueAt(double y, double height) { return (1 - y / height) * 2 * limit - limit; }

/// Seconds a bar; at least a minute.
std::int64_t barSeconds(double timeframe);
/// The series is drawn, labelled and named.
bool isShown(const OscContent& content, std::size_t series);
/// The points of a series; none where it is not shown.
std::span<const OscPt> pointsOf(const OscContent& content, std::size_t series);

/// The bar that begins at `time`; nothing when none does. `near` is where it is looked for first.
inline std::optional<std::size_t> barFrom(std::span<const Candle> candles, std::int64_t time, std::size_t near) {
    return near < candles.size() && candles[near].time == time ? near : findBar(candles, time);
}
/// The same of the bucket that holds `t`.
inline std::optional<std::size_t> indexFor(std::span<const Candle> candles, std::int64_t t, std::int64_t barSeconds,
                                           std::size_t near = 0) {
    return barFrom(candles, t / barSeconds * barSeconds, near);
}

/// What a camera shows of the bars, and two bars more at either side.
struct Range {
    std::size_t first = 0, last = 0;
    std::int64_t tLeft = 0, tRight = 0;  ///< seconds since 1970; two more bars at either side
    std::int64_t maxGap = 0;             ///< seconds; a longer one ends lines that break
};
/// Nothing for under two bars or a camera that shows nothing.
std::optional<Range> visibleRange(const OscInput& input);

/// The points that are drawn: of several in one bar the last, where there is such a bar and it is in range. They come
/// in runs of points whose bars follow each other: calls `run(bar, points, begins)`, `begins` for a run that begins a
/// line.
template <class Run>
void eachRun(std::span<const OscPt> points, const OscInput& input, const Range& range, bool breaks, Run&& run) {
    const std::int64_t seconds = barSeconds(input.timeframe);
    const std::span candles = input.candles;
    const auto from = std::ranges::lower_bound(points, range.tLeft, {}, &OscPt::t);
    const auto stop = std::ranges::upper_bound(from, points.end(), range.tRight, {}, &OscPt::t);
    std::optional<std::int64_t> before;  // when the point before was
    std::size_t next = range.first;      // the bar after it
    for (auto at = from; at != stop && next <= range.last; ++at) {
        const std::int64_t bucket = at->t / seconds * seconds, end = bucket + seconds;
        while (at + 1 != stop && at[1].t < end) ++at;
        const auto found = barFrom(candles, bucket, next);
        if (!found || *found < range.first || *found > range.last || !std::isfinite(at->v)) continue;
        const bool begins = !before || (breaks && at->t - *before > range.maxGap);
        // Those that follow a bar's time apart are known by a glance, but for the last of them: its bar may have more.
        const std::size_t most = std::min(static_cast<std::size_t>(stop - at), range.last + 1 - *found);
        std::size_t count = 1;
        for (std::int64_t t = end; count < most; ++count, t += seconds)
            if (at[count].t != t || candles[*found + count].time != t || !std::isfinite(at[count].v)) break;
        if (count > 1) --count;
        run(*found, std::span(&*at, count), begins);
        at += count - 1;
        next = *found + count;
        before = at->t;
    }
}

/// The same point by point: calls `add(bar, value, begins)`.
template <class Add>
void eachPoint(std::span<const OscPt> points, const OscInput& input, const Range& range, bool breaks, Add&& add) {
    eachRun(points, input, range, breaks, [&](std::size_t bar, std::span<const OscPt> run, bool begins) {
        for (const OscPt& point : run) add(bar++, point.v, std::exchange(begins, false));
    });
}

/// The newest value of a series at the right edge.
struct Label {
    std::size_t series = 0;
    double value = 0;
    double wanted = 0;  ///< y of the value
    double y = 0;       ///< y of its middle
};
/// At most one for each series.
struct Labels {
    std::array<Label, oscSeries.size()> list{};
    std::size_t count = 0;
    std::span<Label> span() & { return {list.data(), count}; }
    std::span<const Label> span() const& { return {list.data(), count}; }
    std::span<const Label> span() const&& = delete;
};
/// From top to bottom, moved apart.
Labels labels(const OscContent& content, double height);
/// Moves labels apart: sorts them by `y`, pushes each to 20 points below the one before, then all up from the bottom
/// edge, then all down from the top edge, which wins where they do not fit.
void spread(std::span<Label> labels, double height);

/// With two decimals, and no negative zero.
AxisScale::Label valueText(double value);
/// As the legend names a series: title and newest value as a whole number, "--" where there is none.
AxisScale::Label legendText(const OscContent& content, std::size_t series);
/// What is said in place of the lines; empty while there are any.
std::string_view notice(const OscContent& content);

}  // namespace OscGeometry
}  // namespace vmr
