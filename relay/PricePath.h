// Where a market's price stood, at steps of a few seconds.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "relay/TradeSource.h"

namespace vmr::relay {

/// A minute in which there were trades.
struct PriceMinute {
    static constexpr std::int64_t stepMs = 5000;
    static constexpr std::size_t steps = 12;

    std::int64_t minute = 0;  ///< seconds since 1970
    double before = 0;        ///< last price before the minute
    double first = 0, high = 0, low = 0;
    std::array<double, steps> at{};  ///< last price up to the end of each step, of those that are over
    std::size_t passed = 0;          ///< steps that are over
    double last = 0;
};

/// A price and when it was last known to be current.
struct PriceMoment {
    double price = 0;
    std::int64_t timeMs = 0;
};

/// The minutes of one trade source, kept once made. The answers depend on the source and on the moment asked about
/// alone. Moments should rise: one before the history that is kept makes it anew. One thread.
class PricePath {
 public:
    /// `source` must outlive the path.
    explicit PricePath(TradeSource& source) : source_(source) {}

    /// The minutes that have ended by `nowMs`, ascending, from the start of the source's history at the latest.
    std::span<const PriceMinute> closed(std::int64_t nowMs);

    /// The minute as its trades up to `asOfMs` made it; nothing without any.
    std::optional<PriceMinute> minute(std::int64_t minute, std::int64_t asOfMs);

    /// The last price up to `nowMs`, current until then or, on a pause, until the end of the last minute with trades.
    /// Nothing before the first trade.
    std::optional<PriceMoment> at(std::int64_t nowMs);

    /// The first price from the minute `from` on, which must not lie after `nowMs`.
    std::optional<double> firstPrice(std::int64_t from, std::int64_t nowMs);

    /// The trades of a minute, in order of time; valid until the next call.
    std::span<const Trade> trades(std::int64_t minute);

 private:
    void build(std::int64_t end);
    double lastBefore(std::int64_t minute, std::span<const PriceMinute> known);
    PriceMinute made(std::int64_t minute, std::span<const Trade> trades, std::int64_t asOfMs, double before) const;

    TradeSource& source_;
    std::int64_t from_ = 0, end_ = 0;  // what `minutes_` covers
    std::vector<PriceMinute> minutes_;
    std::int64_t tradesMinute_ = INT64_MIN;
    std::vector<Trade> trades_;
};

}  // namespace vmr::relay
