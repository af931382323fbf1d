// The camera that a chart shows, for whoever follows it.
#pragma once

#include <optional>

#include "base/Signal.h"
#include "market/Records.h"

namespace vmr {

/// A chart publishes here while it records a frame in which its camera moved. A plot that is recorded by the same pass
/// of the window and asks for its own frame in the notice shows the same camera in the same frame. Shared: it outlives
/// the chart that publishes, which then leaves nothing. Main thread.
class ViewportState {
 public:
    /// Nothing: no chart, or none that has shown bars.
    const std::optional<Viewport>& get() const { return viewport_; }

    /// Gives notice when it differs.
    void publish(const std::optional<Viewport>& viewport) {
        if (viewport == viewport_) return;
        viewport_ = viewport;
        changed();
    }

    Signal<> changed;

 private:
    std::optional<Viewport> viewport_;
};

}  // namespace vmr
