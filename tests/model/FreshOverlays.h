// The overlay series made from nothing, by the code that the builder updates them with.
#pragma once

#include "market/HfHistoryParser.h"
#include "market/SRLevelsParser.h"
#include "model/OverlayLines.h"

/// `OverlayBuilder` keeps what has not changed and must give the same values to the last bit.
namespace vmr::test {

inline std::vector<OvPoint> computeVWAP(const std::vector<Candle>& candles, int sessionHHMM, SessionTime& session) {
    std::vector<OvPoint> out;
    if (candles.empty()) return out;
    const std::int64_t open = SessionWalk(session, sessionHHMM).open(candles.back().time);
    OverlayLines::VwapLine().update(candles, 0, open, out);
    return out;
}

inline std::vector<OvPoint> computeEMA(const std::vector<Candle>& candles, std::int64_t period) {
    std::vector<OvPoint> out;
    OverlayLines::updateEMA(candles, 0, period, out);
    return out;
}

inline std::vector<OvCandle> computeSecond(const std::vector<Candle>& primary, const std::vector<Candle>& secondaryRaw,
                                           int tf, int sessionHHMM, SessionTime& session) {
    std::vector<OvCandle> out;
    SessionWalk walk(session, sessionHHMM);
    OverlayLines::SecondLine().update(primary, secondaryRaw, tf, walk, out);
    return out;
}

inline std::vector<OvColorPoint> computeHFLine(const std::vector<Candle>& candles, const HfByMin& hfByMin, int tf,
                                               int sessionHHMM, double fallbackScale, const SRSessions& srSessions,
                                               SessionTime& session) {
    std::vector<OvColorPoint> out;
    SessionWalk walk(session, sessionHHMM);
    OverlayLines::SessionOpens opens;
    opens.update(candles, 0, walk);
    OverlayLines::HfLine line;
    line.read(hfByMin, tf, walk);
    line.update(candles, 0, opens, srSessions, fallbackScale, walk, out);
    return out;
}

inline std::vector<OvPoint> computeVIX(const std::vector<Candle>& candles, const std::vector<Candle>& vix, int tf,
                                       int sessionHHMM, double scale, std::int64_t smooth, SessionTime& session) {
    std::vector<OvPoint> out;
    SessionWalk walk(session, sessionHHMM);
    OverlayLines::SessionOpens opens;
    opens.update(candles, 0, walk);
    OverlayLines::VixLine line;
    line.read(vix, true, opens, tf, scale, smooth, walk);
    line.update(candles, 0, out);
    return out;
}

}  // namespace vmr::test
