#include "base/MarketTimer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vmr {

namespace {
// Real seconds. The machine's own clock may be put right and the machine may sleep: no wait relies on either for long.
constexpr double longestWait = 30;
}  // namespace

MarketTimer::MarketTimer(const Clock& clock, SerialQueue& queue)
    : clock_(clock),
      queue_(queue),
      watch_(clock.onSteered(queue, [this](const ClockSteering& steering) { onSteered(steering); })) {}

void MarketTimer::at(double moment, Task task) {
    cancel();
    wait(moment, std::move(task));
}

void MarketTimer::after(double marketSeconds, Task task) {
    cancel();
    delay_ = std::max(marketSeconds, 0.0);
    wait(clock_.now() + delay_, std::move(task));
}

void MarketTimer::every(double marketSeconds, Task task, double leastRealSeconds) {
    cancel();
    period_ = marketSeconds;
    leastReal_ = leastRealSeconds;
    lastRun_ = -std::numeric_limits<double>::infinity();
    wait(nextMultiple(clock_.now()), std::move(task));
}

void MarketTimer::cancel() {
    task_.reset();
    delay_ = -1;
    period_ = 0;
    rest();
}

void MarketTimer::rest() {
    if (timer_ != SerialQueue::noTimer) queue_.cancel(std::exchange(timer_, SerialQueue::noTimer));
}

void MarketTimer::wait(double due, Task task) {
    task_ = std::make_shared<const Task>(std::move(task));
    due_ = due;
    arm();
}

void MarketTimer::arm() {
    rest();
    if (clock_.paused() && clock_.now() < due_) return;
    const double real = (due_ - clock_.now()) / clock_.speed();
    timer_ = queue_.after(real > 0 ? std::min(real, longestWait) : 0, [this] { wake(); });
}

void MarketTimer::wake() {
    timer_ = SerialQueue::noTimer;
    if (const double now = clock_.now(); now < due_) {
        // sooner than thought when the machine's own clock was put back
        if (period_ > 0) due_ = std::min(due_, nextMultiple(now));
        return arm();
    }
    const auto task = task_;  // the task may end the timer
    if (period_ > 0) {
        lastRun_ = clock_.monotonic();
        due_ = nextMultiple(clock_.now());
        arm();
    } else {
        cancel();
    }
    (*task)();
}

void MarketTimer::onSteered(const ClockSteering& steering) {
    if (!task_) return;
    if (steering.wentBack() && delay_ >= 0) due_ = steering.to + delay_;
    if (steering.wentBack() && period_ > 0) due_ = nextMultiple(steering.to);
    // another speed leaves out others of the multiples
    if (const double now = clock_.now(); period_ > 0 && now < due_) due_ = nextMultiple(now);
    arm();
}

// The first multiple after `now` that keeps the distance to the last run.
double MarketTimer::nextMultiple(double now) const {
    const double rest = std::max(leastReal_ - (clock_.monotonic() - lastRun_), 0.0);
    const double next = (std::floor(now / period_) + 1) * period_;
    const double allowed = std::ceil((now + rest * clock_.speed()) / period_) * period_;
    const double due = std::max(next, allowed);
    return due > now ? due : due + period_;
}

}  // namespace vmr
