// The one-minute series of a pane: trades extend it, the clock rolls it forward, a timeframe aggregates it.
#include <algorithm>
#include <cmath>

#include "base/CheckedInt.h"
#include "market/CandleParser.h"
#include "model/AppModel.h"
#include "store/ConfigIO.h"

namespace vmr {

namespace {
constexpr double displayPace = 1.0 / 120;  // seconds; a burst of trades costs one rebuild

std::int64_t wholeMinute(std::int64_t t) {
    const std::int64_t minute = t / 60 * 60;
    return minute > t ? minute - 60 : minute;
}

// The start of the minute that holds `tsMs`, in seconds.
std::int64_t tradeMinute(double tsMs) {
    constexpr double farFuture = 1e15;  // up to here a plain cut is the same, at a third of the cost
    if (tsMs >= 0 && tsMs < farFuture) return static_cast<std::int64_t>(tsMs / 60000) * 60;
    return checkedInt(std::floor(tsMs / 60000) * 60, "the time of a trade");
}

// Appends and keeps the series within its cap.
void appendCapped(std::vector<Candle>& series, const Candle& bar) {
    if (series.size() >= CandleParser::seriesCap) {
        const auto extra = static_cast<std::ptrdiff_t>(series.size() - CandleParser::seriesCap + 1);
        series.erase(series.begin(), series.begin() + extra);
    }
    series.push_back(bar);
}
}  // namespace

AppModel::TradeEffect AppModel::applyToSeries(std::vector<Candle>& series, double price, double tsMs) {
    const std::int64_t t = tradeMinute(tsMs);
    if (series.empty()) return TradeEffect::none;
    Candle& last = series.back();
    if (last.time > t) return TradeEffect::tooOld;
    if (last.time == t) {
        last.high = std::max(last.high, price);
        last.low = std::min(last.low, price);
        last.close = price;
        return TradeEffect::edited;
    }
    const double open = last.close;
    appendCapped(series, {t, open, std::max(open, price), std::min(open, price), price, 0});
    return TradeEffect::appended;
}

void AppModel::applyTrade(double price, double tsMs) {
    const TradeEffect effect = applyToSeries(candles, price, tsMs);
    if (effect == TradeEffect::none) return;
    if (effect == TradeEffect::appended) rebuildSRLinesIfBarChanged();
    scheduleDisplayRebuild();
    if (gex3DActive_) rebuild3D(false);
}

void AppModel::applySecondaryTrade(double price, double tsMs) {
    const TradeEffect effect = applyToSeries(secondaryCandles, price, tsMs);
    if (effect == TradeEffect::edited || effect == TradeEffect::appended) scheduleOverlays();
}

void AppModel::scheduleDisplayRebuild() {
    if (displayRebuildScheduled_) return;
    displayRebuildScheduled_ = true;
    at_.main.after(displayPace, [this, weak = std::weak_ptr(alive_)] {
        if (weak.expired()) return;
        displayRebuildScheduled_ = false;
        rebuildDisplay();
    });
}

void AppModel::rebuildDisplay() {
    displayCandles.edit([this](std::vector<Candle>& bars) { aggregate(candles, timeframe, bars); });
    if (!candles.empty()) {
        const double close = candles.back().close;
        if (std::isfinite(lastSeenClose_)) priceRising = lastSeenClose_ <= close;
        lastSeenClose_ = close;
        if (!simRoot.empty()) simSeedLast(close);
    }
    scheduleOverlays();
    ++chartVersion;
    chartVersionChanged();
}

void AppModel::setTimeframe(std::int64_t minutes) {
    timeframe = static_cast<int>(std::clamp<std::int64_t>(minutes, 1, INT32_MAX));
    at_.preferences.set(ConfigIO::timeframeKey, std::to_string(timeframe.get()));
    rebuildDisplay();
}

void AppModel::startBarRollTimer() {
    if (barRollTimer_ != SerialQueue::noTimer) return;
    // whole seconds of the market's clock, however fast it runs; no more often than the display is rebuilt
    const double now = at_.clock.now();
    const double second = 1 / at_.clock.speed();
    barRollTimer_ = at_.main.every((std::floor(now) - now + 1) * second, std::max(second, displayPace),
                                   [this, weak = std::weak_ptr(alive_)] {
                                       if (!weak.expired()) rollForwardBarIfNeeded();
                                   });
}

void AppModel::rollForwardBarIfNeeded() { rollForwardBar(at_.clock.now()); }

void AppModel::rollForwardBar(double exactNow) {
    if (!connected || candles.empty()) return;
    auto now = static_cast<std::int64_t>(exactNow);
    if (static_cast<double>(now) > exactNow) --now;
    const std::int64_t minute = wholeMinute(now);
    const Candle& last = candles.back();
    if (last.time >= minute || !at_.session.marketOpen(now, isStock())) return;
    const double close = last.close;
    appendCapped(candles, {minute, close, close, close, close, 0});
    rebuildSRLinesIfBarChanged();
    rebuildDisplay();
}

void aggregate(const std::vector<Candle>& candles, int tf, std::vector<Candle>& out) {
    if (tf < 2) {
        out.assign(candles.begin(), candles.end());
        return;
    }
    out.clear();
    const std::int64_t width = static_cast<std::int64_t>(tf) * 60;
    std::int64_t bucket = 0;
    for (const Candle& bar : candles) {
        // most bars are in the open bucket, and a subtraction is cheaper than a division
        const bool within = bucket >= 0 && bar.time >= bucket && bar.time - bucket < width;
        const std::int64_t own = within ? bucket : bar.time / width * width;
        if (out.empty() || own != bucket) {
            bucket = own;
            out.push_back(bar);
            out.back().time = bucket;
            continue;
        }
        Candle& open = out.back();
        open.high = std::max(open.high, bar.high);
        open.low = std::min(open.low, bar.low);
        open.close = bar.close;
        open.volume += bar.volume;
    }
}

}  // namespace vmr
