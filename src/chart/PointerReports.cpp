#include "chart/PointerReports.h"

#include <utility>

namespace vmr {

void PointerReports::moved(ChartPoint at) {
    const double rest = reportedAt_ + pace - clock_.monotonic();
    if (rest <= 0) return report(at);
    waiting_ = at;
    if (timer_ == SerialQueue::noTimer) timer_ = main_.after(rest, [this] { report(waiting_); });
}

void PointerReports::left() { report(std::nullopt); }

void PointerReports::report(std::optional<ChartPoint> at) {
    main_.cancel(std::exchange(timer_, SerialQueue::noTimer));
    reportedAt_ = clock_.monotonic();
    if (onReport) onReport(at);
}

}  // namespace vmr
