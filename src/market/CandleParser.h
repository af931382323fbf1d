// Bars from the payloads of a candle channel, and their merging into a series.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "base/Json.h"
#include "market/Records.h"
#include "market/RepairTally.h"

namespace vmr::CandleParser {

/// The most bars that a pane keeps of one series.
inline constexpr std::size_t seriesCap = 5000;

/// The bars of a payload of any of the feed's shapes; empty when there are none. Pure; any thread.
/// - an array of objects, or an object whose `candles` is one: bars timed by `ts` (ms) or `time` (s), in arrival order;
///   one element that is no object empties the whole;
/// - an object whose `candles` is an object: keys are seconds, sorted by time;
/// - an object with `minuteTs` (s) and an object `candle`: one bar;
/// - any other object: itself one bar.
/// A bar whose time no 64-bit integer holds is left out and counted.
std::vector<Candle> parse(JsonView payload, RepairTally& tally);
/// The same where nobody counts.
inline std::vector<Candle> parse(JsonView payload) {
    RepairTally uncounted;
    return parse(payload, uncounted);
}

/// One bar timed by its own `ts` or `time`. Nothing without all four prices, with time 0 or one that no integer holds.
std::optional<Candle> candleFromMs(JsonView object, RepairTally& tally);

/// One bar with a time given from outside; the volume is `v` alone.
std::optional<Candle> candle(JsonView object, std::int64_t time);

/// Both lists as one series, ascending by time: on equal time the later of `incoming` wins, and only the newest `cap`
/// remain. About linear when both are in order already.
std::vector<Candle> merge(const std::vector<Candle>& existing, const std::vector<Candle>& incoming, std::size_t cap);

}  // namespace vmr::CandleParser
