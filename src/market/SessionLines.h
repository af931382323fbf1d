// The horizontal lines of every session: its open, the day before, its support/resistance levels.
#pragma once

#include <cstdint>
#include <vector>

#include "market/Records.h"
#include "market/SRLevelsParser.h"

namespace vmr::SessionLines {

/// The latest session open not after `t` by the New York calendar; `t` itself where there is no calendar (tens of
/// thousands of years away). `hhmm` as 930 for 09:30.
std::int64_t sessionOpenSec(std::int64_t t, int hhmm);

/// The lines of all sessions of `candles` (one-minute bars), by session: open, previous close, high and low, levels up,
/// levels down. Lines of the last session have no end. Fewer than 2 bars give none. Pure; any thread.
std::vector<OverlayLine> build(const std::vector<Candle>& candles, const SRSessions& srSessions, int sessionHHMM);

}  // namespace vmr::SessionLines
