#include "chart/FrameNotices.h"

#include <algorithm>

namespace vmr {

FrameNotices::FrameNotices(LaterCall::Post post, const OnViewport& onViewport, const OnBarLabels& onBarLabels)
    : onViewport_(onViewport),
      onBarLabels_(onBarLabels),
      viewportLater_(post,
                     [this] {
                         if (onViewport_) onViewport_(viewport_.first, viewport_.count, viewport_.minP, viewport_.maxP);
                     }),
      labelsLater_(std::move(post), [this] {
          if (onBarLabels_) onBarLabels_(lastBarLabels_);
      }) {}

void FrameNotices::cameraMoved(const Viewport& viewport) {
    if (!onViewport_) return;
    viewport_ = viewport;
    viewportLater_.ask();
}

void FrameNotices::labels(std::span<const BarLabel> labels, bool animating, double now) {
    constexpr double leastApart = 1.0 / 120.0;  // seconds, while something moves
    if (!onBarLabels_ || std::ranges::equal(labels, lastBarLabels_)) return;
    if (animating && !(now - lastLabelPublish_ > leastApart)) return;
    lastLabelPublish_ = now;
    lastBarLabels_.assign(labels.begin(), labels.end());
    labelsLater_.ask();
}

}  // namespace vmr
