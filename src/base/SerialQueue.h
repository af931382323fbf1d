// The seam to event loops: tasks run one at a time, in order, on one thread.
#pragma once

#include <cstdint>
#include <functional>

namespace vmr {

using Task = std::function<void()>;

/// Runs tasks one after the other. Every operation may be called from any thread; times are real seconds and never
/// scale with market time. Tasks that are still queued when the queue ends are destroyed without running.
class SerialQueue {
 public:
    using TimerId = std::uint64_t;
    static constexpr TimerId noTimer = 0;

    virtual ~SerialQueue() = default;

    /// Runs `task` after everything posted before it. Never runs it inside the call.
    virtual void post(Task task) = 0;

    /// Runs `task` once, `seconds` from now (below 0 counts as 0).
    virtual TimerId after(double seconds, Task task) = 0;

    /// Runs `task` `first` seconds from now and then every `period` seconds (above 0) until cancelled.
    virtual TimerId every(double first, double period, Task task) = 0;

    /// Ends a timer; an unknown or finished one is ignored. Called on the queue itself, the task never runs again.
    virtual void cancel(TimerId timer) = 0;

    /// Whether the caller runs on this queue.
    virtual bool isCurrent() const = 0;
};

/// The queue of the main thread; the pane models, the chart and the simulator live on it.
using MainLoop = SerialQueue;

}  // namespace vmr
