// The main loop over Qt's event loop.
#pragma once

#include <QObject>
#include <map>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/Clock.h"
#include "base/SerialQueue.h"

namespace vmr {

/// A `SerialQueue` on the thread that made it, which must run Qt's event loop. Timers are precise to a millisecond and
/// never early. Tasks posted by a task run after input that is already waiting.
class QtLoop final : public QObject, public SerialQueue {
 public:
    QtLoop();
    ~QtLoop() override;

    void post(Task task) override;
    TimerId after(double seconds, Task task) override;
    TimerId every(double first, double period, Task task) override;
    void cancel(TimerId timer) override;
    bool isCurrent() const override;

 protected:
    bool event(QEvent* event) override;

 private:
    using Key = std::pair<double, TimerId>;  // monotonic seconds due, then order of making
    struct Timer {
        double due = 0;
        double period = 0;
        Task task;
    };
    TimerId add(double delay, double period, Task task);
    void wake();
    void runPosted();
    void runDue();
    void arm();

    SystemClock clock_;
    std::mutex mutex_;  // guards posted_, woken_, timers_, order_, ids_
    std::vector<Task> posted_;
    bool woken_ = false;
    std::unordered_map<TimerId, Timer> timers_;
    std::map<Key, TimerId> order_;
    TimerId ids_ = noTimer;
    std::vector<Task> running_;  // main thread only; keeps its memory
    int qtTimer_ = 0;
};

}  // namespace vmr
