#include "market/Bars.h"

#include <algorithm>
#include <cmath>

namespace vmr {

std::optional<std::int64_t> oddTradeMinute(double tsMs, RepairTally& tally) {
    return tally.integer(std::floor(tsMs / 60000) * 60, "the time of a trade");
}

std::int64_t wholeMinute(std::int64_t t) {
    const std::int64_t minute = t / 60 * 60;
    return minute > t ? minute - 60 : minute;
}

void appendCapped(std::vector<Candle>& series, const Candle& bar, std::size_t cap) {
    if (series.size() >= cap)
        series.erase(series.begin(), series.begin() + static_cast<std::ptrdiff_t>(series.size() - cap + 1));
    series.push_back(bar);
}

TradeEffect applyTrade(std::vector<Candle>& series, double price, double tsMs) {
    RepairTally strict(true);
    const std::int64_t t = *tradeMinute(tsMs, strict);
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

std::optional<std::size_t> findBar(std::span<const Candle> bars, std::int64_t time) {
    const auto found = std::lower_bound(bars.begin(), bars.end(), time,
                                        [](const Candle& bar, std::int64_t at) { return bar.time < at; });
    if (found == bars.end() || found->time != time) return std::nullopt;
    return static_cast<std::size_t>(found - bars.begin());
}

}  // namespace vmr
