// The one-minute bars of a market, built from its trades.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "market/Records.h"
#include "relay/TradeSource.h"

namespace vmr::relay {

/// Takes `trade` into the bar of `minute`, which it opens if there is none yet.
void addTrade(std::optional<Candle>& bar, std::int64_t minute, const Trade& trade);

/// Builds and keeps what was asked for. One thread.
class BarBook {
 public:
    explicit BarBook(TradeSource& source) : source_(source) {}

    /// The bars of whole minutes in [from, end), both on whole minutes, ascending. Minutes without trades have none.
    std::vector<Candle> closed(std::int64_t from, std::int64_t end);

    /// The history that a chart opened at `nowMs` gets, the forming bar included.
    std::vector<Candle> upTo(std::int64_t nowMs);

 private:
    void build(std::int64_t from, std::int64_t end, std::vector<Candle>& bars);

    TradeSource& source_;
    std::int64_t from_ = 0, end_ = 0;  // what `bars_` covers
    std::vector<Candle> bars_;
    std::vector<Trade> trades_;
};

}  // namespace vmr::relay
