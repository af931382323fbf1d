#include "model/PaneCamera.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vmr {

void PaneCamera::setPort(ChartPort* port) {
    port_ = port;
    camera_ = port ? port->cameraPort() : nullptr;
    following_.end();
    if (camera_) {
        following_ = camera_->viewportState()->changed.connect([this] { moved(); });
        camera_->showPeerCrosshair(peerSpot_);
    } else {
        pointer = std::nullopt;
    }
    moved();
}

// One timer, however often the peer moves.
void PaneCamera::mark() {
    mirroredUntil_ = clock_.monotonic() + mirroredFor;
    if (mirrored_) return;
    mirrored_ = true;
    releaseAfter(mirroredFor);
}

void PaneCamera::releaseAfter(double seconds) {
    work_.after(seconds, [this] {
        const double rest = mirroredUntil_ - clock_.monotonic();
        if (rest > 0) return releaseAfter(rest);
        mirrored_ = false;
        released();
    });
}

void PaneCamera::applySyncTime(double first, double count) {
    if (!camera_) return;
    mark();
    camera_->mirrorView(first, count);
}

void PaneCamera::applySyncTimeRel(double gapRight, double count) {
    if (!camera_) return;
    mark();
    camera_->mirrorViewRel(gapRight, count);
}

void PaneCamera::applySyncPrice(double minP, double maxP) {
    if (!camera_) return;
    mark();
    camera_->mirrorPrice(minP, maxP);
}

void PaneCamera::applySyncFrac(double frac) {
    if (!camera_ || !std::isfinite(frac)) return;
    mark();
    camera_->setPriceLineFrac(std::clamp(frac, 0.05, 0.95));
}

void PaneCamera::setPriceFracMode(bool on) {
    if (!camera_ || std::isfinite(camera_->priceLineFrac()) == on) return;
    // a pinned range is always the chart's own choice, and stays that when the pin goes
    camera_->setPriceLineFrac(on ? 0.5 : std::numeric_limits<double>::quiet_NaN());
}

void PaneCamera::applyView(const ViewSetup& setup, bool byHand) {
    if (camera_) camera_->applyView(setup, byHand);
    ++viewChanges_;
}

void PaneCamera::showPeerCrosshair(const std::optional<ChartSpot>& spot) {
    peerSpot_ = spot;
    if (camera_) camera_->showPeerCrosshair(spot);
}

}  // namespace vmr
