// The bars of a pane by their rules alone, as directly as these read.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <vector>

#include "support/SyntheticMarket.h"

namespace vmr::test {

using Bars = std::vector<Candle>;

/// Bars of `minutes` each.
inline Bars plainAggregate(const Bars& bars, std::int64_t minutes) {
    std::map<std::int64_t, Bars> buckets;
    for (const Candle& bar : bars) buckets[bar.time / (minutes * 60) * (minutes * 60)].push_back(bar);
    Bars out;
    for (const auto& [time, own] : buckets) {
        Candle whole{time, own.front().open, own.front().high, own.front().low, own.back().close, 0};
        for (const Candle& bar : own) {
            whole.high = std::fmax(whole.high, bar.high);
            whole.low = std::fmin(whole.low, bar.low);
            whole.volume += bar.volume;
        }
        out.push_back(whole);
    }
    return out;
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
    Bars bars() const {
        Bars out;
        for (const auto& [time, bar] : bars_) out.push_back(bar);
        return out;
    }

 private:
    bool isOpen(std::int64_t t) const { return isStock_ ? stocksOpen(t) : futuresOpen(t); }
    void trim() {
        while (bars_.size() > 5000) bars_.erase(bars_.begin());
    }
    bool isStock_, rolls_;
    std::map<std::int64_t, Candle> bars_;
};

}  // namespace vmr::test
