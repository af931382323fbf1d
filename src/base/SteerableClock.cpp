#include "base/SteerableClock.h"

#include <cmath>
#include <utility>

#include "base/SerialQueue.h"

namespace vmr {

SteerableClock::SteerableClock() : machine_(system_) { line_.followsMachine = true; }

SteerableClock::SteerableClock(double startSeconds, double speed)
    : machine_(system_), line_(lineFrom(startSeconds, speed)) {}

SteerableClock::SteerableClock(const Clock& machine, double startSeconds, double speed)
    : machine_(machine), line_(lineFrom(startSeconds, speed)) {}

SteerableClock::Line SteerableClock::lineFrom(double startSeconds, double speed) const {
    return {startSeconds, machine_.monotonic(), std::isfinite(speed) && speed > 0 ? speed : 1, false, false};
}

double SteerableClock::nowOn(const Line& line) const {
    if (line.followsMachine) return machine_.now();
    return line.paused ? line.market : line.market + (machine_.monotonic() - line.real) * line.speed;
}

double SteerableClock::now() const {
    std::lock_guard lock(mutex_);
    return nowOn(line_);
}

double SteerableClock::speed() const {
    std::lock_guard lock(mutex_);
    return line_.speed;
}

bool SteerableClock::paused() const {
    std::lock_guard lock(mutex_);
    return line_.paused;
}

ClockWatch SteerableClock::onSteered(SerialQueue& queue, std::function<void(const ClockSteering&)> changed) const {
    auto handler = std::make_shared<const std::function<void(const ClockSteering&)>>(std::move(changed));
    std::lock_guard lock(listeners_->mutex);
    const auto place = listeners_->all.insert(listeners_->all.end(), {&queue, handler});
    // Once this has gone from the list, nothing is posted to the queue any more, which may then end.
    return {handler.get(), [handler, place, listeners = listeners_](const void*) mutable {
                {
                    std::lock_guard gone(listeners->mutex);
                    listeners->all.erase(place);
                }
                handler.reset();  // notices on their way to the queue find nothing to call
            }};
}

// Begins a new line where the old one stands now, lets `change` alter it, and tells everybody.
template <class Change>
void SteerableClock::steer(Change change) {
    ClockSteering steering;
    {
        std::lock_guard lock(mutex_);
        steering.from = nowOn(line_);
        line_.market = steering.from;
        line_.real = machine_.monotonic();
        line_.followsMachine = false;
        change(line_);
        steering.to = line_.market;
    }
    std::lock_guard lock(listeners_->mutex);
    for (const Listener& one : listeners_->all) {
        one.queue->post([changed = one.changed, steering] {
            if (const auto handler = changed.lock()) (*handler)(steering);
        });
    }
}

void SteerableClock::pause() {
    if (!paused()) steer([](Line& line) { line.paused = true; });
}

void SteerableClock::resume() {
    if (paused()) steer([](Line& line) { line.paused = false; });
}

bool SteerableClock::setSpeed(double wanted) {
    if (!(wanted > 0 && wanted <= fastest)) return false;
    if (wanted != speed()) steer([wanted](Line& line) { line.speed = wanted; });
    return true;
}

bool SteerableClock::setNow(double seconds) {
    if (!std::isfinite(seconds)) return false;
    steer([seconds](Line& line) { line.market = seconds; });
    return true;
}

}  // namespace vmr
