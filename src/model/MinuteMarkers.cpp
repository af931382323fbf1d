#include "model/MinuteMarkers.h"

#include "market/BubbleParser.h"
#include "market/MinuteChannel.h"

namespace vmr {

namespace {
template <class Point>
std::vector<Point> allPoints(const std::map<std::int64_t, std::vector<Point>>& byMinute) {
    std::vector<Point> out;
    for (const auto& [minute, points] : byMinute) out.insert(out.end(), points.begin(), points.end());
    return out;
}
}  // namespace

void MinuteMarkers::takeBubbles(JsonView payload, RepairTally& tally) {
    forEachMinute(payload, bubbleMinutes, tally, [this](std::int64_t minute, JsonView object) {
        bubbleByMin[minute] = BubbleParser::bubblePts(object, minute);
    });
    keepNewest(bubbleByMin, bubbleMinutes.keep);
    bubblePts = allPoints(bubbleByMin);
}

void MinuteMarkers::takeTriangles(JsonView payload, RepairTally& tally) {
    forEachMinute(payload, triangleMinutes, tally, [this](std::int64_t minute, JsonView object) {
        triByMin[minute] = BubbleParser::trianglePts(object, minute);
    });
    keepNewest(triByMin, triangleMinutes.keep);
    trianglePts = allPoints(triByMin);
}

}  // namespace vmr
