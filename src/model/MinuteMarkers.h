// The bubbles and triangles of a chart, minute by minute.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "base/Json.h"
#include "base/Signal.h"
#include "market/Records.h"
#include "market/RepairTally.h"

namespace vmr {

/// All of it belongs to one chart. Main thread.
struct MinuteMarkers {
    explicit MinuteMarkers(NoticeGate* gate = nullptr) : bubblePts(gate), trianglePts(gate) {}

    std::map<std::int64_t, std::vector<BubblePt>> bubbleByMin;  ///< minute in seconds, newest 600
    std::map<std::int64_t, std::vector<TrianglePt>> triByMin;
    Observable<std::vector<BubblePt>> bubblePts;  ///< of all minutes, ascending
    Observable<std::vector<TrianglePt>> trianglePts;

    /// Begins another chart, without markers.
    void open() { *this = MinuteMarkers(); }
    void takeBubbles(JsonView payload, RepairTally& tally);
    void takeTriangles(JsonView payload, RepairTally& tally);
};

}  // namespace vmr
