// What a pressed button moves, from the press to the release.
#pragma once

#include <cmath>
#include <string_view>
#include <utility>

#include "base/Uuid.h"
#include "chart/LineMarks.h"
#include "chart/PointerReports.h"

namespace vmr {

/// A press takes hold of the chart or of a line; the drag begins when the pointer has moved far enough, so that a click
/// with a trembling hand moves nothing, and then counts from the press. Points. Main thread.
class PointerDrag {
 public:
    enum class Holds : unsigned char { nothing, chart, time, order, leg };
    static constexpr double slack = 3;  ///< a hand's trembling

    void take(ChartPoint at) { *this = {Holds::chart, at}; }
    void takeTime(ChartPoint at) { *this = {Holds::time, at}; }
    void take(const LineMark& mark, ChartPoint at) {
        *this = {mark.kind == LineMark::Kind::order ? Holds::order : Holds::leg, at};
        line_ = {mark.id, mark.leg};
        price_ = mark.price;
        const double beside = at.y - mark.y;  // by its badge or tag, which may stand away from it
        if (std::abs(beside) > LineMarks::hitTolerance) beside_ = beside;
    }
    void release() { *this = {}; }

    /// The pointer moved. Tells whether the drag has begun.
    bool moved(ChartPoint to) {
        if (holds_ == Holds::nothing) return false;
        begun_ = begun_ || std::hypot(to.x - from_.x, to.y - from_.y) >= slack;
        if (begun_) at_ = to;
        return begun_;
    }
    /// How far it has moved since this was asked last.
    ChartPoint takeMovement() {
        const ChartPoint from = std::exchange(from_, at_);
        return {at_.x - from.x, at_.y - from.y};
    }

    Holds holds() const { return holds_; }
    bool holdsLine() const { return holds_ == Holds::order || holds_ == Holds::leg; }
    bool begun() const { return begun_; }
    /// What it holds where that is a line.
    const DraggedLine& line() const { return line_; }
    double price() const { return price_; }    ///< the line's, when it was taken
    double beside() const { return beside_; }  ///< how far below the line the pointer is; 0 for on it

    PointerDrag() = default;

 private:
    PointerDrag(Holds holds, ChartPoint at) : holds_(holds), from_(at), at_(at) {}

    Holds holds_ = Holds::nothing;
    ChartPoint from_, at_;
    bool begun_ = false;
    DraggedLine line_;
    double price_ = 0, beside_ = 0;
};

}  // namespace vmr
