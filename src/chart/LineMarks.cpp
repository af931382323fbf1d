#include "chart/LineMarks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "chart/AxisScale.h"
#include "chart/Camera.h"
#include "gpu/PlotArea.h"

namespace vmr {

namespace {

// snprintf, because a string stream would allocate in every frame.
template <class... Args>
void print(std::string& out, const char* format, Args... args) {
    char text[96];
    std::snprintf(text, sizeof text, format, args...);
    out = text;
}

bool isNear(const LineMark& mark, double y) { return mark.drawn && std::abs(mark.y - y) <= LineMarks::hitTolerance; }

}  // namespace

double LineMarks::closeMarkEdge(double width) {
    return std::max(PlotArea{width, 0}.right() - Camera::maxBarW(width) - 80.0, 240.0);
}

bool LineMarks::closeMarkShown(double y, double height) {
    return y >= closeMarkHeight / 2 && y <= PlotArea{0, height}.bottom() - closeMarkHeight / 2;
}

void LineMarks::clear() {
    count_ = 0;
    trading_ = nullptr;
}

bool LineMarks::builtFor(const ChartTrading& trading, std::string_view root, const Viewport& viewport, double width,
                         double height) const {
    return trading_ == &trading && root_ == root && viewport_ == viewport && width_ == width && height_ == height;
}

void LineMarks::build(const ChartTrading& trading, const std::string& root, const Viewport& viewport, double width,
                      double height) {
    trading_ = &trading;
    root_ = root;
    viewport_ = viewport;
    width_ = width;
    height_ = height;
    count_ = 0;
    trading.lines(root, lines_);
    // last ones first; Clang 14 cannot compile std::views::reverse of this library
    for (auto at = lines_.legs.rbegin(); at != lines_.legs.rend(); ++at) {
        const ProjectedLeg& leg = *at;
        LineMark& mark = add(LineMark::Kind::leg, leg.id, leg.price, true);
        mark.leg = leg.leg;
        mark.label = leg.leg;
    }
    for (auto at = lines_.orders.rbegin(); at != lines_.orders.rend(); ++at) {
        const OrderLine& order = *at;
        LineMark& mark = add(LineMark::Kind::order, order.id, order.price, order.buy);
        print(mark.label, "%s %lld %.*s", order.buy ? "BUY" : "SELL", static_cast<long long>(order.qty),
              static_cast<int>(order.kind.size()), order.kind.data());
    }
    if (const auto& position = lines_.position) {
        const bool isLong = position->qty > 0;
        LineMark& mark = add(LineMark::Kind::position, {}, position->avg, isLong);
        print(mark.label, "%s %lld", isLong ? "LONG" : "SHORT", static_cast<long long>(std::abs(position->qty)));
    }
}

LineMark& LineMarks::add(LineMark::Kind kind, const Uuid& id, double price, bool buy) {
    if (count_ == marks_.size()) marks_.emplace_back();
    LineMark& mark = marks_[count_++];
    mark.kind = kind;
    mark.id = id;
    mark.leg = {};
    mark.buy = buy;
    mark.price = price;
    mark.y = AxisScale::yFor(viewport_, price, height_);
    mark.drawn = mark.y >= 0 && mark.y < PlotArea{width_, height_}.bottom();  // not for NaN
    mark.labelled = closeMarkShown(mark.y, height_);
    mark.closeMark = {};
    if (mark.labelled && mark.closable()) {
        mark.closeMark = {closeMarkEdge(width_) + 2 - closeMarkWidth, mark.y - closeMarkHeight / 2, closeMarkWidth,
                          closeMarkHeight};
    }
    return mark;
}

bool LineMarks::inPlot(double x, double y) const {
    const PlotArea plot{width_, height_};
    return x >= 0 && x < plot.right() && y >= 0 && y < plot.bottom();
}

LineMarks::Hit LineMarks::hit(double x, double y) const {
    if (!inPlot(x, y)) return {};
    const auto marks = list();
    for (auto at = marks.rbegin(); at != marks.rend(); ++at) {
        const LineMark& mark = *at;
        const bool near = isNear(mark, y);
        if (mark.closeMark.contains(x, y)) return near ? Hit{&mark, true} : Hit{};
        if (near && mark.draggable()) return {&mark, false};
    }
    return {};
}

const LineMark* LineMarks::draggableAt(double x, double y) const {
    if (!inPlot(x, y)) return nullptr;
    const auto marks = list();
    for (auto at = marks.rbegin(); at != marks.rend(); ++at)
        if (at->draggable() && isNear(*at, y)) return &*at;
    return nullptr;
}

}  // namespace vmr
