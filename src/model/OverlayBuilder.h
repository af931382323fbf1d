// All overlay series of a pane, kept from one rebuild to the next so that a tick costs little.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "chart/OverlaySet.h"
#include "model/OverlayLines.h"

namespace vmr {

/// What of a pane's settings the series depend on.
struct OverlaySettings {
    int timeframe = 1;       ///< minutes a display bar
    int sessionHHMM = 1800;  ///< session start, 930 for 09:30
    bool vwapEnabled = false, vwapNyEnabled = false, showSecondary = false, hfEnabled = false, vixEnabled = false;
    bool ema1Enabled = false, ema2Enabled = false;
    std::int64_t ema1Period = 0, ema2Period = 0;
    double hfFallbackScale = 0;
    double vixScale = 0;
    std::int64_t vixSmooth = 0;
    bool operator==(const OverlaySettings&) const = default;
};

/// What the series are made of. Bars are strictly ascending by time.
struct OverlayInput {
    const std::vector<Candle>& bars;          ///< display bars
    const std::vector<Candle>& secondaryRaw;  ///< one-minute bars of the paired instrument
    const std::vector<Candle>& vix;
    const HfByMin& hfByMin;
    const SRSessions& srSessions;
    /// To be raised with any change of `vix`, `hfByMin` or `srSessions`: the builder does not look at them otherwise.
    std::uint64_t sideRevision = 0;
    OverlaySettings settings;
};

/// Builds the series and finds out by itself which bars have changed. Main thread. The results are those of a
/// build from nothing to the last bit, whatever the order of updates.
class OverlayBuilder {
 public:
    explicit OverlayBuilder(SessionTime& session) : session_(session) {}

    /// Brings `series` up to date and tells whether any point of them may be another. Under 2 bars every series is
    /// empty and `vixSpot` stays.
    bool update(const OverlayInput& input);
    const OverlaySet& series() const { return series_; }

    /// Forgets everything, `vixSpot` excepted.
    void clear();

 private:
    std::size_t firstChangedBar(const OverlayInput& input) const;
    void keep(const OverlayInput& input, std::size_t from);
    void updateFlow(const OverlayInput& input, std::size_t from, bool sideChanged, SessionWalk& walk);

    SessionTime& session_;
    OverlaySet series_;
    // the input of the last update
    std::vector<Candle> bars_;
    std::uint64_t sideRevision_ = 0;
    OverlaySettings settings_;

    OverlayLines::VwapLine vwapMain_, vwapNY_;
    OverlayLines::SecondLine second_;
    OverlayLines::SessionOpens opens_;
    OverlayLines::HfLine hf_;
    OverlayLines::VixLine vix_;
};

}  // namespace vmr
