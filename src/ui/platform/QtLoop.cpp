#include "ui/platform/QtLoop.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <QTimerEvent>
#include <algorithm>
#include <cmath>

namespace vmr {

namespace {
const auto wakeEvent = static_cast<QEvent::Type>(QEvent::registerEventType());
}

QtLoop::QtLoop() = default;

QtLoop::~QtLoop() {
    // Tasks may own things whose end posts again: let go of them outside the lock.
    std::vector<Task> posted;
    std::unordered_map<TimerId, Timer> timers;
    const std::lock_guard lock(mutex_);
    posted.swap(posted_);
    timers.swap(timers_);
    order_.clear();
}

bool QtLoop::isCurrent() const { return QThread::currentThread() == thread(); }

// The caller holds the lock.
void QtLoop::wake() {
    if (woken_) return;
    woken_ = true;
    QCoreApplication::postEvent(this, new QEvent(wakeEvent));
}

void QtLoop::post(Task task) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(task));
    wake();
}

SerialQueue::TimerId QtLoop::after(double seconds, Task task) { return add(seconds, 0, std::move(task)); }

SerialQueue::TimerId QtLoop::every(double first, double period, Task task) {
    return add(first, period, std::move(task));
}

SerialQueue::TimerId QtLoop::add(double delay, double period, Task task) {
    const double due = clock_.monotonic() + std::max(delay, 0.0);
    const std::lock_guard lock(mutex_);
    const TimerId id = ++ids_;
    order_.emplace(Key{due, id}, id);
    timers_.emplace(id, Timer{due, period, std::move(task)});
    // Only its own thread may start a Qt timer; a wake-up lets that thread look at the earliest one.
    if (order_.begin()->second == id) wake();
    return id;
}

void QtLoop::cancel(TimerId timer) {
    Task dropped;  // destroyed after the lock is free
    const std::lock_guard lock(mutex_);
    const auto found = timers_.find(timer);
    if (found == timers_.end()) return;
    order_.erase(Key{found->second.due, timer});
    dropped = std::move(found->second.task);
    timers_.erase(found);
}

bool QtLoop::event(QEvent* event) {
    if (event->type() == wakeEvent) {
        runPosted();
        runDue();
        return true;
    }
    if (event->type() == QEvent::Timer && static_cast<QTimerEvent*>(event)->timerId() == qtTimer_) {
        runDue();
        return true;
    }
    return QObject::event(event);
}

void QtLoop::runPosted() {
    std::vector<Task> batch = std::move(running_);
    {
        const std::lock_guard lock(mutex_);
        woken_ = false;
        batch.swap(posted_);
    }
    for (auto& task : batch) {
        Task now = std::move(task);
        now();
    }
    batch.clear();
    running_ = std::move(batch);
}

void QtLoop::runDue() {
    const double now = clock_.monotonic();
    for (;;) {
        std::unique_lock lock(mutex_);
        if (order_.empty() || order_.begin()->first.first > now) break;
        const TimerId id = order_.begin()->second;
        order_.erase(order_.begin());
        auto found = timers_.find(id);
        const bool again = found->second.period > 0;
        Task task = again ? found->second.task : std::move(found->second.task);
        if (again) {
            // A late loop skips the beats that it missed, and stays on the beat.
            auto& timer = found->second;
            timer.due += timer.period * std::max(1.0, std::floor((now - timer.due) / timer.period) + 1);
            order_.emplace(Key{timer.due, id}, id);
        } else {
            timers_.erase(found);
        }
        lock.unlock();
        task();
    }
    arm();
}

void QtLoop::arm() {
    if (qtTimer_) killTimer(qtTimer_);
    qtTimer_ = 0;
    const std::lock_guard lock(mutex_);
    if (order_.empty()) return;
    const double wait = std::clamp((order_.begin()->first.first - clock_.monotonic()) * 1000.0, 0.0, 3600e3);
    qtTimer_ = startTimer(static_cast<int>(std::ceil(wait)), Qt::PreciseTimer);
}

}  // namespace vmr
