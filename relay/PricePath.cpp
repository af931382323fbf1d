#include "relay/PricePath.h"

#include <algorithm>

#include "relay/MarketTime.h"

namespace vmr::relay {

namespace {
constexpr std::int64_t longestPause = 5 * 86400;

bool before(const PriceMinute& one, std::int64_t minute) { return one.minute < minute; }
}  // namespace

std::span<const Trade> PricePath::trades(std::int64_t minute) {
    if (minute != tradesMinute_) {
        source_.minuteTrades(minute, trades_);
        tradesMinute_ = minute;
    }
    return trades_;
}

/// Asks the source where `known` does not reach, so that a minute is the same wherever the kept history begins.
double PricePath::lastBefore(std::int64_t minute, std::span<const PriceMinute> known) {
    if (!known.empty() && known.back().minute >= minute - longestPause) return known.back().last;
    for (std::int64_t back = minute - 60; back >= minute - longestPause; back -= 60) {
        if (const auto found = trades(back); !found.empty()) return found.back().price;
    }
    return 0;
}

PriceMinute PricePath::made(std::int64_t minute, std::span<const Trade> trades, std::int64_t asOfMs,
                            double before) const {
    PriceMinute one;
    one.minute = minute;
    one.first = one.high = one.low = trades.front().price;
    one.before = one.last = before > 0 ? before : one.first;
    std::size_t next = 0;
    for (std::size_t step = 0; step < PriceMinute::steps; ++step) {
        const std::int64_t stepEnd = minute * 1000 + static_cast<std::int64_t>(step + 1) * PriceMinute::stepMs;
        for (; next < trades.size() && trades[next].timeMs <= std::min(stepEnd, asOfMs); ++next) {
            one.last = trades[next].price;
            one.high = std::max(one.high, one.last);
            one.low = std::min(one.low, one.last);
        }
        if (stepEnd > asOfMs) break;
        one.at[step] = one.last;
        one.passed = step + 1;
    }
    return one;
}

void PricePath::build(std::int64_t end) {
    const std::int64_t from = source_.historyStart(end);
    if (from_ == end_ || from > end_ || end < from_) {
        minutes_.clear();
        from_ = end_ = std::min(from, end);
    }
    for (; end_ < end; end_ += 60) {
        if (trades(end_).empty()) continue;
        const double last = lastBefore(end_, minutes_);
        minutes_.push_back(made(end_, trades(end_), INT64_MAX, last));
    }
}

std::span<const PriceMinute> PricePath::closed(std::int64_t nowMs) {
    const std::int64_t end = minuteOf(nowMs);
    if (end > end_ || end < from_ || from_ == end_) build(end);
    return {minutes_.begin(), std::lower_bound(minutes_.begin(), minutes_.end(), end, before)};
}

std::optional<PriceMinute> PricePath::minute(std::int64_t minute, std::int64_t asOfMs) {
    const auto known = closed(asOfMs);
    if ((minute + 60) * 1000 <= asOfMs) {
        const auto found = std::lower_bound(known.begin(), known.end(), minute, before);
        if (found == known.end() || found->minute != minute) return std::nullopt;
        return *found;
    }
    const auto all = trades(minute);
    if (all.empty() || all.front().timeMs > asOfMs) return std::nullopt;
    const double last = lastBefore(minute, known);
    return made(minute, trades(minute), asOfMs, last);
}

std::optional<PriceMoment> PricePath::at(std::int64_t nowMs) {
    const auto all = trades(minuteOf(nowMs));
    const auto after = std::upper_bound(all.begin(), all.end(), nowMs,
                                        [](std::int64_t ms, const Trade& trade) { return ms < trade.timeMs; });
    if (after != all.begin()) return PriceMoment{std::prev(after)->price, nowMs};
    const auto known = closed(nowMs);
    if (known.empty()) return std::nullopt;
    return PriceMoment{known.back().last, std::min(nowMs, (known.back().minute + 60) * 1000)};
}

std::optional<double> PricePath::firstPrice(std::int64_t from, std::int64_t nowMs) {
    const auto known = closed(nowMs);
    const auto found = std::lower_bound(known.begin(), known.end(), from, before);
    if (found != known.end()) return found->first;
    const auto all = trades(minuteOf(nowMs));
    if (all.empty()) return std::nullopt;
    return all.front().price;
}

}  // namespace vmr::relay
