// One-minute series as they grow with trades, and the same at a longer timeframe. Pure functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "market/CandleParser.h"
#include "market/Records.h"
#include "market/RepairTally.h"

namespace vmr {

/// `candles` at `tf` minutes a bar: buckets are multiples of `tf` minutes since 1970, missing minutes make no bar, and
/// the last bar is the forming one. A `tf` below 2 gives `candles` as they are. Writes into `out`, reusing its memory.
void aggregate(const std::vector<Candle>& candles, int tf, std::vector<Candle>& out);

/// Appends `bar` and drops the oldest ones beyond `cap`.
void appendCapped(std::vector<Candle>& series, const Candle& bar, std::size_t cap = CandleParser::seriesCap);

/// `tradeMinute` of a moment before 1970 or in a far future.
std::optional<std::int64_t> oddTradeMinute(double tsMs, RepairTally& tally);

/// The start of the minute of a trade at `tsMs` (milliseconds since 1970), in seconds. Nothing, and counted, where no
/// 64-bit integer holds it.
inline std::optional<std::int64_t> tradeMinute(double tsMs, RepairTally& tally) {
    constexpr double farFuture = 1e15;  // up to here a plain cut is the same, at a third of the cost
    if (tsMs >= 0 && tsMs < farFuture) return static_cast<std::int64_t>(tsMs / 60000) * 60;
    return oddTradeMinute(tsMs, tally);
}

/// What a trade did to a series.
enum class TradeEffect { none, tooOld, edited, appended };

/// A trade edits the last bar, or opens the next at the close of the last. It starts no series, and one of an earlier
/// minute changes nothing. `tsMs` in milliseconds since 1970; `fatal` where `tradeMinute` would find none.
TradeEffect applyTrade(std::vector<Candle>& series, double price, double tsMs);

/// The place of the bar that begins at `time`, of bars that ascend; nothing when none does.
std::optional<std::size_t> findBar(std::span<const Candle> bars, std::int64_t time);

/// The start of the minute that holds `t`; seconds since 1970.
std::int64_t wholeMinute(std::int64_t t);

}  // namespace vmr
