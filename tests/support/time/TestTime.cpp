#include "support/time/TestTime.h"

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
    const auto isIt = [timer](const auto& entry) { return entry.second.id == timer; };
    // otherwise a repeating timer cancelled by its own task
    if (std::erase_if(time_.entries_, isIt) == 0) time_.cancelled_.insert(timer);
}

SerialQueue::TimerId TestTime::add(TestQueue* queue, double delay, double period, Task task) {
    const auto id = ++ids_;
    entries_.emplace(Key{real_.seconds + std::max(delay, 0.0), ++order_}, Entry{queue, std::move(task), period, id});
    return id;
}

bool TestTime::runNext(double end) {
    if (entries_.empty() || entries_.begin()->first.first > end) return false;
    auto node = entries_.extract(entries_.begin());
    Entry entry = std::move(node.mapped());
    real_.seconds = std::max(real_.seconds, node.key().first);
    const TestQueue* outer = std::exchange(current_, entry.queue);
    entry.task();
    current_ = outer;
    if (entry.period > 0 && cancelled_.erase(entry.id) == 0)
        entries_.emplace(Key{node.key().first + entry.period, ++order_}, std::move(entry));
    return true;
}

void TestTime::runUntil(double end) {
    while (runNext(end)) {
    }
    real_.seconds = std::max(real_.seconds, end);
}

}  // namespace vmr::test
