// What a pane sees of its chart's camera, and may do to it: for a linked pane, and for templates.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "chart/Camera.h"
#include "chart/ViewportState.h"
#include "market/BarTimes.h"

namespace vmr {

/// A chart's camera as of now.
struct ChartCamera {
    Camera camera;
    std::size_t bars = 0;  ///< that the chart holds
};

/// Main thread. What moves the camera shows in the frame that the window is making, or in the next one.
class CameraPort {
 public:
    virtual ~CameraPort() = default;
    /// The camera of each frame, published while it is recorded.
    virtual const std::shared_ptr<ViewportState>& viewportState() const = 0;
    /// The camera as the next frame will show it, or the one that is being recorded does: the chart has read what its
    /// pane shows. Nothing where it has no bars.
    virtual std::optional<ChartCamera> camera() = 0;
    /// When a hand moved it last, monotonic seconds; below 0 for never.
    virtual double handAt() const = 0;

    virtual void mirrorView(double first, double count) = 0;
    virtual void mirrorViewRel(double gapRight, double count) = 0;
    virtual void mirrorPrice(double minP, double maxP) = 0;
    virtual double priceLineFrac() const = 0;
    /// Finite pins the last close at this share of the height; NaN ends it.
    virtual void setPriceLineFrac(double frac) = 0;

    /// The view as it stands, also where there are no bars.
    virtual ViewSetup viewSetup() = 0;
    /// Shows a view as it was saved, with its bars at the right end of those that the chart holds now. `byHand`: a
    /// person asked for it just now.
    virtual void applyView(const ViewSetup& setup, bool byHand) = 0;

    /// Shows where the linked pane's pointer is; nothing hides it. Costs no frame.
    virtual void showPeerCrosshair(const std::optional<ChartSpot>& spot) = 0;
};

}  // namespace vmr
