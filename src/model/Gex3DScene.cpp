#include "model/Gex3DScene.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/NumberText.h"

namespace vmr {

namespace {

constexpr double barWide = 0.62, barDeep = 0.55;  // of a cell
constexpr double leastPeak = 1e-9;
constexpr double wideGlyph = 0.66, slimGlyph = 0.3;  // of a label's size: digits and letters, and what parts them

double dot(const ScenePoint& a, const ScenePoint& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

/// Where along the ray a box begins; infinity where the ray misses it.
double distanceTo(const SceneBox& box, const SceneRay& ray) {
    double from = 0, to = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < 3; ++i) {
        const double low = box.place[i] - box.size[i] / 2 - ray.from[i], high = low + box.size[i];
        if (ray.direction[i] == 0) {
            if (low > 0 || high < 0) return std::numeric_limits<double>::infinity();
            continue;
        }
        const double a = low / ray.direction[i], b = high / ray.direction[i];
        from = std::max(from, std::min(a, b));
        to = std::min(to, std::max(a, b));
    }
    return from <= to ? from : std::numeric_limits<double>::infinity();
}

double widthOf(std::string_view utf8) {
    double width = 0;
    for (const char c : utf8) {
        const bool continues = (c & 0xC0) == 0x80, slim = std::string_view(" ./()-").find(c) != std::string_view::npos;
        width += continues ? 0 : slim ? slimGlyph : wideGlyph;
    }
    return width;
}

double distanceTo(const SceneLabel& label, const SceneRay& ray, double scale) {
    constexpr double none = std::numeric_limits<double>::infinity();
    const ScenePoint away{label.place[0] - ray.from[0], label.place[1] - ray.from[1], label.place[2] - ray.from[2]};
    const ScenePoint forward{ray.up[1] * ray.right[2] - ray.up[2] * ray.right[1],
                             ray.up[2] * ray.right[0] - ray.up[0] * ray.right[2],
                             ray.up[0] * ray.right[1] - ray.up[1] * ray.right[0]};
    const double along = dot(ray.direction, forward);
    const double at = along > 0 ? dot(away, forward) / along : -1;
    if (!(at > 0)) return none;
    const ScenePoint off{ray.direction[0] * at - away[0], ray.direction[1] * at - away[1],
                         ray.direction[2] * at - away[2]};
    const double halfWidth = label.halfWidth() * scale;
    const double middle = label.outside ? halfWidth * ray.right[0] : 0;
    const bool inside = std::abs(dot(off, ray.right) - middle) <= halfWidth &&
                        std::abs(dot(off, ray.up)) <= Gex3DScene::labelSize * scale / 2;
    return inside ? at : none;
}

double peakOf(const Gex3DData& data, const std::set<std::string>& hidden) {
    double peak = leastPeak;
    for (std::size_t e = 0; e < data.net.size(); ++e) {
        if (hidden.contains(data.expirations[e])) continue;
        for (const double value : data.net[e]) peak = std::max(peak, std::abs(value));
    }
    return peak;
}

/// The strike nearest to the spot, the first of two.
std::size_t nearestStrike(const Gex3DData& data) {
    std::size_t nearest = 0;
    for (std::size_t s = 1; s < data.strikes.size(); ++s)
        if (std::abs(data.strikes[s] - data.spot) < std::abs(data.strikes[nearest] - data.spot)) nearest = s;
    return nearest;
}

}  // namespace

ScenePoint turned(const ScenePoint& place, double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return {place[0] * c + place[2] * s, place[1], place[2] * c - place[0] * s};
}

double SceneLabel::halfWidth() const { return widthOf(text) * Gex3DScene::labelSize / 2; }

SceneRay SceneRay::inTurned(double angle) const {
    return {turned(from, -angle), turned(direction, -angle), turned(right, -angle), turned(up, -angle)};
}

Gex3DScene Gex3DScene::build(const Gex3DData& data, const std::set<std::string>& hidden) {
    Gex3DScene out;
    if (data.strikes.empty() || data.expLabels.empty()) return out;
    out.peak = peakOf(data, hidden);
    const double sx = width / static_cast<double>(data.strikes.size());
    const double sz = depth / static_cast<double>(data.expLabels.size());
    const auto xOf = [&](std::size_t s) { return sx * static_cast<double>(s) - width / 2 + sx / 2; };
    const auto zOf = [&](std::size_t e) { return depth / 2 - sz * static_cast<double>(e) - sz / 2; };
    for (std::size_t e = 0; e < data.expLabels.size(); ++e) {
        if (hidden.contains(data.expirations[e])) continue;
        for (std::size_t s = 0; s < data.strikes.size(); ++s) {
            const double v = data.net[e][s];
            if (v == 0) continue;
            const double height = std::max(std::abs(v) / out.peak * tallest, shortest);
            out.bars.push_back(
                {{{xOf(s), height / 2, zOf(e)}, {sx * barWide, height, sz * barDeep}},
                 data.strikes[s],
                 e,
                 v > 0,
                 fmt::format("bar|{}|{}|{:+.1f}", strikeText(data.strikes[s]), data.expLabels[e], v / 1'000'000)});
        }
    }
    const double spotX = xOf(nearestStrike(data));
    out.spotMarker = {{spotX, 0.6, 0}, {1.2, 1.2, depth}};
    out.labels.push_back({fmt::format("{:.2f}", data.spot), {spotX, 3, 80}, 0.5});
    for (std::size_t s = 0; s < data.strikes.size(); s += 2)
        out.labels.push_back({strikeText(data.strikes[s]), {xOf(s), 0.5, 64}, 0.5});
    for (std::size_t e = 0; e < data.expLabels.size(); ++e)
        out.labels.push_back({data.expLabels[e], {106, 0.5, zOf(e)}, 0.55, true});
    return out;
}

std::optional<std::size_t> Gex3DScene::barHit(const SceneRay& ray, double labelScale,
                                              const std::vector<bool>& shown) const {
    std::optional<std::size_t> hit;
    double nearest = std::min(distanceTo(floor, ray), distanceTo(spotMarker, ray));
    for (std::size_t i = 0; i < labels.size(); ++i)
        if (i >= shown.size() || shown[i]) nearest = std::min(nearest, distanceTo(labels[i], ray, labelScale));
    for (std::size_t i = 0; i < bars.size(); ++i) {
        const double distance = distanceTo(bars[i].box, ray);
        if (!(distance < nearest)) continue;
        nearest = distance;
        hit = i;
    }
    return hit;
}

std::string dataID(const std::optional<Gex3DData>& data) {
    if (!data) return {};
    const double last = data->net.empty() || data->net.back().empty() ? 0 : data->net.back().back();
    return fmt::format("{}|{}|{}|{}", doubleText(data->spot), data->strikes.size(), data->expLabels.size(),
                       doubleText(last));
}

std::string strikeText(double strike) {
    constexpr double mostWhole = 1e15;
    const bool whole = std::abs(strike) < mostWhole && strike == std::round(strike);
    return whole ? std::to_string(static_cast<long long>(strike)) : doubleText(strike);
}

std::optional<std::string> tooltipOf(std::string_view name) {
    if (!name.starts_with("bar|")) return std::nullopt;
    std::vector<std::string_view> parts;
    for (std::size_t from = 0; from != std::string_view::npos;) {
        const std::size_t to = name.find('|', from);
        parts.push_back(name.substr(from, to == std::string_view::npos ? to : to - from));
        from = to == std::string_view::npos ? to : to + 1;
    }
    if (parts.size() != 4) return std::nullopt;
    return fmt::format("Strike {}  ·  {}  ·  GEX {}M", parts[1], parts[2], parts[3]);
}

}  // namespace vmr
