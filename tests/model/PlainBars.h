// The bars of a pane by their rules alone, as directly as these read.
#pragma once

#include <cmath>
#include <cstdint>
#include <map>

#include "support/market/SyntheticMarket.h"

namespace vmr::test {

inline Bars valuesOf(const std::map<std::int64_t, Candle>& byTime) {
    Bars out;
    for (const auto& [time, bar] : byTime) out.push_back(bar);
    return out;
}

/// Bars of `minutes` each.
inline Bars plainAggregate(const Bars& bars, std::int64_t minutes) {
    std::map<std::int64_t, Candle> buckets;
    for (const Candle& bar : bars) {
        const std::int64_t time = bar.time / (minutes * 60) * (minutes * 60);
        Candle& whole = buckets.try_emplace(time, Candle{time, bar.open, bar.high, bar.low, 0, 0}).first->second;
        whole.high = std::fmax(whole.high, bar.high);
        whole.low = std::fmin(whole.low, bar.low);
        whole.close = bar.close;
        whole.volume += bar.volume;
    }
    return valuesOf(buckets);
}

/// Shares nothing with the program: a map, division and the date library's calendar.
class PlainBars {
 public:
    PlainBars(bool isStock, bool rolls) : isStock_(isStock), rolls_(rolls) {}

    void merge(const Bars& incoming) {
        for (const Candle& bar : incoming) bars_[bar.time] = bar;
        trim();
    }
    void roll(double now) {
        const auto second = static_cast<std::int64_t>(std::floor(now));
        const std::int64_t m = second - second % 60;
        if (!rolls_ || bars_.empty() || bars_.rbegin()->first >= m || !isOpen(second)) return;
        const double close = bars_.rbegin()->second.close;
        bars_[m] = {m, close, close, close, close, 0};
        trim();
    }
    void trade(double price, double tsMs) {
        if (bars_.empty()) return;
        const auto t = static_cast<std::int64_t>(std::floor(tsMs / 60000)) * 60;
        const Candle last = bars_.rbegin()->second;
        if (last.time > t) return;
        if (last.time == t)
            bars_[t] = {t, last.open, std::fmax(last.high, price), std::fmin(last.low, price), price, last.volume};
        else
            bars_[t] = {t, last.close, std::fmax(last.close, price), std::fmin(last.close, price), price, 0};
        trim();
    }
    Bars bars() const { return valuesOf(bars_); }

 private:
    bool isOpen(std::int64_t t) const { return isStock_ ? stocksOpen(t) : futuresOpen(t); }
    void trim() {
        while (bars_.size() > 5000) bars_.erase(bars_.begin());
    }
    bool isStock_, rolls_;
    std::map<std::int64_t, Candle> bars_;
};

}  // namespace vmr::test
