#include "model/LiveBars.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace vmr {

namespace {
constexpr double displayPace = 1.0 / 120;  // seconds; a burst of trades costs one rebuild

std::int64_t wholeSecond(double now) { return static_cast<std::int64_t>(std::floor(now)); }
}  // namespace

LiveBars::LiveBars(PaneWork& work, SessionTime& session, NoticeGate* gate)
    : BarsOfChart(gate),
      timeframe(gate, 1),
      priceRising(gate, true),
      chartVersionChanged(gate),
      work_(work),
      session_(session) {}

void LiveBars::merge(std::vector<Candle>& series, const std::vector<Candle>& bars) {
    series = CandleParser::merge(series, bars, CandleParser::seriesCap);
}

TradeEffect LiveBars::applyTrade(double price, double tsMs) {
    const TradeEffect effect = vmr::applyTrade(candles, price, tsMs);
    if (effect == TradeEffect::none || displayRebuildScheduled) return effect;
    displayRebuildScheduled = true;
    work_.afterOnChart(displayPace, [this] {
        displayRebuildScheduled = false;
        rebuildDisplay();
    });
    return effect;
}

std::int64_t LiveBars::minuteOf(double now) { return wholeMinute(wholeSecond(now)); }

bool LiveBars::rollForward(double now, bool isStock) {
    const std::int64_t minute = minuteOf(now);
    if (candles.empty() || reach(minute) || !session_.marketOpen(wholeSecond(now), isStock)) return false;
    const double close = candles.back().close;
    appendCapped(candles, {minute, close, close, close, close, 0});
    return true;
}

void LiveBars::rebuildDisplay() {
    displayCandles.edit([this](std::vector<Candle>& bars) { aggregate(candles, timeframe, bars); });
    if (!candles.empty()) {
        const double close = candles.back().close;
        if (std::isfinite(lastSeenClose)) priceRising = lastSeenClose <= close;
        lastSeenClose = close;
    }
    if (onDisplayRebuilt) onDisplayRebuilt();
    raiseChartVersion();
}

void LiveBars::setTimeframe(std::int64_t minutes) {
    timeframe = static_cast<int>(std::clamp<std::int64_t>(minutes, 1, INT_MAX));
    rebuildDisplay();
}

void LiveBars::raiseChartVersion() {
    ++chartVersion;
    chartVersionChanged();
}

}  // namespace vmr
