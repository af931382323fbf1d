#include "support/TestTime.h"

#include <algorithm>

namespace vmr::test {

void TestQueue::post(Task task) { time_.add(this, 0, 0, std::move(task)); }
SerialQueue::TimerId TestQueue::after(double seconds, Task task) {
    return time_.add(this, seconds, 0, std::move(task));
}
SerialQueue::TimerId TestQueue::every(double first, double period, Task task) {
    return time_.add(this, first, period, std::move(task));
}
bool TestQueue::isCurrent() const { return time_.current_ == this; }

void TestQueue::cancel(TimerId timer) {
    if (auto found = time_.timers_.find(timer); found != time_.timers_.end()) {
        time_.entries_.erase(found->second);
        time_.timers_.erase(found);
    } else {
        time_.cancelled_.insert(timer);  // a repeating timer cancelled by its own task
    }
}

SerialQueue::TimerId TestTime::add(TestQueue* queue, double delay, double period, Task task) {
    const auto id = ++ids_;
    const Key key{monotonic_ + std::max(delay, 0.0), ++order_};
    entries_.emplace(key, Entry{queue, std::move(task), period, id});
    timers_.emplace(id, key);
    return id;
}

bool TestTime::runNext(double end) {
    if (entries_.empty() || entries_.begin()->first.first > end) return false;
    auto node = entries_.extract(entries_.begin());
    Entry entry = std::move(node.mapped());
    timers_.erase(entry.id);
    monotonic_ = std::max(monotonic_, node.key().first);
    const TestQueue* outer = std::exchange(current_, entry.queue);
    entry.task();
    current_ = outer;
    if (entry.period > 0 && cancelled_.erase(entry.id) == 0) {
        const Key key{node.key().first + entry.period, ++order_};
        const auto id = entry.id;
        entries_.emplace(key, std::move(entry));
        timers_.emplace(id, key);
    }
    return true;
}

void TestTime::runUntil(double end) {
    while (runNext(end)) {
    }
    monotonic_ = std::max(monotonic_, end);
}

bool TestTime::advanceUntil(const std::function<bool()>& done, double limit) {
    const double end = monotonic_ + limit;
    while (!done()) {
        if (!runNext(end)) return done();
    }
    return true;
}

}  // namespace vmr::test
