#include "model/Overlays.h"

#include <algorithm>
#include <utility>

#include "market/MinuteChannel.h"
#include "perf/Perf.h"

namespace vmr {

namespace {
constexpr double fastest = 1.0 / 120;  // seconds between rebuilds
constexpr double costShare = 4;        // a rebuild takes at most a quarter of the time
}  // namespace

Overlays::Overlays(Surroundings surroundings)
    : overlaysChanged(surroundings.gate), at_(std::move(surroundings)), builder_(at_.session) {}

void Overlays::open() {
    OverlaysOfChart::operator=({});
    raiseSides();
    builder_.clear();
    ++revision_;
    overlaysChanged();
}

void Overlays::takeHfHistory(JsonView payload, RepairTally& tally) {
    forEachMinute(payload, hfHistoryMinutes, tally,
                  [this](std::int64_t minute, JsonView bar) { hfByMin[minute] = HfHistoryParser::hfCandle(bar); });
    keepNewest(hfByMin, hfHistoryMinutes.keep);
    raiseSides();
}

void Overlays::schedule() {
    if (!at_.rebuildInDrags && port_ && port_->interacting()) {
        pendingAfterDrag_ = true;
        return;
    }
    const double interval = std::max(costEMA_ * costShare, fastest);
    const double dt = at_.clock.monotonic() - lastBuild_;
    if (interval <= dt) {
        rebuild();
    } else if (!trailingScheduled) {
        trailingScheduled = true;
        at_.work.afterOnChart(interval - dt, [this] {
            trailingScheduled = false;
            rebuild();
        });
    }
}

void Overlays::interactionEnded() {
    if (std::exchange(pendingAfterDrag_, false)) schedule();
}

void Overlays::rebuild() {
    const double start = lastBuild_ = at_.clock.monotonic();
    const OverlayInput input = at_.input();
    if (!(input.settings == built_)) {
        built_ = input.settings;
        ++settingsRevision_;
    }
    if (builder_.update(input)) ++revision_;
    overlaysChanged();
    const double cost = at_.clock.monotonic() - start;
    if (at_.perf) at_.perf->time("OverlayRebuild", cost * 1000);
    costEMA_ = costEMA_ == 0 ? cost : cost * 0.2 + costEMA_ * 0.8;
}

}  // namespace vmr
