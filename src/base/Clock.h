// The two clocks of the program: market time, which can be set and scaled, and monotonic time, which cannot.
#pragma once

#include <functional>
#include <memory>

namespace vmr {

class SerialQueue;

/// What a person did to the clock: market time just before and just after. They differ only when it was set to another
/// moment, not for a pause, a resumption or another speed.
struct ClockSteering {
    double from = 0;  ///< seconds since 1970
    double to = 0;
    bool wentBack() const { return to < from; }
};

/// Keeps a subscription to a clock's steering alive; empty for a clock that nobody can steer.
using ClockWatch = std::shared_ptr<const void>;

/// What time it is. Const calls are safe from any thread.
class Clock {
 public:
    /// The greatest speed that a person may set: beyond it the market's steps are too wide to be watched.
    static constexpr double fastest = 10000;

    virtual ~Clock() = default;

    /// Market time: seconds since 1970-01-01 UTC, with fraction. It may run at another speed and from another moment,
    /// stand still while paused, and jump either way when it is set.
    virtual double now() const = 0;

    /// Seconds that only ever grow, at real speed; for pacing, back-off, heartbeats, expiry. Never mix with `now()`.
    virtual double monotonic() const = 0;

    /// How many market seconds pass in one real second while the clock runs; above 0. A paused clock gives the speed
    /// at which it will run on. It changes while the program runs: ask each time, and wait with a `MarketTimer`.
    virtual double speed() const = 0;

    /// Whether market time stands still.
    virtual bool paused() const { return false; }

    /// Posts `changed` to `queue` after each steering of the clock, until the last copy of what it returns is gone.
    /// Let it go on the queue itself: then `changed` never runs afterwards. The queue and the clock outlive it.
    [[nodiscard]] virtual ClockWatch onSteered(SerialQueue& /*queue*/,
                                               std::function<void(const ClockSteering&)> /*changed*/) const {
        return nullptr;
    }
};

/// The machine's clock, optionally started at another moment and run at another speed.
class SystemClock final : public Clock {
 public:
    /// Market time is the machine's own.
    SystemClock();

    /// Market time is `startSeconds` at construction and runs `speed` times as fast as real time (a speed that is not
    /// a finite number above 0 counts as 1).
    SystemClock(double startSeconds, double speed);

    double now() const override;
    double monotonic() const override;
    double speed() const override { return speed_; }

 private:
    double startWall_;
    double startMonotonic_;
    double speed_;
    bool machineTime_;
};

/// Real seconds since the process began; where the system cannot tell, since this program's own code ran first.
double secondsSinceProcessStart();

/// Seconds of processor time that the process has taken, all threads together; where the system does not tell
/// (Windows), real seconds since its start.
double processorSeconds();

}  // namespace vmr
