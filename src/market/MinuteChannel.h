// The per-minute side channels of an options source: a whole history or a single minute, and how much of it is kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <string_view>

#include "base/Json.h"
#include "market/RepairTally.h"

namespace vmr {

/// How a channel names its two forms, how it reads a single minute's time, and how many minutes a pane keeps.
struct MinuteChannel {
    std::string_view snapshotKey;
    std::string_view singleKey;
    std::optional<std::int64_t> (*minute)(JsonView, RepairTally&);
    std::size_t keep;
};

extern const MinuteChannel bubbleMinutes;
extern const MinuteChannel triangleMinutes;
extern const MinuteChannel hfHistoryMinutes;

/// Calls `take` for each minute of a payload with its seconds since 1970 and its object: every well-formed entry under
/// the snapshot key, in the order given, or else the single minute. Anything else is skipped, and a
/// single minute whose time no 64-bit integer holds is counted.
void forEachMinute(JsonView payload, const MinuteChannel& channel, RepairTally& tally,
                   const std::function<void(std::int64_t minute, JsonView object)>& take);

/// Removes all but the `count` newest minutes.
template <class Value>
void keepNewest(std::map<std::int64_t, Value>& byMinute, std::size_t count) {
    if (byMinute.size() <= count) return;
    byMinute.erase(byMinute.begin(), std::next(byMinute.begin(), static_cast<std::ptrdiff_t>(byMinute.size() - count)));
}

}  // namespace vmr
