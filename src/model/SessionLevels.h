// The sessions' opens and their support and resistance, and the horizontal lines that they make over a chart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/Json.h"
#include "base/Signal.h"
#include "market/Records.h"
#include "market/SRLevelsParser.h"

namespace vmr {

/// All of it belongs to one chart. Main thread.
struct SessionLevels {
    explicit SessionLevels(NoticeGate* gate = nullptr) : srLines(gate) {}

    SRSessions srSessions;
    Observable<std::vector<OverlayLine>> srLines;
    std::pair<std::size_t, std::int64_t> builtFrom{SIZE_MAX, 0};  ///< number of bars and the last one's time

    /// Begins another chart, without sessions.
    void open() { *this = SessionLevels(); }
    /// Sessions of the feed; the lines are to be rebuilt.
    void take(JsonView payload, RepairTally& tally) { SRLevelsParser::merge(payload, srSessions, tally); }
    /// The lines over one-minute bars; `hhmm` is the session's start.
    void rebuild(const std::vector<Candle>& candles, int hhmm);
    /// The same when a bar came or went since the last time.
    void rebuildIfBarChanged(const std::vector<Candle>& candles, int hhmm);
};

}  // namespace vmr
