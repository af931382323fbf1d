// What a frame tells outside of it: camera and labels, in a later turn.
#pragma once

#include <functional>
#include <limits>
#include <span>
#include <vector>

#include "chart/LaterCall.h"
#include "market/Records.h"

namespace vmr {

/// Posts nothing while nobody listens. Main thread.
class FrameNotices {
 public:
    using OnViewport = std::function<void(double first, double count, double minP, double maxP)>;
    using OnBarLabels = std::function<void(const std::vector<BarLabel>&)>;

    /// The handlers may be set at any time and must outlive this.
    FrameNotices(LaterCall::Post post, const OnViewport& onViewport, const OnBarLabels& onBarLabels);
    FrameNotices(const FrameNotices&) = delete;
    FrameNotices& operator=(const FrameNotices&) = delete;

    /// The frame moved the camera.
    void cameraMoved(const Viewport& viewport);
    /// The labels of the frame of `now` (seconds). Told when they are others; while something moves, at most 120 times
    /// a second.
    void labels(std::span<const BarLabel> labels, bool animating, double now);

 private:
    const OnViewport& onViewport_;
    const OnBarLabels& onBarLabels_;
    LaterCall viewportLater_, labelsLater_;
    Viewport viewport_;
    double lastLabelPublish_ = -std::numeric_limits<double>::infinity();
    std::vector<BarLabel> lastBarLabels_;
};

}  // namespace vmr
