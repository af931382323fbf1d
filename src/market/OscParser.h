// The oscillator channel: per-minute numbers merged over time, and the six lines made of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

#include "base/Json.h"
#include "market/Records.h"

namespace vmr {

/// What is known of one minute.
struct OscMinute {
    std::optional<double> nq, es, vix, call, put, net;
    bool operator==(const OscMinute&) const = default;
};

/// Seconds since 1970 of the minute to what is known of it.
using OscByMin = std::map<std::int64_t, OscMinute>;

namespace OscParser {

/// The most minutes that a pane keeps.
inline constexpr std::size_t minutesCap = 14000;

/// Merges the entries under `points`: a name that a minute's object has replaces what was known, the other names stay.
/// Keys above 10^12 are milliseconds. A minute is there from its first entry on, even if nothing of it could be read.
/// Anything of another shape is skipped.
void merge(JsonView payload, OscByMin& into);

/// Six lines, ascending by time, each with the minutes that have its number. Writes into `out`, reusing its memory.
void build(const OscByMin& byMin, OscLines& out);
inline OscLines build(const OscByMin& byMin) {
    OscLines lines;
    build(byMin, lines);
    return lines;
}

}  // namespace OscParser
}  // namespace vmr
