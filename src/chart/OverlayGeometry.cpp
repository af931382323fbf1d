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

// Places the pieces of lines of one width.
class Ribbon {
 public:
    Ribbon(std::vector<LineVertex>& verts, double halfWidth, const DataOrigin& origin)
        : verts_(verts), halfWidth_(static_cast<float>(halfWidth)), origin_(origin) {}

    void segment(const Spot& a, const Spot& b, const Rgba8& color) {
        verts_.resize(verts_.size() + segmentVertices);
        writeSegment(&*(verts_.end() - segmentVertices), static_cast<float>(a.x - origin_.bar),
                     static_cast<float>(a.y - origin_.price), static_cast<float>(b.x - origin_.bar),
                     static_cast<float>(b.y - origin_.price), halfWidth_, color);
    }

    // Joins the one before if that ends where this one begins.
    void line(const Spot& a, const Spot& b, const Rgba8& color) {
        const bool joins = end_.x == a.x && end_.y == a.y;
        segment(a, b, color);
        if (joins) joinSegments(&*(verts_.end() - 2 * segmentVertices), &*(verts_.end() - segmentVertices));
        end_ = b;
    }

    // From `a` over `dx` bars; `dx` above 0.
    void dashes(const Spot& a, double dx, double dy, const Dash& dash, const Rgba8& color) {
        const auto at = [&](double d) { return d < dx ? Spot{a.x + d, a.y + dy * d / dx} : Spot{a.x + dx, a.y + dy}; };
        for (double d = 0; d < dx; d += dash.period()) line(at(d), at(d + dash.on), color);
        if (end_.x != a.x + dx) end_ = {NAN, NAN};
    }

 private:
    std::vector<LineVertex>& verts_;
    float halfWidth_;
    DataOrigin origin_;
    Spot end_{NAN, NAN};  // of the last line
};

// The last bar at or before `t`; the first one for an earlier `t`.
std::size_t barAt(std::span<const Candle> candles, std::int64_t t) {
    const auto after = std::upper_bound(candles.begin(), candles.end(), t,
                                        [](std::int64_t at, const Candle& bar) { return at < bar.time; });
    return after == candles.begin() ? 0 : static_cast<std::size_t>(after - candles.begin()) - 1;
}
}  // namespace

void polyline(std::vector<LineVertex>& verts, std::span<const OvPoint> points, double width, const Rgba& color,
              const std::optional<Dash>& dash, const DataOrigin& origin) {
    Ribbon ribbon(verts, width * 0.5, origin);
    const bool dashed = dash && dash->period() > 0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const OvPoint& a = points[i - 1];
        const OvPoint& b = points[i];
        const double dx = b.idx - a.idx;
        if (!(dx > 0 && dx <= longestStep)) continue;
        if (dashed)
            ribbon.dashes({a.idx, a.v}, dx, b.v - a.v, *dash, color);
        else
            ribbon.line({a.idx, a.v}, {b.idx, b.v}, color);
    }
}

void hfPolyline(std::vector<LineVertex>& verts, std::span<const OvColorPoint> points, double width, const Rgba& blue,
                const Rgba& red, const DataOrigin& origin) {
    constexpr double level = 1e-9;  // a smaller rise has no crossing
    Ribbon ribbon(verts, width * 0.5, origin);
    for (std::size_t i = 1; i < points.size(); ++i) {
        const OvColorPoint& a = points[i - 1];
        const OvColorPoint& b = points[i];
        const double dx = b.idx - a.idx;
        if (dx > longestStep) continue;
        const Rgba& color = a.positive ? blue : red;
        if (a.positive == b.positive) {
            ribbon.line({a.idx, a.v}, {b.idx, b.v}, color);
            continue;
        }
        const double rise = b.v - a.v;
        const double t = std::abs(rise) > level ? (a.base - a.v) / rise : 0.5;
        const Spot crossing{a.idx + dx * t, a.base};
        ribbon.line({a.idx, a.v}, crossing, color);
        ribbon.line(crossing, {b.idx, b.v}, b.positive ? blue : red);
    }
}

void srLines(std::vector<LineVertex>& verts, std::span<const OverlayLine> lines, std::span<const Candle> candles,
             double opacity, const DataOrigin& origin, Gaps gaps) {
    if (candles.empty()) return;
    constexpr float gray = 0.667F;
    const double alpha = opacity > 0 ? std::min(opacity, 1.0) : 0.0;
    const Rgba color{gray, gray, gray, static_cast<float>(alpha)};
    Ribbon ribbon(verts, 0.5, origin);
    for (const OverlayLine& line : lines) {
        if (!std::isfinite(line.price) || (line.endTime && *line.endTime <= candles.front().time)) continue;
        const std::size_t a = barAt(candles, line.startTime);
        const std::size_t b = line.endTime ? barAt(candles, *line.endTime) : candles.size() - 1;
        if (a >= b) continue;
        const Spot start{static_cast<double>(a), line.price};
        if (line.dashed && gaps == Gaps::drawn) {
            ribbon.dashes(start, static_cast<double>(b - a), 0, sessionDash, color);
            continue;
        }
        Rgba whole = color;
        if (line.dashed) whole[3] *= static_cast<float>(sessionDash.on / sessionDash.period());
        ribbon.line(start, {static_cast<double>(b), line.price}, whole);
    }
}

void secondCandles(std::vector<CandleVertex>& verts, std::span<const OvCandle> candles, const DataOrigin& origin) {
    using namespace CandleGeometry;
    static constexpr Look falling{{1.0F, 0.478F, 0.0F, 1.0F}, true}, rising{{1.0F, 0.478F, 0.0F, 0.85F}};
    verts.resize(candles.size() * candleVertices);
    CandleVertex* out = verts.data();
    Before before;
    double next = NAN;  // the bar that joins the one before
    for (const OvCandle& bar : candles) {
        const Place place{.x = bar.idx - origin.bar,
                          .high = bar.h - origin.price,
                          .top = std::max(bar.o, bar.c) - origin.price,
                          .bot = std::min(bar.o, bar.c) - origin.price,
                          .low = bar.l - origin.price,
                          .halfBody = 0.3,
                          .halfWick = 0.05};
        const Look& style = isUp(bar.o, bar.c) ? rising : falling;
        out = write(out, place, style, bar.idx == next ? before : Before{});
        before = {place.top, place.bot, &style};
        next = bar.idx + 1;
    }
}

}  // namespace vmr::OverlayGeometry
