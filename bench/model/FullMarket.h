// A pane with every series and marker there is: 5000 minutes and five sessions.
#pragma once

#include <cstdint>
#include <vector>

#include "market/SessionLines.h"
#include "model/AppModel.h"

namespace vmr::bench {

/// Fills an open pane with 5000 minutes up to `last`, and levels and markers with them.
inline void fillMarket(AppModel& pane, std::int64_t last) {
    constexpr int bars = 5000, sessions = 5, markers = 1800;
    pane.bars.candles.clear();
    for (int i = 0; i < bars; ++i) {
        const std::int64_t time = last - (bars - 1 - i) * 60;
        const double p = 21000 + (i * 37 % 400) * 0.25;
        pane.bars.candles.push_back({time, p, p + 3, p - 2, p + 0.25, 900});
        pane.bars.secondaryCandles.push_back({time, p / 3, p / 3 + 1, p / 3 - 1, p / 3, 900});
        pane.bars.vixCandles.push_back({time, 18, 18.1, 17.9, 18, 0});
        pane.overlays.hfByMin[time].c = (i % 401 - 200) * 1e6;
    }
    for (int d = 0; d < sessions; ++d) {
        const std::int64_t open = SessionLines::sessionOpenSec(last - d * 86400, pane.sessionHHMM());
        pane.sessionLevels.srSessions[open] = {
            open, 21000, {{1, "", 21100, 0}, {2, "", 21200, 0}}, {{1, "", 20900, 0}}};
    }
    std::vector<BubblePt> bubbles;
    std::vector<TrianglePt> triangles;
    for (int i = 0; i < markers; ++i) {
        const std::int64_t time = last - (i / 3) * 60;
        bubbles.push_back({.minuteTs = time, .strike = 520.0 + i % 11, .dom = 0.5, .rank = i % 3});
        triangles.push_back({.minuteTs = time, .strike = 518.0 + i % 13, .net = 5, .minuteMax = 9});
    }
    pane.markers.bubblePts = bubbles;
    pane.markers.trianglePts = triangles;
}

}  // namespace vmr::bench
