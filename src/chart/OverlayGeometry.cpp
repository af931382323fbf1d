#include "chart/OverlayGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "chart/CandleGeometry.h"

namespace vmr::OverlayGeometry {

namespace {
constexpr double longestStep = 1.5;  // bars; beyond it a series has a gap

struct Spot {
    double x, y;
};

// Joins the segment before if that ends where this one begins.
void line(std::vector<LineVertex>& verts, const Spot& from, const Spot& to, double width, const Rgba8& color,
          const DataOrigin& origin) {
    const auto at = [&](const Spot& spot) {
        return std::pair(static_cast<float>(spot.x - origin.bar), static_cast<float>(spot.y - origin.price));
    };
    const auto [ax, ay] = at(from);
    const auto [bx, by] = at(to);
    const bool joins = !verts.empty() && verts.back().pos[0] == ax && verts.back().pos[1] == ay;
    verts.resize(verts.size() + segmentVertices);
    LineVertex* segment = &*(verts.end() - segmentVertices);
    writeSegment(segment, ax, ay, bx, by, static_cast<float>(width * 0.5), color);
    if (joins) joinSegments(segment - segmentVertices, segment);
}

// The last bar at or before `t`; the first one for an earlier `t`.
std::size_t barAt(std::span<const Candle> candles, std::int64_t t) {
    const auto after = std::upper_bound(candles.begin(), candles.end(), t,
                                        [](std::int64_t at, const Candle& bar) { return at < bar.time; });
    return after == candles.begin() ? 0 : static_cast<std::size_t>(after - candles.begin()) - 1;
}
}  // namespace

void lineTo(std::vector<LineVertex>& verts, std::span<const OvPoint> points, std::size_t i, double width,
            const Rgba& color, const DataOrigin& origin) {
    if (i == 0) return;
    const OvPoint& a = points[i - 1];
    const OvPoint& b = points[i];
    const double dx = b.idx - a.idx;
    if (dx > 0 && dx <= longestStep) line(verts, {a.idx, a.v}, {b.idx, b.v}, width, color, origin);
}

void flowTo(std::vector<LineVertex>& verts, std::span<const OvColorPoint> points, std::size_t i, double width,
            const Rgba& blue, const Rgba& red, const DataOrigin& origin) {
    constexpr double level = 1e-9;  // a smaller rise has no crossing
    if (i == 0) return;
    const OvColorPoint& a = points[i - 1];
    const OvColorPoint& b = points[i];
    const double dx = b.idx - a.idx;
    if (dx > longestStep) return;
    const Rgba& color = a.positive ? blue : red;
    if (a.positive == b.positive) {
        line(verts, {a.idx, a.v}, {b.idx, b.v}, width, color, origin);
        return;
    }
    const double rise = b.v - a.v;
    const double t = std::abs(rise) > level ? (a.base - a.v) / rise : 0.5;
    const Spot crossing{a.idx + dx * t, a.base};
    line(verts, {a.idx, a.v}, crossing, width, color, origin);
    line(verts, crossing, {b.idx, b.v}, width, b.positive ? blue : red, origin);
}

std::optional<LineSpan> lineSpan(const OverlayLine& line, std::span<const Candle> candles) {
    if (candles.empty() || !std::isfinite(line.price)) return std::nullopt;
    if (line.endTime && *line.endTime <= candles.front().time) return std::nullopt;
    const std::size_t first = barAt(candles, line.startTime);
    const std::size_t last = line.endTime ? barAt(candles, *line.endTime) : candles.size() - 1;
    return first < last ? std::optional(LineSpan{first, last}) : std::nullopt;
}

void srLines(std::vector<LineVertex>& verts, std::vector<LineVertex>& dashed, std::span<const OverlayLine> lines,
             std::span<const Candle> candles, double opacity, const DataOrigin& origin) {
    constexpr float gray = 0.667F;
    const double alpha = opacity > 0 ? std::min(opacity, 1.0) : 0.0;
    const Rgba color{gray, gray, gray, static_cast<float>(alpha)};
    for (const OverlayLine& level : lines) {
        const auto bars = lineSpan(level, candles);
        if (!bars) continue;
        const Spot start{static_cast<double>(bars->first), level.price},
            end{static_cast<double>(bars->last), level.price};
        line(level.dashed ? dashed : verts, start, end, 1, color, origin);
    }
}

void secondCandle(std::vector<CandleVertex>& verts, std::span<const OvCandle> candles, std::size_t i,
                  const DataOrigin& origin) {
    using namespace CandleGeometry;
    static constexpr Look falling{{1.0F, 0.478F, 0.0F, 1.0F}, true}, rising{{1.0F, 0.478F, 0.0F, 0.85F}};
    const auto lookOf = [](const OvCandle& bar) { return isUp(bar.o, bar.c) ? &rising : &falling; };
    const auto placeOf = [&](const OvCandle& bar) {
        return Place{.x = bar.idx - origin.bar,
                     .high = bar.h - origin.price,
                     .top = std::max(bar.o, bar.c) - origin.price,
                     .bot = std::min(bar.o, bar.c) - origin.price,
                     .low = bar.l - origin.price,
                     .halfBody = 0.3,
                     .halfWick = 0.05};
    };
    Before before;
    std::size_t first = i;
    while (first > 0 && first + 2 > i && candles[first].idx == candles[first - 1].idx + 1) --first;
    for (; first < i; ++first) {
        const Place place = placeOf(candles[first]);
        before.add(place.top, place.bot, *lookOf(candles[first]));
    }
    verts.resize(verts.size() + candleVertices);
    write(&*(verts.end() - candleVertices), placeOf(candles[i]), *lookOf(candles[i]), before);
}

}  // namespace vmr::OverlayGeometry
