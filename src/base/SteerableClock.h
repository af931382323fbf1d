// Market time that a person steers while the program runs.
#pragma once

#include <list>
#include <mutex>

#include "base/Clock.h"

namespace vmr {

/// A clock that can be paused, sped up and set to another moment. Reading it is safe from any thread; steering is for
/// the main thread alone. Whoever waits for a moment of it uses a `MarketTimer`, which hears of every steering.
class SteerableClock final : public Clock {
 public:
    /// Market time is the machine's own and follows the machine's clock, also when that is put right, until it is
    /// steered for the first time.
    SteerableClock();

    /// Market time is `startSeconds` at construction and runs `speed` times as fast as real time (a speed that is not
    /// a finite number above 0 counts as 1).
    SteerableClock(double startSeconds, double speed);

    /// The same on another machine clock, which must outlive this one; for tests.
    SteerableClock(const Clock& machine, double startSeconds, double speed);

    double now() const override;
    double monotonic() const override { return machine_.monotonic(); }
    double speed() const override;
    bool paused() const override;
    ClockWatch onSteered(SerialQueue& queue, std::function<void(const ClockSteering&)> changed) const override;

    /// These tell nobody where they change nothing.
    void pause();
    void resume();
    /// False, and nothing is changed, unless the speed is a finite number above 0. A paused clock stays paused.
    bool setSpeed(double speed);
    /// Sets market time; the clock stays paused or runs on from there. False, and nothing is changed, for a moment that
    /// is not finite.
    bool setNow(double seconds);

 private:
    // Market time is a straight line: `market` at the real moment `real`.
    struct Line {
        double market = 0, real = 0, speed = 1;
        bool paused = false;
        bool followsMachine = false;
    };
    struct Listener {
        SerialQueue* queue;
        std::weak_ptr<const std::function<void(const ClockSteering&)>> changed;
    };
    struct Listeners {
        std::mutex mutex;
        std::list<Listener> all;
    };

    Line lineFrom(double startSeconds, double speed) const;
    double nowOn(const Line& line) const;
    template <class Change>
    void steer(Change change);

    const SystemClock system_;
    const Clock& machine_;
    mutable std::mutex mutex_;  // guards `line_`
    Line line_;
    const std::shared_ptr<Listeners> listeners_ = std::make_shared<Listeners>();
};

}  // namespace vmr
