#include "chart/LevelLabels.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "chart/OverlayRibbons.h"

namespace vmr {

namespace {

constexpr std::string_view between = " \u00b7 ";
constexpr double gray = 0.8;
constexpr double wallReach = 2.0;  // bars past the last one
constexpr double mostCents = 1e15;

}  // namespace

LevelLabels::LevelLabels() { labels_.reserve(64); }

void LevelLabels::clear() {
    filled_ = false;
    given_.clear();
    lines_.clear();
    walls_.clear();
    used_ = 0;
}

bool LevelLabels::setLines(std::span<const OverlayLine> lines, std::uint64_t revision, const OverlayStyle& style) {
    const bool same = revision_ == revision && style_ == style;
    if (std::exchange(filled_, true) && same) return false;
    revision_ = revision;
    if (std::exchange(style_, style) == style && std::ranges::equal(lines, given_)) return false;
    given_.assign(lines.begin(), lines.end());
    lines_.clear();
    for (const OverlayLine& line : lines) {
        if (!OverlayRibbons::isShown(line, style) || !(std::abs(line.price * 100) < mostCents)) continue;
        const bool session = line.label == "Open" || line.label.starts_with("Prev");
        lines_.push_back({line, session, std::llround(line.price * 100), {}});
    }
    std::stable_sort(lines_.begin(), lines_.end(), [](const Line& a, const Line& b) {
        return std::tuple(-a.cents, a.session, -a.line.startTime) < std::tuple(-b.cents, b.session, -b.line.startTime);
    });
    bars_ = {};
    return true;
}

bool LevelLabels::setWalls(std::span<const PriceLevel> walls, bool shown) {
    if (!shown) walls = {};
    if (std::ranges::equal(walls, walls_)) return false;
    walls_.assign(walls.begin(), walls.end());
    return true;
}

LevelLabel& LevelLabels::add(double price) {
    if (used_ == labels_.size()) labels_.emplace_back();
    LevelLabel& label = labels_[used_++];
    label.text.clear();
    label.wall = label.goesOn = false;
    label.price = price;
    label.left = label.right = 0;
    label.r = label.g = label.b = gray;
    return label;
}

void LevelLabels::placeLines(std::span<const Candle> candles) {
    const Bars bars{candles.size(), candles.front().time, candles.back().time};
    if (std::exchange(bars_, bars) == bars) return;
    for (Line& line : lines_) line.bars = OverlayGeometry::lineSpan(line.line, candles);
}

std::span<const LevelLabel> LevelLabels::inView(const Viewport& viewport, double width, double plotRight,
                                                std::span<const Candle> candles, std::size_t wallsFrom) {
    used_ = 0;
    if (candles.size() < 2 || !(viewport.count > 0)) return {};
    placeLines(candles);
    const Sight sight{viewport, width, plotRight, candles.size()};
    addWalls(sight, wallsFrom);
    for (auto at = lines_.begin(); at != lines_.end();) {
        const auto next = std::find_if(at, lines_.end(), [&](const Line& line) { return line.cents != at->cents; });
        if (at->line.price > viewport.minP - (viewport.maxP - viewport.minP) &&
            at->line.price < viewport.maxP + (viewport.maxP - viewport.minP))
            addLines({at, next}, sight);
        at = next;
    }
    return {labels_.data(), used_};
}

// Walls reach from the session's start to a little past the last bar. Of one price they share a label.
void LevelLabels::addWalls(const Sight& sight, std::size_t firstBar) {
    const double end = static_cast<double>(sight.bars - 1) + wallReach;
    const double left = AxisScale::xForIndex(sight.viewport, static_cast<double>(firstBar), sight.width);
    const double right = AxisScale::xForIndex(sight.viewport, end, sight.width);
    if (!(left < sight.plotRight) || !(right > 0)) return;
    for (const PriceLevel& wall : walls_) {
        if (!std::isfinite(wall.price)) continue;
        const auto same = std::find_if(labels_.data(), labels_.data() + used_,
                                       [&](const LevelLabel& label) { return label.price == wall.price; });
        if (same != labels_.data() + used_) {
            same->text.append(between).append(wall.label);
            continue;
        }
        LevelLabel& label = add(wall.price);
        label.text.append(wall.label);
        label.wall = label.goesOn = true;
        label.left = std::max(left, 0.0);
        label.right = std::min(right, sight.plotRight);
        std::tie(label.r, label.g, label.b) = std::tie(wall.r, wall.g, wall.b);
    }
    for (std::size_t i = 0; i < used_; ++i)
        labels_[i].text.append(between).append(AxisScale::fmtPrice(labels_[i].price).text());
}

// Each name stands once, though several days may have it.
void LevelLabels::addLines(std::span<const Line> samePrice, const Sight& sight) {
    LevelLabel* label = nullptr;
    for (const Line& one : samePrice) {
        if (!one.bars) continue;
        const auto xOf = [&](std::size_t bar) {
            return AxisScale::xForIndex(sight.viewport, static_cast<double>(bar), sight.width);
        };
        const double left = std::max(xOf(one.bars->first), 0.0), right = std::min(xOf(one.bars->last), sight.plotRight);
        if (!(left < right)) continue;
        const bool first = label == nullptr;
        if (first) label = &add(one.line.price);
        label->left = first ? left : std::min(label->left, left);
        label->right = std::max(label->right, right);
        label->goesOn |= one.bars->last + 1 == sight.bars || right == sight.plotRight;
        const std::string& name = one.line.label;
        const bool named = std::any_of(samePrice.data(), &one, [&](const Line& before) {
            return before.line.label == name && before.bars && xOf(before.bars->last) > 0 &&
                   xOf(before.bars->first) < sight.plotRight;
        });
        if (name.empty() || named) continue;
        if (!label->text.empty()) label->text.append(between);
        label->text.append(name);
    }
    if (!label) return;
    if (!label->text.empty()) label->text.append(" ");
    label->text.append(AxisScale::fmtPrice(label->price).text());
}

}  // namespace vmr
