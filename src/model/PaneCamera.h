// The camera of the chart that shows a pane: for whoever follows it, and what a linked pane does to it.
#pragma once

#include <cstdint>
#include <optional>

#include "base/Clock.h"
#include "base/Signal.h"
#include "chart/CameraPort.h"
#include "chart/ChartPort.h"
#include "model/PaneWork.h"

namespace vmr {

/// Without a chart nothing happens and nothing is known. Main thread.
class PaneCamera {
 public:
    /// Seconds that a pane counts as moved by its peer.
    static constexpr double mirroredFor = 0.05;

    /// Both must outlive it.
    PaneCamera(const Clock& clock, PaneWork& work) : clock_(clock), work_(work) {}

    /// The chart; null for none.
    ChartPort* port() const { return port_; }
    void setPort(ChartPort* port);
    /// The pane ends.
    void end() { ending(); }

    /// The camera moved in the frame that is being recorded, or another chart shows the pane.
    Signal<> moved;
    /// `mirrored` is over.
    Signal<> released;
    Signal<> ending;
    /// What the pointer is over in the chart.
    Observable<std::optional<ChartSpot>> pointer;

    /// As of the frame that is being recorded or comes next; nothing where the chart has no bars.
    std::optional<ChartCamera> now() const { return camera_ ? camera_->camera() : std::nullopt; }
    /// When a hand moved it last, monotonic seconds; below 0 for never.
    double handAt() const { return camera_ ? camera_->handAt() : -1; }
    /// Whether a linked pane moved it within the last `mirroredFor` seconds: what it publishes then is not its own.
    bool mirrored() const { return mirrored_; }

    // A linked pane's camera, in this pane's bars.
    void applySyncTime(double first, double count);
    void applySyncTimeRel(double gapRight, double count);
    void applySyncPrice(double minP, double maxP);
    /// Limited to 0.05 to 0.95.
    void applySyncFrac(double frac);
    /// On: the last close is pinned, at the middle unless it was pinned already. Off: the chart chooses the range.
    void setPriceFracMode(bool on);

    /// The chart's view as it stands; nothing without a chart.
    std::optional<ViewSetup> viewSetup() const { return camera_ ? std::optional(camera_->viewSetup()) : std::nullopt; }
    /// Shows a view as it was saved; `byHand` as in `CameraPort`.
    void applyView(const ViewSetup& setup, bool byHand);
    /// Counts the views that were applied.
    std::uint64_t viewChanges() const { return viewChanges_; }

    /// Where the linked pane's pointer is; nothing for nowhere.
    void showPeerCrosshair(const std::optional<ChartSpot>& spot);

 private:
    void mark();
    void releaseAfter(double seconds);

    const Clock& clock_;
    PaneWork& work_;
    ChartPort* port_ = nullptr;
    CameraPort* camera_ = nullptr;
    Connection following_;
    std::uint64_t viewChanges_ = 0;
    bool mirrored_ = false;
    double mirroredUntil_ = 0;  // monotonic
    std::optional<ChartSpot> peerSpot_;
};

}  // namespace vmr
