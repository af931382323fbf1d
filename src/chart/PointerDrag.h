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
        id_ = mark.id;
        leg_ = mark.leg;
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
    const Uuid& id() const { return id_; }         ///< of a line's order
    std::string_view leg() const { return leg_; }  ///< "SL" or "TP", of a leg

    PointerDrag() = default;

 private:
    PointerDrag(Holds holds, ChartPoint at) : holds_(holds), from_(at), at_(at) {}

    Holds holds_ = Holds::nothing;
    ChartPoint from_, at_;
    bool begun_ = false;
    Uuid id_;
    std::string_view leg_;
};

}  // namespace vmr
