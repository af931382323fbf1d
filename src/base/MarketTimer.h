// Waiting in market time.
#pragma once

#include <memory>

#include "base/Clock.h"
#include "base/SerialQueue.h"

namespace vmr {

/// One wait on a queue, in market time. It follows the clock: it rests while the clock is paused and goes by the new
/// speed as soon as there is one. When market time is set forward past the awaited moment, the task runs once, soon;
/// when it is set back, the wait begins anew. While a task runs, `Clock::now()` is never before the moment it waited
/// for. Every call is made on the queue, and the timer ends there. A new wait replaces the old one.
class MarketTimer {
 public:
    /// Both must outlive the timer.
    MarketTimer(const Clock& clock, SerialQueue& queue);
    ~MarketTimer() { cancel(); }
    MarketTimer(const MarketTimer&) = delete;
    MarketTimer& operator=(const MarketTimer&) = delete;

    /// Once, at a moment of market time (seconds since 1970); soon, if it has passed. A clock that is set back waits
    /// for the same moment.
    void at(double moment, Task task);

    /// Once, `marketSeconds` from now (below 0 counts as 0). A clock that is set back waits for all of them again.
    void after(double marketSeconds, Task task);

    /// At whole multiples of `marketSeconds` (above 0) of market time, which are New York's full seconds and minutes
    /// for 1 and 60, but no more often than each `leastRealSeconds`: a fast clock leaves some out. Those missed while
    /// the queue was busy or the clock was set forward are made up for by one.
    void every(double marketSeconds, Task task, double leastRealSeconds = 0);

    /// Ends the wait; nothing of it runs afterwards.
    void cancel();

    /// Whether it waits, paused or not.
    bool active() const { return task_ != nullptr; }

 private:
    void wait(double due, Task task);
    void rest();
    void arm();
    void wake();
    void onSteered(const ClockSteering& steering);
    double nextMultiple(double now) const;

    const Clock& clock_;
    SerialQueue& queue_;
    std::shared_ptr<const Task> task_;  // nothing while there is no wait
    double due_ = 0;                    // market time
    double delay_ = -1;                 // of `after`; below 0 for the others
    double period_ = 0;                 // of `every`; 0 for the others
    double leastReal_ = 0;
    double lastRun_ = 0;  // monotonic; counts with `every` alone
    SerialQueue::TimerId timer_ = SerialQueue::noTimer;
    ClockWatch watch_;
};

}  // namespace vmr
