// Virtual time for tests: a clock and any number of queues that move only when the test says so.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <utility>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "base/SteerableClock.h"

namespace vmr::test {

class TestTime;

/// A queue in virtual time. Tasks of all queues of one `TestTime` run in one order: by time, then by posting.
class TestQueue final : public SerialQueue {
 public:
    explicit TestQueue(TestTime& time) : time_(time) {}
    void post(Task task) override;
    TimerId after(double seconds, Task task) override;
    TimerId every(double first, double period, Task task) override;
    void cancel(TimerId timer) override;
    bool isCurrent() const override;

 private:
    friend class TestTime;
    TestTime& time_;
};

/// The clock of the test. Market time runs at `speed` from `start`, and is steered as the program's clock is: whoever
/// watches hears of it when its queue runs next.
class TestTime final : public Clock {
 public:
    explicit TestTime(double start = 1781100000.0, double speed = 1.0) : market_(real_, start, speed) {}

    double now() const override { return market_.now(); }
    double monotonic() const override { return real_.monotonic(); }
    double speed() const override { return market_.speed(); }
    bool paused() const override { return market_.paused(); }
    ClockWatch onSteered(SerialQueue& queue, std::function<void(const ClockSteering&)> changed) const override {
        return market_.onSteered(queue, std::move(changed));
    }

    /// Runs everything that is due now, and what that posts, until nothing is due.
    void runUntilIdle() { runUntil(real_.seconds); }
    /// Moves real time forward by `seconds`, running what falls due in order.
    void advance(double seconds) { runUntil(real_.seconds + seconds); }

    /// None of these runs anything by itself.
    void setNow(double now) { market_.setNow(now); }
    void pause() { market_.pause(); }
    void resume() { market_.resume(); }
    void setSpeed(double speed) { market_.setSpeed(speed); }

 private:
    friend class TestQueue;
    struct RealTime final : Clock {
        double seconds = 0;
        double now() const override { return monotonic(); }
        double monotonic() const override { return 1000 + seconds; }
        double speed() const override { return 1; }
    };
    struct Entry {
        TestQueue* queue;
        Task task;
        double period;
        SerialQueue::TimerId id;
    };
    using Key = std::pair<double, std::uint64_t>;
    SerialQueue::TimerId add(TestQueue* queue, double delay, double period, Task task);
    void runUntil(double end);
    bool runNext(double end);

    RealTime real_;
    SteerableClock market_;
    std::uint64_t order_ = 0, ids_ = 0;
    std::map<Key, Entry> entries_;
    std::set<SerialQueue::TimerId> cancelled_;
    const TestQueue* current_ = nullptr;
};

}  // namespace vmr::test
