// Work that a pane does later.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "base/SerialQueue.h"

namespace vmr {

/// Hands out delayed work that ends silently when the pane is gone and, where it is the work of one chart, when another
/// chart is open by then. Counts the charts for that. Main thread.
class PaneWork {
 public:
    explicit PaneWork(MainLoop& main) : main_(main) {}
    PaneWork(const PaneWork&) = delete;

    /// The number of the opened chart; 0 before the first.
    std::uint64_t chart() const { return state_->chart; }
    /// Another chart, or the same anew: the former's work is nobody's any more.
    void openNext() { ++state_->chart; }
    /// The pane ends, and with it all its work.
    void end() { state_.reset(); }

    /// `work`, with any arguments, as long as the pane is there.
    template <class Work>
    auto whileThere(Work work) const {
        return [state = std::weak_ptr(state_), work = std::move(work)](auto&&... arguments) mutable {
            if (!state.expired()) work(std::forward<decltype(arguments)>(arguments)...);
        };
    }
    /// The same as long as the chart that is open now stays.
    template <class Work>
    auto ofChart(Work work) const {
        return [state = std::weak_ptr(state_), chart = chart(), work = std::move(work)](auto&&... arguments) mutable {
            const auto now = state.lock();
            if (now && now->chart == chart) work(std::forward<decltype(arguments)>(arguments)...);
        };
    }

    template <class Work>
    void after(double seconds, Work work) const {
        main_.after(seconds, whileThere(std::move(work)));
    }
    template <class Work>
    void afterOnChart(double seconds, Work work) const {
        main_.after(seconds, ofChart(std::move(work)));
    }
    MainLoop& main() const { return main_; }

 private:
    struct State {
        std::uint64_t chart = 0;
    };
    MainLoop& main_;
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace vmr
