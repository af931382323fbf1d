// Work that a pane does later.
#pragma once

#include <cstdint>
#include <utility>

#include "base/SerialQueue.h"
#include "base/WeakTask.h"

namespace vmr {

/// Hands out delayed work that ends silently when the pane is gone or shut down and, where it is the work of one chart,
/// when another chart is open by then. Counts the charts for that. Main thread.
class PaneWork {
 public:
    explicit PaneWork(MainLoop& main) : main_(main) {}
    PaneWork(const PaneWork&) = delete;

    /// The number of the opened chart; 0 before the first.
    std::uint64_t chart() const { return chart_; }
    /// Another chart, or the same anew: the former's work is nobody's any more.
    void openNext() {
        ++chart_;
        ofChart_.cancel();
    }
    /// The pane ends, and with it all its work, that which is still to be handed out included.
    void end() {
        whileThere_.end();
        ofChart_.end();
    }

    /// `work`, with any arguments, as long as the pane is there.
    template <class Work>
    auto whileThere(Work work) const {
        return whileThere_(std::move(work));
    }
    /// The same as long as the chart that is open now stays.
    template <class Work>
    auto ofChart(Work work) const {
        return ofChart_(std::move(work));
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
    MainLoop& main_;
    std::uint64_t chart_ = 0;
    WeakTask whileThere_, ofChart_;
};

}  // namespace vmr
