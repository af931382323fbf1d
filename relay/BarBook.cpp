#include "relay/BarBook.h"

#include <algorithm>

#include "relay/MarketTime.h"

namespace vmr::relay {

namespace {
bool before(const Candle& bar, std::int64_t time) { return bar.time < time; }
}  // namespace

void addTrade(std::optional<Candle>& bar, std::int64_t minute, const Trade& trade) {
    if (!bar) bar = Candle{minute, trade.price, trade.price, trade.price, trade.price, 0};
    bar->high = std::max(bar->high, trade.price);
    bar->low = std::min(bar->low, trade.price);
    bar->close = trade.price;
    bar->volume += trade.size;
}

void BarBook::build(std::int64_t from, std::int64_t end, std::vector<Candle>& bars) {
    for (std::int64_t minute = from; minute < end; minute += 60) {
        source_.minuteTrades(minute, trades_);
        std::optional<Candle> bar;
        for (const Trade& trade : trades_) addTrade(bar, minute, trade);
        if (bar) bars.push_back(*bar);
    }
}

std::vector<Candle> BarBook::closed(std::int64_t from, std::int64_t end) {
    if (from >= end) return {};
    const bool usable = from >= from_ && from <= end_ && from_ < end_;
    if (!usable) {
        bars_.clear();
        from_ = end_ = from;
    } else if (from > from_) {
        bars_.erase(bars_.begin(), std::lower_bound(bars_.begin(), bars_.end(), from, before));
        from_ = from;
    }
    if (end > end_) {
        build(end_, end, bars_);
        end_ = end;
    }
    return {bars_.begin(), std::lower_bound(bars_.begin(), bars_.end(), end, before)};
}

std::vector<Candle> BarBook::upTo(std::int64_t nowMs) {
    const std::int64_t minute = minuteOf(nowMs);
    auto bars = closed(source_.historyStart(minute), minute);
    source_.minuteTrades(minute, trades_);
    std::optional<Candle> forming;
    for (const Trade& trade : trades_) {
        if (trade.timeMs <= nowMs) addTrade(forming, minute, trade);
    }
    if (forming) bars.push_back(*forming);
    return bars;
}

}  // namespace vmr::relay
