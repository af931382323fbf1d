#include "chart/OscGeometry.h"

#include <algorithm>

#include "chart/LabelFormat.h"

namespace vmr::OscGeometry {

namespace {
constexpr double labelStep = 20, edge = 2;  // points
constexpr std::int64_t leastMaxGap = 1800;  // seconds

const OscPt* newest(const OscContent& content, std::size_t series) {
    const auto points = pointsOf(content, series);
    return points.empty() || !std::isfinite(points.back().v) ? nullptr : &points.back();
}

void shift(std::span<Label> labels, double by) {
    for (Label& label : labels) label.y += by;
}
}  // namespace

std::int64_t barSeconds(double timeframe) {
    constexpr double longest = 1e6;  // minutes
    return static_cast<std::int64_t>(timeframe > 1 ? std::min(timeframe, longest) : 1.0) * 60;
}

bool isShown(const OscContent& content, std::size_t series) {
    const bool hidden = content.single && oscSeries[series].points == &OscLines::es;
    return content.shown[series] && !hidden;
}

std::span<const OscPt> pointsOf(const OscContent& content, std::size_t series) {
    if (!content.lines || !isShown(content, series)) return {};
    return content.lines->*oscSeries[series].points;
}

std::optional<Range> visibleRange(const OscInput& input) {
    const auto bars = static_cast<double>(input.candles.size());
    const Viewport& view = input.viewport;
    if (bars < 2 || !std::isfinite(view.first) || !(view.count > 0) || !std::isfinite(view.count)) return std::nullopt;
    const auto bar = [&](double at) { return static_cast<std::size_t>(std::clamp(at, 0.0, bars - 1)); };
    const std::int64_t seconds = barSeconds(input.timeframe);
    Range out{bar(std::trunc(view.first) - 2), bar(std::trunc(view.first + view.count) + 2), 0, 0, 0};
    out.tLeft = input.candles[out.first].time - 2 * seconds;
    out.tRight = input.candles[out.last].time + 2 * seconds;
    out.maxGap = std::max(4 * seconds, leastMaxGap);
    return out;
}

Labels labels(const OscContent& content, double height) {
    Labels out;
    for (std::size_t i = 0; i < oscSeries.size(); ++i)
        if (const OscPt* last = newest(content, i)) {
            const double y = yFor(last->v, height);
            out.list[out.count++] = {i, last->v, y, y};
        }
    spread(out.span(), height);
    return out;
}

// By insertion, which keeps the order of the series where values are alike, and allocates nothing.
void spread(std::span<Label> labels, double height) {
    if (labels.empty()) return;
    for (std::size_t i = 1; i < labels.size(); ++i)
        for (std::size_t k = i; k > 0 && labels[k].y < labels[k - 1].y; --k) std::swap(labels[k], labels[k - 1]);
    for (std::size_t i = 1; i < labels.size(); ++i) labels[i].y = std::max(labels[i].y, labels[i - 1].y + labelStep);
    if (const double over = labels.back().y + halfLabel - (height - edge); over > 0) shift(labels, -over);
    if (const double under = edge - (labels.front().y - halfLabel); under > 0) shift(labels, under);
}

AxisScale::Label valueText(double value) {
    constexpr double readable = 1e15;
    if (!(std::abs(value) < readable)) return formatLabel("{:.2e}", value);
    return formatLabel("{:.2f}", std::abs(value) < 0.005 ? 0.0 : value);
}

AxisScale::Label legendText(const OscContent& content, std::size_t series) {
    constexpr double readable = 1e15;
    const std::string_view own = oscSeries[series].title, title = own.empty() ? content.primaryTitle : own;
    const OscPt* last = newest(content, series);
    if (!last) return formatLabel("{} --", title);
    if (!(std::abs(last->v) < readable)) return formatLabel("{} {:.1e}", title, last->v);
    return formatLabel("{} {:.0f}", title, std::round(last->v) + 0.0);
}

std::string_view notice(const OscContent& content) {
    if (!content.lines) return "No oscillator for this symbol";
    for (const OscSeries& series : oscSeries)
        if (!(content.lines->*series.points).empty()) return {};
    return "Waiting for oscillator data";
}

}  // namespace vmr::OscGeometry
