// The two clocks of the program: market time, which can be set and scaled, and monotonic time, which cannot.
#pragma once

namespace vmr {

/// What time it is. Const calls are safe from any thread.
class Clock {
 public:
    virtual ~Clock() = default;

    /// Market time: seconds since 1970-01-01 UTC, with fraction. May run at another speed and from another moment.
    virtual double now() const = 0;

    /// Seconds that only ever grow, at real speed; for pacing, back-off, heartbeats, expiry. Never mix with `now()`.
    virtual double monotonic() const = 0;

    /// How many market seconds pass in one real second; above 0.
    virtual double speed() const = 0;
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

}  // namespace vmr
