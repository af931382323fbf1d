#include "chart/OscStroke.h"

#include <algorithm>
#include <cmath>

namespace vmr {

void OscStroke::add(double x, double y, bool begins) {
    if (begins) end();
    const Spot point{x, y};
    if (!dense_) return addPoint(point);
    const double at = std::floor(x / width);
    if (hasColumn_ && column_.at == at) {
        const auto [low, high] = std::minmax(column_.first.y, column_.second.y);
        if (y < low) column_ = {at, column_.first.y == high ? column_.first : column_.second, point};
        if (y > high) column_ = {at, column_.first.y == low ? column_.first : column_.second, point};
        return;
    }
    flushColumn();
    column_ = {at, point, point};
    hasColumn_ = true;
}

void OscStroke::flushColumn() {
    if (!hasColumn_) return;
    hasColumn_ = false;
    addPoint(column_.first);
    if (column_.second.x != column_.first.x) addPoint(column_.second);
}

void OscStroke::addPoint(const Spot& point) {
    if (points_++ == 0) {
        pen_ = point;
        joins_ = false;
        cap(point);
    } else if (dense_) {
        lineTo(point);
    } else {
        curveTo(last_, {(last_.x + point.x) / 2, (last_.y + point.y) / 2});
    }
    last_ = point;
}

void OscStroke::end() {
    flushColumn();
    if (points_ > 1) {
        lineTo(last_);
        cap(last_);
    }
    points_ = 0;
}

// As many parts as keep the line within an eighth of a point of the curve.
void OscStroke::curveTo(const Spot& control, const Spot& to) {
    constexpr double tolerance = 0.125;
    constexpr int mostParts = 16;
    const Spot from = pen_;
    const double dx = to.x - from.x, dy = to.y - from.y;
    const double across = std::abs((control.x - from.x) * dy - (control.y - from.y) * dx);
    const double off = across / (2 * std::max(std::hypot(dx, dy), 1e-9));  // of the curve from its chord
    int parts = 1;
    while (parts < mostParts && off > tolerance * parts * parts) ++parts;
    makeRoom(static_cast<std::size_t>(parts) * segmentVertices);
    for (int i = 1; i < parts; ++i) {
        const double t = static_cast<double>(i) / parts, s = 1 - t;
        lineTo({s * s * from.x + 2 * s * t * control.x + t * t * to.x,
                s * s * from.y + 2 * s * t * control.y + t * t * to.y});
    }
    lineTo(to);
}

void OscStroke::makeRoom(std::size_t vertices) {
    if (used_ + vertices > room_.size()) room_.resize(std::max(2 * room_.size(), used_ + vertices));
}

void OscStroke::lineTo(const Spot& to) {
    if (to.x == pen_.x && to.y == pen_.y) return;
    makeRoom(segmentVertices);
    LineVertex* const segment = room_.data() + used_;
    used_ += segmentVertices;
    writeSegment(segment, static_cast<float>(pen_.x), static_cast<float>(pen_.y), static_cast<float>(to.x),
                 static_cast<float>(to.y), static_cast<float>(width / 2), color_);
    if (joins_) joinSegments(segment - segmentVertices, segment);
    joins_ = true;
    pen_ = to;
}

void OscStroke::cap(const Spot& at) {
    caps_.resize(caps_.size() + discVertices);
    writeDisc(&*(caps_.end() - discVertices), static_cast<float>(at.x), static_cast<float>(at.y),
              static_cast<float>(width / 2), capColor_);
}

}  // namespace vmr
