// Delayed work that is dropped when its owner has gone.
#pragma once

#include <memory>
#include <utility>

namespace vmr {

/// A member of a class that hands out tasks which use `this`: `queue.after(1, weak_([this] { ... }))`. A task so made
/// does nothing once the owner is gone. Tasks run, and the owner ends, on one thread. Declare it last, so that it goes
/// first.
class WeakTask {
 public:
    WeakTask() = default;
    WeakTask(const WeakTask&) = delete;
    WeakTask& operator=(const WeakTask&) = delete;

    /// `work`, with any arguments, as long as the owner is there.
    template <class Work>
    [[nodiscard]] auto operator()(Work work) const {
        return [alive = std::weak_ptr<const char>(alive_), work = std::move(work)](auto&&... arguments) mutable {
            if (!alive.expired()) work(std::forward<decltype(arguments)>(arguments)...);
        };
    }

    /// Drops all tasks made so far, as if the owner had gone.
    void cancel() {
        if (alive_) alive_ = std::make_shared<const char>();
    }
    /// Drops these and all that are still to be made.
    void end() { alive_.reset(); }

 private:
    std::shared_ptr<const char> alive_ = std::make_shared<const char>();
};

}  // namespace vmr
