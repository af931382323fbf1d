#include "ui/chart/CoveredBoxes.h"

#include <QQuickItem>
#include <algorithm>
#include <cmath>
#include <utility>

namespace vmr {

namespace {
constexpr double step = 16.0, leastHeight = 2.0;  // points
constexpr double spare = 48.0;                    // for values that are not known yet

double steppedUp(double width) { return std::ceil(width / step) * step; }
}  // namespace

bool CoveredBoxes::setLine(const QQuickItem& line, const QQuickItem& chart) {
    const auto before = boxes_;
    const std::size_t linesBefore = lines_;
    if (room_ != line.width()) lines_ = 0;
    room_ = line.width();
    const QPointF origin = line.mapToItem(&chart, QPointF());
    std::size_t count = 0;
    double top = -1;
    for (const QQuickItem* part : line.childItems()) {
        if (!part->isVisible() || part->height() < leastHeight) continue;  // the latter only ends a line
        if (count == 0 || part->y() > top) {
            if (count == mostLines) break;
            top = part->y();
            ++count;
            if (count > lines_) boxes_[++lines_] = {};
        }
        PointRect& box = boxes_[count];
        const double width = part->x() + part->width();
        if (width > box.width) box.width = std::min(steppedUp(width + spare), std::max(room_, width));
        box = {origin.x(), origin.y() + top, box.width, part->height()};
    }
    return lines_ != linesBefore || boxes_ != before;
}

bool CoveredBoxes::setClock(const QRectF& box) {
    const PointRect now{box.x(), box.y(), steppedUp(box.width()), box.height()};
    return std::exchange(boxes_[0], now) != now;
}

}  // namespace vmr
