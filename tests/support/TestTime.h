// Virtual time for tests: a clock and any number of queues that move only when the test says so.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <utility>

#include "base/Clock.h"
#include "base/SerialQueue.h"

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

/// The clock of the test. Market time runs at `speed` from `start`.
class TestTime final : public Clock {
 public:
    explicit TestTime(double start = 1781100000.0, double speed = 1.0) : start_(start), speed_(speed) {}

    double now() const override { return start_ + monotonic_ * speed_; }
    double monotonic() const override { return monotonic_ + monotonicBase; }
    double speed() const override { return speed_; }

    /// Runs everything that is due now, and what that posts, until nothing is due.
    void runUntilIdle() { runUntil(monotonic_); }
    /// Moves time forward by `seconds`, running what falls due in order.
    void advance(double seconds) { runUntil(monotonic_ + seconds); }
    /// Jumps market time without running anything.
    void setNow(double now) { start_ = now - monotonic_ * speed_; }

 private:
    friend class TestQueue;
    static constexpr double monotonicBase = 1000.0;
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

    double start_, speed_, monotonic_ = 0;
    std::uint64_t order_ = 0, ids_ = 0;
    std::map<Key, Entry> entries_;
    std::set<SerialQueue::TimerId> cancelled_;
    const TestQueue* current_ = nullptr;
};

}  // namespace vmr::test
