// Tells where the pointer is at a pace that whoever draws it can keep up with.
#pragma once

#include <functional>
#include <limits>
#include <optional>

#include "base/Clock.h"
#include "base/SerialQueue.h"

namespace vmr {

/// Points from the chart's top left.
struct ChartPoint {
    double x = 0, y = 0;
    bool operator==(const ChartPoint&) const = default;
};

/// Reports at most one place in `pace` seconds. The last place of a movement is always reported, if later. Main thread.
class PointerReports {
 public:
    static constexpr double pace = 1.0 / 120.0;  ///< seconds

    /// Both must outlive it.
    PointerReports(const Clock& clock, MainLoop& main) : clock_(clock), main_(main) {}
    ~PointerReports() { main_.cancel(timer_); }
    PointerReports(const PointerReports&) = delete;
    PointerReports& operator=(const PointerReports&) = delete;

    std::function<void(std::optional<ChartPoint>)> onReport;  ///< nothing: the pointer left

    void moved(ChartPoint at);
    /// Reported at once.
    void left();

 private:
    void report(std::optional<ChartPoint> at);

    const Clock& clock_;
    MainLoop& main_;
    double reportedAt_ = -std::numeric_limits<double>::infinity();
    ChartPoint waiting_;  ///< while the timer runs
    SerialQueue::TimerId timer_ = SerialQueue::noTimer;
};

}  // namespace vmr
