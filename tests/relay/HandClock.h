// A clock that stands where the test put it.
#pragma once

#include <atomic>

#include "base/Clock.h"

namespace vmr::test {

/// Any thread.
class HandClock final : public Clock {
 public:
    explicit HandClock(double now) : now_(now) {}
    double now() const override { return now_; }
    double monotonic() const override { return monotonic_; }
    double speed() const override { return 1; }
    void set(double now) { now_ = now; }
    void advance(double seconds) { now_ = now_ + seconds; }
    void age(double realSeconds) { monotonic_ = monotonic_ + realSeconds; }

 private:
    std::atomic<double> now_;
    std::atomic<double> monotonic_{1000};
};

}  // namespace vmr::test
