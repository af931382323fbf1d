#include "workspace/DualLink.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "market/BarTimes.h"
#include "model/AppModel.h"

namespace vmr {

void DualLink::link(AppModel& primary, AppModel& secondary) {
    unlink();
    panes_[0].model = &primary;
    panes_[1].model = &secondary;
    leader_ = 0;
    for (const std::size_t pane : {0, 1}) {
        panes_[pane].chart = panes_[pane].model->chartNumber();
        watch(pane);
    }
    changed();
}

void DualLink::unlink() {
    if (!primary()) return;
    syncOn_ = false;
    refreshSyncMode();
    showCrosshairs();
    panes_ = {};
    changed();
}

void DualLink::watch(std::size_t pane) {
    AppModel& model = *panes_[pane].model;
    PaneCamera& camera = model.camera;
    auto& links = panes_[pane].links;
    links.push_back(camera.moved.connect([this, pane] { moved(pane); }));
    links.push_back(camera.released.connect([this] { settle(); }));
    links.push_back(camera.ending.connect([this] { unlink(); }));
    links.push_back(camera.pointer.changed.connect([this] { showCrosshairs(); }));
    links.push_back(model.channels.changed.connect([this, pane] { chartChanged(pane); }));
    links.push_back(model.bars.timeframe.changed.connect([this, pane] { join(pane); }));
    links.push_back(model.bars.chartVersionChanged.connect([this, pane] { barsChanged(pane); }));
}

std::optional<std::size_t> DualLink::indexOf(const AppModel& of) const {
    for (const std::size_t pane : {0, 1})
        if (panes_[pane].model == &of) return pane;
    return std::nullopt;
}

AppModel* DualLink::peer(const AppModel& of) const {
    const auto pane = indexOf(of);
    return pane ? panes_[1 - *pane].model : nullptr;
}

std::uint64_t DualLink::updates(const AppModel& of) const {
    const auto pane = indexOf(of);
    return pane ? panes_[*pane].updates : 0;
}

bool DualLink::crossSymbol() const {
    return primary() && primary()->channels->isOpen() && secondary()->channels->isOpen() &&
           primary()->currentSymbol() != secondary()->currentSymbol();
}

void DualLink::toggleSync(AppModel* from) {
    if (!primary()) return;
    syncOn_ = !syncOn_;
    for (Pane& pane : panes_) pane.joins = false;
    if (syncOn_) {
        AppModel& asked = from ? *from : *primary();
        leader_ = indexOf(asked).value_or(0);
        ledSince_ = asked.clock().monotonic();
        if (!asked.viewport()) join(leader_);
    }
    refreshSyncMode();
    if (syncOn_) {
        mirror();
        (from ? *from : *primary()).notices.flashToast("Sync");
    }
    showCrosshairs();
    changed();
}

void DualLink::refreshSyncMode() {
    if (!primary()) return;
    const bool pinned = syncOn_ && crossSymbol();
    for (const Pane& pane : panes_) pane.model->setPriceFracMode(pinned);
}

std::optional<ChartSpot> DualLink::crosshair(const AppModel& of) const {
    const AppModel* other = peer(of);
    return other && syncOn_ && !crossSymbol() ? other->camera.pointer.get() : std::nullopt;
}

void DualLink::showCrosshairs() {
    for (const Pane& pane : panes_) pane.model->camera.showPeerCrosshair(crosshair(*pane.model));
}

// Called while the pane records its frame.
void DualLink::moved(std::size_t pane) {
    if (!syncOn_) return;
    if (!panes_[pane].model->viewport()) return join(pane);
    noteHands();
    if (pane == leader_) {
        panes_[pane].joins = false;
        mirror();
    } else {
        settleSoon();
    }
}

void DualLink::chartChanged(std::size_t pane) {
    join(pane);
    showCrosshairs();
    changed();
}

// A chart that is new shows what the other one does, and not the other way round.
void DualLink::join(std::size_t pane) {
    if (!syncOn_) return;
    panes_[pane].joins = true;
    const AppModel& other = *panes_[1 - pane].model;
    leader_ = other.viewport() ? 1 - pane : pane;
    if (leader_ != pane) ledSince_ = other.clock().monotonic();
    refreshSyncMode();
}

// Before the new chart's first frame, so that none shows it elsewhere.
void DualLink::barsChanged(std::size_t pane) {
    Pane& own = panes_[pane];
    if (std::exchange(own.chart, own.model->chartNumber()) != own.model->chartNumber()) join(pane);
    if (!syncOn_ || !own.joins) return;
    noteHands();
    if (pane != leader_) mirror();
}

void DualLink::noteHands() {
    for (const std::size_t pane : {0, 1}) {
        const double at = panes_[pane].model->camera.handAt();
        if (at <= ledSince_) continue;
        leader_ = pane;
        ledSince_ = at;
    }
}

// The follower moved without being asked to: its bars changed, or the divider its width. It is recording its frame, so
// what moves it back comes later.
void DualLink::settleSoon() {
    if (panes_[follower()].model->camera.mirrored() || std::exchange(settlePosted_, true)) return;
    main_.post(whileThere_([this] {
        settlePosted_ = false;
        settle();
    }));
}

void DualLink::settle() {
    if (!syncOn_) return;
    noteHands();
    mirror(Edge::own);
}

void DualLink::mirror(Edge edge) {
    const auto from = panes_[leader_].model->camera.now(), to = panes_[follower()].model->camera.now();
    if (!from || !to || !from->camera.settled()) return;
    bool applied = mirrorTime(*from, *to, edge);
    if (crossSymbol())
        applied |= mirrorFrac(from->camera, to->camera);
    else
        applied |= mirrorPrice(from->camera, to->camera);
    panes_[follower()].joins = false;
    if (applied) ++panes_[follower()].updates;
}

// The leader's view in the follower's bars. Where that shows more or fewer bars than the follower can, its right edge
// stays, since the newest bars matter most.
DualLink::Reach DualLink::reachOf(const ChartCamera& from, const ChartCamera& to) const {
    const LiveBars &lead = panes_[leader_].model->bars, &follow = panes_[follower()].model->bars;
    const Camera& camera = from.camera;
    const auto held = static_cast<double>(to.bars);
    double right = 0, count = 0;
    if (crossSymbol()) {
        const double ratio = static_cast<double>(lead.timeframe) / follow.timeframe;
        right = held - (static_cast<double>(from.bars) - camera.firstVisible - camera.visibleCount) * ratio;
        count = camera.visibleCount * ratio;
    } else {
        const auto& bars = lead.displayCandles.get();
        const auto placeOf = [&](double place) {
            return placeOfTime(follow.displayCandles.get(), follow.timeframe, timeAtPlace(bars, lead.timeframe, place));
        };
        right = placeOf(camera.firstVisible + camera.visibleCount);
        count = right - placeOf(camera.firstVisible);
    }
    count = std::clamp(count, 10.0, std::max(held, 10.0));
    return {right - count, count};
}

// Where both ride the live edge, each does so with its own bars, which may come a moment before the other's.
bool DualLink::mirrorTime(const ChartCamera& from, const ChartCamera& to, Edge edge) {
    const Reach reach = reachOf(from, to);
    Camera next = to.camera;
    next.mirrorView(reach.first, reach.count, to.bars);
    const bool sameCount = std::abs(next.visibleCount - to.camera.visibleCount) <= timeTolerance;
    const bool ridesItsOwn = edge == Edge::own && from.camera.followLive && to.camera.followLive;
    if (sameCount && (ridesItsOwn || std::abs(next.firstVisible - to.camera.firstVisible) <= timeTolerance))
        return false;
    AppModel& model = *panes_[follower()].model;
    if (crossSymbol())
        model.applySyncTimeRel(static_cast<double>(to.bars) - reach.first - reach.count, reach.count);
    else
        model.applySyncTime(reach.first, reach.count);
    return true;
}

bool DualLink::mirrorPrice(const Camera& from, const Camera& to) {
    const double tolerance = std::min(priceTolerance, priceShareTolerance * (from.yMaxManual - from.yMinManual));
    if (!to.autoY && std::abs(from.yMinManual - to.yMinManual) <= tolerance &&
        std::abs(from.yMaxManual - to.yMaxManual) <= tolerance)
        return false;
    panes_[follower()].model->applySyncPrice(from.yMinManual, from.yMaxManual);
    return true;
}

bool DualLink::mirrorFrac(const Camera& from, const Camera& to) {
    if (!std::isfinite(from.priceLineFrac) || std::abs(from.priceLineFrac - to.priceLineFrac) <= fracTolerance)
        return false;
    panes_[follower()].model->applySyncFrac(from.priceLineFrac);
    return true;
}

}  // namespace vmr
