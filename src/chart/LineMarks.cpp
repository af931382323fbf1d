#include "chart/LineMarks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "chart/Camera.h"
#include "chart/TradingTexts.h"
#include "gpu/PlotArea.h"

namespace vmr {

namespace {

constexpr double badgeMargin = 6, badgeGap = 2;        // points
constexpr std::string_view leastResult = "+1,000.00";  // a position's badge leaves as much room at least

// snprintf, because a string stream would allocate in every frame.
template <class... Args>
void print(std::string& out, const char* format, Args... args) {
    char text[96];
    std::snprintf(text, sizeof text, format, args...);
    out = text;
}

bool meet(const PointRect& a, const PointRect& b) {
    return b.width > 0 && a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom();
}

}  // namespace

double LineMarks::closeMarkEdge(double width) {
    return std::max(PlotArea{width, 0}.right() - Camera::maxBarW(width) - 80.0, 240.0);
}

void LineMarks::clear() {
    count_ = 0;
    view_ = {};
}

bool LineMarks::builtFor(const View& view) const { return view.trading && view_ == view; }

void LineMarks::build(const View& view, const std::optional<DraggedLine>& dragged, const PointRect& axisTaken) {
    root_ = view.root;
    view_ = view;
    view_.root = root_;
    count_ = 0;
    view.trading->lines(root_, lines_);
    for (std::size_t i = 0; i < lines_.legs.size(); ++i) {  // an entry's stop lies over its target
        const bool both = i + 1 < lines_.legs.size() && lines_.legs[i + 1].id == lines_.legs[i].id;
        if (both) addLeg(lines_.legs[i + 1]);
        addLeg(lines_.legs[i]);
        if (both) ++i;
    }
    for (const OrderLine& order : lines_.orders) {
        const bool stop = order.kind == "SL", protective = stop || order.kind == "TP";
        LineMark& mark = add(LineMark::Kind::order, order.id, order.price, protective ? !stop : order.buy);
        print(mark.label, "%s %lld",
              stop         ? "SL"
              : protective ? "TP"
              : order.buy  ? "BUY"
                           : "SELL",
              static_cast<long long>(order.qty));
    }
    if (lines_.position) addPosition(*lines_.position);
    if (dragged) raise(*dragged);
    placeBadges();
    placeTags(axisTaken);
}

void LineMarks::addLeg(const ProjectedLeg& leg) {
    LineMark& mark = add(LineMark::Kind::leg, leg.id, leg.price, leg.leg == "TP");
    mark.leg = leg.leg;
    mark.label = leg.leg;
}

void LineMarks::addPosition(const PositionLine& position) {
    LineMark& mark = add(LineMark::Kind::position, {}, position.avg, position.qty > 0);
    print(mark.label, "%s %lld%s%s", position.qty > 0 ? "LONG" : "SHORT",
          static_cast<long long>(std::abs(position.qty)), position.contract.empty() ? "" : " ",
          position.contract.c_str());
    const auto now = TradingTexts::result(view_.trading->unrealized(root_), lines_.tickValue);
    mark.result.width = std::max(TradingTexts::room(now.text.text()), TradingTexts::room(leastResult));
}

LineMark& LineMarks::add(LineMark::Kind kind, const Uuid& id, double price, bool good) {
    constexpr std::size_t longestLabel = 64;  // so that none grows when another line is dragged
    if (count_ == marks_.size()) marks_.emplace_back().label.reserve(longestLabel);
    LineMark& mark = marks_[count_++];
    mark.kind = kind;
    mark.id = id;
    mark.leg = {};
    mark.good = good;
    mark.price = price;
    mark.tagText = AxisScale::fmtPrice(price);
    mark.y = AxisScale::yFor(view_.viewport, price, view_.height);
    mark.drawn = mark.y >= 0 && mark.y < PlotArea{view_.width, view_.height}.bottom();  // not for NaN
    mark.dragged = false;
    mark.badge = mark.result = mark.closeMark = mark.tag = {};
    return mark;
}

// To the top, where it is nearest to the axis and the others make room for it.
void LineMarks::raise(const DraggedLine& dragged) {
    const auto end = marks_.begin() + static_cast<std::ptrdiff_t>(count_);
    const auto found = std::find_if(marks_.begin(), end, [&](const LineMark& mark) {
        return mark.draggable() && mark.id == dragged.id && mark.leg == dragged.leg;
    });
    if (found == end) return;
    std::rotate(found, found + 1, end);
    LineMark& mark = marks_[count_ - 1];
    mark.dragged = true;
    TradingTexts::addDistance(mark.label, lines_, mark.id, mark.leg, mark.price, view_.trading->last(root_));
}

// From the highest down, each at the right end or left of those that it would meet.
void LineMarks::placeBadges() {
    const double right = closeMarkEdge(view_.width) + 2;
    const double lowest = PlotArea{view_.width, view_.height}.bottom() - badgeHeight;
    for (std::size_t i = count_; i-- > 0;) {
        LineMark& mark = marks_[i];
        const double resultWidth = std::exchange(mark.result, PointRect{}).width;
        if (!mark.drawn || lowest < 0) continue;
        const double text = TradingTexts::room(mark.label) + (resultWidth > 0 ? resultWidth + badgeMargin : 0);
        const double width = std::ceil(text) + 2 * badgeMargin + (mark.closable() ? closeMarkWidth : 0);
        PointRect box{right - width, std::clamp(mark.y - badgeHeight / 2, 0.0, lowest), width, badgeHeight};
        for (bool moved = true; moved;) {
            moved = false;
            for (std::size_t k = i + 1; k < count_; ++k) {
                if (!meet(box, marks_[k].badge)) continue;
                box.x = marks_[k].badge.x - badgeGap - width;
                moved = true;
            }
        }
        if (box.x < 0) continue;
        mark.badge = box;
        if (mark.closable()) mark.closeMark = {box.right() - closeMarkWidth, box.y, closeMarkWidth, badgeHeight};
        if (resultWidth > 0)
            mark.result = {mark.closeMark.x - badgeMargin - resultWidth, box.y, resultWidth, badgeHeight};
    }
}

void LineMarks::placeTags(const PointRect& taken) {
    const PlotArea plot{view_.width, view_.height};
    tags_.clear();
    tagged_.clear();
    if (!(plot.right() > 0)) return;
    tags_.add({.left = taken.x,
               .right = taken.right(),
               .height = taken.height,
               .wantedY = taken.y + taken.height / 2,
               .fixed = true});
    for (std::size_t i = count_; i-- > 0;) {
        const LineMark& mark = marks_[i];
        const bool shared = std::ranges::any_of(tagged_, [&](std::size_t k) { return marks_[k].price == mark.price; });
        if (!mark.drawn || shared) continue;
        tags_.add({.left = plot.right(),
                   .right = plot.width,
                   .height = badgeHeight,
                   .wantedY = mark.y,
                   .rank = mark.kind == LineMark::Kind::position ? LabelRank::entry : LabelRank::trading});
        tagged_.push_back(i);
    }
    tags_.arrange(0, plot.bottom());
    const auto placed = tags_.boxes().subspan(1);
    for (std::size_t i = 0; i < placed.size(); ++i)
        if (placed[i].opacity > 0)
            marks_[tagged_[i]].tag = {placed[i].left, placed[i].top(), PlotArea::priceAxisWidth, badgeHeight};
}

LineMarks::Hit LineMarks::hit(double x, double y) const {
    const PlotArea plot{view_.width, view_.height};
    if (!view_.trading || !(x >= 0 && y >= 0 && y < plot.bottom())) return {};
    const auto highest = [&](auto&& isHit) -> const LineMark* {
        for (std::size_t i = count_; i-- > 0;)
            if (isHit(marks_[i])) return &marks_[i];
        return nullptr;
    };
    const auto dragged = [](const LineMark* mark) { return mark && mark->draggable() ? Hit{mark, false} : Hit{}; };
    if (plot.onPriceAxis(x)) {
        const LineMark* tagged = highest([&](const LineMark& mark) { return mark.tag.contains(x, y); });
        if (!tagged) return {};
        return dragged(highest(
            [&](const LineMark& mark) { return mark.draggable() && mark.drawn && mark.price == tagged->price; }));
    }
    if (const LineMark* mark = highest([&](const LineMark& one) { return one.badge.contains(x, y); }))
        return mark->closeMark.contains(x, y) ? Hit{mark, true} : dragged(mark);
    return dragged(highest(
        [&](const LineMark& mark) { return mark.draggable() && mark.drawn && std::abs(mark.y - y) <= hitTolerance; }));
}

}  // namespace vmr
