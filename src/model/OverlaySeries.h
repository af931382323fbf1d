// The analytic lines over the chart as functions of its bars: VWAP, EMA, second instrument, HF line, VIX line.
#pragma once

#include <cstdint>
#include <vector>

#include "market/HfHistoryParser.h"
#include "market/Records.h"
#include "market/SRLevelsParser.h"
#include "market/SessionTime.h"

/// Each function makes its series from nothing; `OverlayBuilder` gives the same values and keeps what has not changed.
/// Bars are strictly ascending by time; `tf` is minutes a display bar, `sessionHHMM` the session's start (930 is
/// 09:30). Input that cannot be used gives an empty series or no point. Main thread, like the session clock.
namespace vmr::OverlaySeries {

/// Volume-weighted average price since the session open of the last bar. No points until volume appears; a bar without
/// volume repeats the running value.
std::vector<OvPoint> computeVWAP(const std::vector<Candle>& candles, int sessionHHMM, SessionTime& session);

/// Whether the second VWAP, that of the stock session, is shown beside one that opens at `sessionHHMM`: while the stock
/// market is open at `t`, the time of the last bar, unless the main session is the stock session itself.
bool showsNyVWAP(std::int64_t t, int sessionHHMM, SessionTime& session);

/// Exponential average of the closes, without warm-up. Empty under 2 bars or a period under 1.
std::vector<OvPoint> computeEMA(const std::vector<Candle>& candles, std::int64_t period);

/// This session's candles of the paired instrument (`secondaryRaw` at one minute a bar), scaled so that both open the
/// session at one price.
std::vector<OvCandle> computeSecond(const std::vector<Candle>& primary, const std::vector<Candle>& secondaryRaw, int tf,
                                    int sessionHHMM, SessionTime& session);

/// The HF flow laid on each session's opening price: `fallbackScale` points per unit of flow, or, where the session has
/// a first level beyond its open on that side, so that a flow of 1e8 reaches it. Minutes from 16:16 on do not count;
/// the last minute of a bar speaks for it.
std::vector<OvColorPoint> computeHFLine(const std::vector<Candle>& candles, const HfByMin& hfByMin, int tf,
                                        int sessionHHMM, double fallbackScale, const SRSessions& srSessions,
                                        SessionTime& session);

/// The VIX's move since 9 h 15 min into each session laid on the session's opening price, `scale` as gain, averaged
/// over the last `smooth` minutes. Minutes from 03:15 to 16:16 count; a session with fewer than 2 of them has no line.
std::vector<OvPoint> computeVIX(const std::vector<Candle>& candles, const std::vector<Candle>& vix, int tf,
                                int sessionHHMM, double scale, std::int64_t smooth, SessionTime& session);

}  // namespace vmr::OverlaySeries
