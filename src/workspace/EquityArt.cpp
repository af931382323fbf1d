#include "workspace/EquityArt.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace vmr {

namespace {
constexpr double shortest = 1e-9;
constexpr double halfLine = 0.75, feather = 0.75;
constexpr double steepestCorner = 0.4;  // cosine; sharper ones are cut
constexpr double baseOpacity = 0.25, shadeOpacity = 0.16;
constexpr EquityColor white{255, 255, 255};

struct Spot {
    double x, y;
};

class Brush {
 public:
    explicit Brush(std::vector<ArtVertex>& out) : out_(out) {}

    void quad(Spot a, Spot b, Spot c, Spot d, EquityColor color, double opacity, double far) {
        const ArtVertex va = corner(a, color, opacity), vb = corner(b, color, opacity), vc = corner(c, color, far),
                        vd = corner(d, color, far);
        out_.insert(out_.end(), {va, vb, vc, va, vc, vd});
    }

 private:
    static ArtVertex corner(Spot at, EquityColor color, double opacity) {
        const auto part = [opacity](int value) { return static_cast<std::uint8_t>(std::lround(value * opacity)); };
        return {static_cast<float>(at.x), static_cast<float>(at.y), part(color.red),
                part(color.green),        part(color.blue),         part(255)};
    }

    std::vector<ArtVertex>& out_;
};

// Between the highest result so far and the curve.
void shade(Brush& brush, const SimCurvePlot& plot, double width, double height, EquityColor color) {
    for (std::size_t i = 0; i + 1 < plot.points.size(); ++i) {
        const auto &from = plot.points[i], &to = plot.points[i + 1];
        const double fall = from.y - from.peak, next = to.y - from.peak;  // downwards
        if (fall <= 0 && next <= 0) continue;
        const double share = next >= 0 ? 1 : fall / (fall - next);  // of the way to where a new high begins
        const double left = from.x * width, right = left + (to.x * width - left) * share, top = from.peak * height;
        brush.quad({left, top}, {right, top}, {right, std::max(from.peak, to.y) * height}, {left, from.y * height},
                   color, shadeOpacity, shadeOpacity);
    }
}

Spot across(Spot a, Spot b) {
    const double length = std::max(shortest, std::hypot(b.x - a.x, b.y - a.y));
    return {(a.y - b.y) / length, (b.x - a.x) / length};
}

// At a corner half way between the two segments' own, and longer, so that the line keeps its width.
Spot normalAt(std::span<const Spot> line, std::size_t i) {
    const Spot before = across(line[i > 0 ? i - 1 : 0], line[i > 0 ? i : 1]);
    const Spot after = i + 1 < line.size() ? across(line[i], line[i + 1]) : before;
    const Spot sum{before.x + after.x, before.y + after.y};
    const double length = std::max(shortest, std::hypot(sum.x, sum.y));
    const Spot unit{sum.x / length, sum.y / length};
    const double grow = 1 / std::max(steepestCorner, unit.x * after.x + unit.y * after.y);
    return {unit.x * grow, unit.y * grow};
}

void stroke(Brush& brush, std::span<const Spot> line, EquityColor color) {
    const auto aside = [](Spot at, Spot normal, double by) { return Spot{at.x + normal.x * by, at.y + normal.y * by}; };
    Spot normal = normalAt(line, 0);
    for (std::size_t i = 0; i + 1 < line.size(); ++i) {
        const Spot a = line[i], b = line[i + 1], next = normalAt(line, i + 1);
        brush.quad(aside(a, normal, -halfLine), aside(b, next, -halfLine), aside(b, next, halfLine),
                   aside(a, normal, halfLine), color, 1, 1);
        for (const double side : {-1.0, 1.0})
            brush.quad(aside(a, normal, side * halfLine), aside(b, next, side * halfLine),
                       aside(b, next, side * (halfLine + feather)), aside(a, normal, side * (halfLine + feather)),
                       color, 1, 0);
        normal = next;
    }
}
}  // namespace

void makeEquityArt(const SimCurvePlot& plot, double width, double height, EquityColor gain, EquityColor loss,
                   std::vector<ArtVertex>& out) {
    out.clear();
    if (plot.points.size() < 2) return;
    Brush brush(out);
    const double base = plot.base * height;
    brush.quad({0, base - 0.5}, {width, base - 0.5}, {width, base + 0.5}, {0, base + 0.5}, white, baseOpacity,
               baseOpacity);
    shade(brush, plot, width, height, loss);
    std::vector<Spot> line;
    line.reserve(plot.points.size());
    for (const auto& point : plot.points) line.push_back({point.x * width, point.y * height});
    stroke(brush, line, plot.gain ? gain : loss);
}

}  // namespace vmr
