#include "model/OverlayBuilder.h"

#include <cstring>

namespace vmr {

namespace {
constexpr int stockOpen = 930;

void clearSeries(OverlaySet& series) {
    series.vwapMain.clear();
    series.vwapNY.clear();
    series.vixLine.clear();
    series.ema1.clear();
    series.ema2.clear();
    series.hfLine.clear();
    series.secondCandles.clear();
}

bool isEmpty(const OverlaySet& series) {
    return series.vwapMain.empty() && series.vwapNY.empty() && series.vixLine.empty() && series.ema1.empty() &&
           series.ema2.empty() && series.hfLine.empty() && series.secondCandles.empty();
}
}  // namespace

void OverlayBuilder::clear() {
    clearSeries(series_);
    bars_.clear();
}

// Bars are compared as bytes: a bar whose number is NaN counts as unchanged, and none can change unseen.
std::size_t OverlayBuilder::firstChangedBar(const OverlayInput& input) const {
    static_assert(sizeof(Candle) == sizeof(std::int64_t) + 5 * sizeof(double));
    const auto same = [&](std::size_t first, std::size_t count) {
        return std::memcmp(&bars_[first], &input.bars[first], count * sizeof(Candle)) == 0;
    };
    const std::size_t before = bars_.size();
    if (before < 2 || input.bars.size() < before || settings_ != input.settings || !same(0, before - 1)) return 0;
    return same(before - 1, 1) ? before : before - 1;
}

void OverlayBuilder::keep(const OverlayInput& input, std::size_t from) {
    bars_.resize(from);
    bars_.insert(bars_.end(), input.bars.begin() + static_cast<std::ptrdiff_t>(from), input.bars.end());
    sideRevision_ = input.sideRevision;
    settings_ = input.settings;
}

bool OverlayBuilder::update(const OverlayInput& input) {
    const std::vector<Candle>& bars = input.bars;
    const OverlaySettings& on = input.settings;
    const bool hadPoints = !isEmpty(series_);
    if (bars.size() < 2) {
        clear();
        return hadPoints;
    }
    const std::size_t from = firstChangedBar(input);
    const bool sideChanged = from == 0 || sideRevision_ != input.sideRevision;
    keep(input, from);
    SessionWalk walk(session_, on.sessionHHMM);

    // a series that is off stays empty until a changed setting starts it anew
    if (from == 0) clearSeries(series_);
    const std::int64_t last = bars.back().time;
    if (on.vwapEnabled) vwapMain_.update(bars, from, walk.open(last), series_.vwapMain);
    if (on.vwapNyEnabled && OverlayLines::showsNyVWAP(last, on.sessionHHMM, session_)) {
        const std::size_t start = series_.vwapNY.empty() ? 0 : from;
        vwapNY_.update(bars, start, SessionWalk(session_, stockOpen).open(last), series_.vwapNY);
    } else {
        series_.vwapNY.clear();
    }
    if (on.showSecondary) second_.update(bars, input.secondaryRaw, on.timeframe, walk, series_.secondCandles);
    updateFlow(input, from, sideChanged, walk);
    if (on.ema1Enabled) OverlayLines::updateEMA(bars, from, on.ema1Period, series_.ema1);
    if (on.ema2Enabled) OverlayLines::updateEMA(bars, from, on.ema2Period, series_.ema2);
    series_.anchor = {last, static_cast<double>(bars.size() - 1)};
    series_.vixSpot = input.vix.empty() ? std::nullopt : std::optional(input.vix.back().close);
    const bool sameInput = from == bars.size() && !sideChanged && !on.showSecondary;
    return !sameInput && (hadPoints || !isEmpty(series_));
}

// The two lines that lie on the sessions' opens.
void OverlayBuilder::updateFlow(const OverlayInput& input, std::size_t from, bool sideChanged, SessionWalk& walk) {
    const OverlaySettings& on = input.settings;
    if (!on.hfEnabled && !on.vixEnabled) return;
    opens_.update(input.bars, from, walk);
    if (on.hfEnabled) {
        if (sideChanged) hf_.read(input.hfByMin, on.timeframe, walk);
        hf_.update(input.bars, sideChanged ? 0 : from, opens_, input.srSessions, on.hfFallbackScale, walk,
                   series_.hfLine);
    }
    if (on.vixEnabled) {
        const bool read = vix_.read(input.vix, sideChanged, opens_, on.timeframe, on.vixScale, on.vixSmooth, walk);
        vix_.update(input.bars, read ? 0 : from, series_.vixLine);
    }
}

}  // namespace vmr
