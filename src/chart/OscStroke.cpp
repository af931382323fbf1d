#include "chart/OscStroke.h"

#include <algorithm>
#include <cmath>

namespace vmr {

void OscStroke::clear() {
    spots_ = 0;
    lines_.clear();
    caps_.clear();
}

void OscStroke::add(double x, double y, bool begins) {
    if (begins) end();
    const Spot point{x, y};
    if (points_++ == 0) {
        lines_.push_back({color_, spots_});
        addSpot(point);
        cap(point);
    } else if (dense_) {
        lineTo(point);
    } else {
        curveTo(last_, {(last_.x + point.x) / 2, (last_.y + point.y) / 2});
    }
    last_ = point;
}

void OscStroke::end() {
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
    for (int i = 1; i < parts; ++i) {
        const double t = static_cast<double>(i) / parts, s = 1 - t;
        lineTo({s * s * from.x + 2 * s * t * control.x + t * t * to.x,
                s * s * from.y + 2 * s * t * control.y + t * t * to.y});
    }
    lineTo(to);
}

void OscStroke::lineTo(const Spot& to) {
    if (to.x != pen_.x || to.y != pen_.y) addSpot(to);
}

void OscStroke::addSpot(const Spot& spot) {
    if (spots_ == room_.size()) room_.resize(2 * spots_ + 256);
    room_[spots_++] = {static_cast<float>(spot.x), static_cast<float>(spot.y)};
    pen_ = spot;
}

void OscStroke::write(LineVertex* out) const {
    constexpr auto halfWidth = static_cast<float>(width / 2);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const std::size_t end = i + 1 < lines_.size() ? lines_[i + 1].first : spots_;
        bool joins = false;
        for (std::size_t k = lines_[i].first + 1; k < end; ++k, joins = true) {
            const auto &a = room_[k - 1], &b = room_[k];
            LineVertex* const segment = out;
            out = writeSegment(segment, a[0], a[1], b[0], b[1], halfWidth, lines_[i].color);
            if (joins) joinSegments(segment - segmentVertices, segment);
        }
    }
}

void OscStroke::cap(const Spot& at) {
    caps_.resize(caps_.size() + discVertices);
    writeDisc(&*(caps_.end() - discVertices), static_cast<float>(at.x), static_cast<float>(at.y),
              static_cast<float>(width / 2), capColor_);
}

}  // namespace vmr
