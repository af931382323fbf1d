// The overlay series made from nothing, by the code that the builder updates them with.
#pragma once

#include <cstdint>
#include <vector>

#include "market/HfHistoryParser.h"
#include "market/Records.h"
#include "market/SRLevelsParser.h"
#include "market/SessionTime.h"

/// `OverlayBuilder` keeps what has not changed and must give the same values to the last bit.
namespace vmr::test {

std::vector<OvPoint> computeVWAP(const std::vector<Candle>& candles, int sessionHHMM, SessionTime& session);
std::vector<OvPoint> computeEMA(const std::vector<Candle>& candles, std::int64_t period);
std::vector<OvCandle> computeSecond(const std::vector<Candle>& primary, const std::vector<Candle>& secondaryRaw, int tf,
                                    int sessionHHMM, SessionTime& session);
std::vector<OvColorPoint> computeHFLine(const std::vector<Candle>& candles, const HfByMin& hfByMin, int tf,
                                        int sessionHHMM, double fallbackScale, const SRSessions& srSessions,
                                        SessionTime& session);
std::vector<OvPoint> computeVIX(const std::vector<Candle>& candles, const std::vector<Candle>& vix, int tf,
                                int sessionHHMM, double scale, std::int64_t smooth, SessionTime& session);

}  // namespace vmr::test
