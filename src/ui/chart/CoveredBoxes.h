// What the line of values and New York's clock cover of a chart, so that its own texts can make room.
#pragma once

#include <QRectF>
#include <array>
#include <cstddef>
#include <span>

#include "gpu/PointRect.h"

class QQuickItem;

namespace vmr {

/// A text's box only grows while its line has the same room, and by steps: a moved pointer changes what the line says,
/// and must not have the chart drawn again. Points from the chart's top left. Main thread.
class CoveredBoxes {
 public:
    /// `line` has placed its parts within `chart`. True when what it covers is not what it was.
    bool setLine(const QQuickItem& line, const QQuickItem& chart);
    /// Empty for none. True when it was another.
    bool setClock(const QRectF& box);
    /// The next line is of another chart.
    void startOver() { room_ = -1; }

    /// Clock first, then line by line where the line of values is shown. Valid until the next change.
    std::span<const PointRect> boxes(bool lineShown) const {
        const std::size_t first = boxes_[0].width > 0 ? 0 : 1;
        return std::span(boxes_).subspan(first, (lineShown ? lines_ : 0) + 1 - first);
    }

 private:
    static constexpr std::size_t mostLines = 12;  // a narrower chart has no room for other texts
    std::array<PointRect, 1 + mostLines> boxes_;  // the clock's comes first
    std::size_t lines_ = 0;
    double room_ = -1;
};

}  // namespace vmr
