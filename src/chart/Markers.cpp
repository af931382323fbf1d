#include "chart/Markers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vmr::Markers {

namespace {

constexpr double leastRadius = 2.0;   // pixels
constexpr double radiusRange = 18.0;  // pixels from the least radius to where transparency ends growing

/// The bar that a time falls into. Times that ascend are found by a step or two.
class BarSearch {
 public:
    explicit BarSearch(std::span<const Candle> bars) : bars_(bars) {}

    std::size_t find(std::int64_t t) {
        if (t <= bars_.front().time) return 0;
        if (t >= bars_.back().time) return bars_.size() - 1;
        constexpr int steps = 4;
        const bool onward = bars_[at_].time <= t;
        for (int i = 0; onward && i < steps; ++i) {
            if (t < bars_[at_ + 1].time) return at_;
            ++at_;
        }
        const auto begin = bars_.begin() + static_cast<std::ptrdiff_t>(onward ? at_ : 0);
        const auto after = std::upper_bound(begin, bars_.end(), t,
                                            [](std::int64_t time, const Candle& bar) { return time < bar.time; });
        at_ = static_cast<std::size_t>(after - bars_.begin()) - 1;
        return at_;
    }

 private:
    std::span<const Candle> bars_;
    std::size_t at_ = 0;
};

/// The bigger, the more transparent.
float baseAlpha(float radius) {
    const float f = (radius - static_cast<float>(leastRadius)) / static_cast<float>(radiusRange);
    return f >= 0 ? 0.15F - std::min(f, 1.0F) * 0.1F : 0.15F;
}

float rankShare(int rank) { return rank == 0 ? 1.0F : rank == 1 ? 0.7F : 0.5F; }

Rgba faded(const Rgba& color, float alpha) { return {color[0], color[1], color[2], alpha}; }

/// Places markers one after the other.
class Writer {
 public:
    Writer(MarkerVertex* out, const Input& input) : out_(out), input_(input), search_(input.candles) {}

    MarkerVertex* end() const { return out_; }

    void bubble(const BubblePt& point) {
        if (!moveTo(point.minuteTs, point.strike)) return;
        const RenderConfig& config = input_.config;
        const float r = std::max(static_cast<float>(leastRadius), static_cast<float>(point.dom * 20.0));
        const Rgba color = faded(point.pos ? config.bubblePos : config.bubbleNeg,
                                 config.bubbleOpacity * rankShare(point.rank) * baseAlpha(r));
        out_ = writeDisc(out_, x_, y_, r, color);
    }

    void triangle(const TrianglePt& point) {
        if (!(point.minuteMax > 0) || !std::isfinite(point.net) || !moveTo(point.minuteTs, point.strike)) return;
        const RenderConfig& config = input_.config;
        const double share = std::min(std::abs(point.net) / point.minuteMax, 1.0);
        const auto r = static_cast<float>(share * radiusRange + leastRadius);
        const bool up = point.net >= 0;
        const Rgba color = faded(up ? config.hfCall : config.hfPut, config.triangleOpacity * baseAlpha(r));
        out_ = writeTriangle(out_, x_, y_, r, up, color);
    }

 private:
    bool moveTo(std::int64_t minute, double strike) {
        const double y = strike * input_.etfRatio - input_.origin.price;
        if (!std::isfinite(y)) return false;
        x_ = static_cast<float>(static_cast<double>(search_.find(minute)) - input_.origin.bar);
        y_ = static_cast<float>(y);
        return true;
    }

    MarkerVertex* out_;
    const Input& input_;
    BarSearch search_;
    float x_ = 0, y_ = 0;
};

}  // namespace

namespace {
/// Makes the vertices of all `points`, at most `each` for one of them.
template <class Point>
void write(std::vector<MarkerVertex>& out, std::span<const Point> points, std::size_t each, const Input& input,
           void (Writer::*add)(const Point&)) {
    out.resize(points.size() * each);
    Writer writer(out.data(), input);
    for (const Point& point : points) (writer.*add)(point);
    out.resize(static_cast<std::size_t>(writer.end() - out.data()));
}
}  // namespace

void build(Lists& out, const Input& input) {
    const bool placed = std::isfinite(input.etfRatio) && input.etfRatio != 0 && !input.candles.empty();
    const bool bubbles = placed && input.config.bubblesEnabled, triangles = placed && input.config.trianglesEnabled;
    write(out.discs, input.bubbles.first(bubbles ? input.bubbles.size() : 0), discVertices, input, &Writer::bubble);
    write(out.triangles, input.triangles.first(triangles ? input.triangles.size() : 0), triangleVertices, input,
          &Writer::triangle);
}

Zoom zoom(double barsInView) {
    constexpr double fullUntil = 400.0;  // bars
    const double z = barsInView > 1.0 ? std::min(fullUntil / barsInView, 1.0) : 1.0;
    return {static_cast<float>(std::max(z * z, 0.05)), static_cast<float>(std::max(std::sqrt(z), 0.5))};
}

}  // namespace vmr::Markers
