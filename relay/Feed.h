// One symbol's market as it goes on.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "relay/BarBook.h"
#include "relay/TradeSource.h"

namespace vmr::relay {

/// Hears what a feed passes, in order of time.
class FeedListener {
 public:
    virtual ~FeedListener() = default;
    virtual void onTrades(std::span<const Trade> trades) = 0;
    /// The minute is over; all its trades have been passed to `onTrades`.
    virtual void onClosedBar(const Candle& bar) = 0;
};

/// A place on a market's time line that moves forward only. One thread.
class Feed {
 public:
    /// Stands at `nowMs`, with that moment's trades passed.
    Feed(TradeSource& source, std::int64_t nowMs);

    /// Passes every trade up to `nowMs` and closes every minute that has ended by then. An earlier `nowMs` does
    /// nothing.
    void advance(std::int64_t nowMs, FeedListener& listener);

    std::int64_t nowMs() const { return nowMs_; }
    /// The latest trade since the feed began or in the minute in which it did; nothing before it.
    const std::optional<Trade>& last() const { return last_; }

 private:
    void enter(std::int64_t minute);
    std::span<const Trade> take(std::int64_t untilMs);

    TradeSource& source_;
    std::int64_t nowMs_;
    std::int64_t minute_ = 0;
    std::vector<Trade> trades_;  // of the minute
    std::size_t passed_ = 0;
    std::optional<Candle> forming_;
    std::optional<Trade> last_;
};

}  // namespace vmr::relay
