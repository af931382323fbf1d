#include "relay/Feed.h"

#include "relay/MarketTime.h"

namespace vmr::relay {

Feed::Feed(TradeSource& source, std::int64_t nowMs) : source_(source), nowMs_(nowMs) {
    enter(minuteOf(nowMs));
    take(nowMs);
}

void Feed::enter(std::int64_t minute) {
    minute_ = minute;
    source_.minuteTrades(minute, trades_);
    passed_ = 0;
    forming_.reset();
}

std::span<const Trade> Feed::take(std::int64_t untilMs) {
    const std::size_t first = passed_;
    while (passed_ < trades_.size() && trades_[passed_].timeMs <= untilMs)
        addTrade(forming_, minute_, trades_[passed_++]);
    if (passed_ > first) last_ = trades_[passed_ - 1];
    return std::span<const Trade>(trades_).subspan(first, passed_ - first);
}

void Feed::advance(std::int64_t nowMs, FeedListener& listener) {
    if (nowMs <= nowMs_) return;
    nowMs_ = nowMs;
    for (;;) {
        const auto fresh = take(nowMs);
        if (!fresh.empty()) listener.onTrades(fresh);
        if (nowMs < (minute_ + 60) * 1000) return;
        if (forming_) listener.onClosedBar(*forming_);
        enter(minute_ + 60);
    }
}

}  // namespace vmr::relay
