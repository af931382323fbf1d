// When the overlay series of a pane are rebuilt: behind a throttle that adapts to what a rebuild costs, and not in a
// drag.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>

#include "base/Clock.h"
#include "base/Json.h"
#include "base/Signal.h"
#include "chart/ChartPort.h"
#include "market/HfHistoryParser.h"
#include "market/RepairTally.h"
#include "model/OverlayBuilder.h"
#include "model/PaneWork.h"

namespace vmr {

class Perf;

/// What of it belongs to one chart, beside the series.
struct OverlaysOfChart {
    HfByMin hfByMin;  ///< newest 5000 minutes
    bool trailingScheduled = false;
};

/// Main thread.
class Overlays : public OverlaysOfChart {
 public:
    struct Surroundings {
        const Clock& clock;
        PaneWork& work;
        SessionTime& session;
        /// Of what the series are to be made; what it refers to stays until the rebuild has ended.
        std::function<OverlayInput()> input;
        NoticeGate* gate = nullptr;
        Perf* perf = nullptr;
        bool rebuildInDrags = false;
    };
    /// What it is given must outlive it.
    explicit Overlays(Surroundings surroundings);

    /// Begins another chart, without flow and series.
    void open();

    /// The series as of the last rebuild.
    const OverlaySet& series() const { return builder_.series(); }
    Signal<> overlaysChanged;
    /// Raised with each rebuild after which a point may be another.
    std::uint64_t revision() const { return revision_; }
    /// Raised with each rebuild that follows other settings than the one before.
    std::uint64_t settingsRevision() const { return settingsRevision_; }

    /// To be asked whether a drag is under way; null for no chart.
    void setChartPort(const ChartPort* port) { port_ = port; }

    /// The history of HF flow.
    void takeHfHistory(JsonView payload, RepairTally& tally);
    /// The volatility index or the sessions changed: what is kept of them is read anew.
    void raiseSides() { ++sideRevision_; }
    std::uint64_t sideRevision() const { return sideRevision_; }

    /// Rebuilds now, or soon when the last rebuild was a moment ago, or after the drag.
    void schedule();
    /// Once when a drag ends: runs the rebuild that it held back.
    void interactionEnded();

 private:
    void rebuild();

    Surroundings at_;
    OverlayBuilder builder_;
    const ChartPort* port_ = nullptr;
    std::uint64_t sideRevision_ = 0, revision_ = 0, settingsRevision_ = 0;
    OverlaySettings built_;                                        // that the series follow
    double costEMA_ = 0;                                           // seconds
    double lastBuild_ = -std::numeric_limits<double>::infinity();  // monotonic
    bool pendingAfterDrag_ = false;
};

}  // namespace vmr
