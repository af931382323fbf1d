// The per-minute channels of the options source, the oscillator, and the lines of the sessions.
#include "market/BubbleParser.h"
#include "market/MinuteChannel.h"
#include "market/SessionLines.h"
#include "model/AppModel.h"

namespace vmr {

namespace {
constexpr double oscPace = 1.0 / 120;  // seconds

template <class Point>
std::vector<Point> allPoints(const std::map<std::int64_t, std::vector<Point>>& byMinute) {
    std::vector<Point> out;
    for (const auto& [minute, points] : byMinute) out.insert(out.end(), points.begin(), points.end());
    return out;
}
}  // namespace

void AppModel::takeHfHistory(JsonView payload) {
    forEachMinute(payload, hfHistoryMinutes,
                  [this](std::int64_t minute, JsonView bar) { hfByMin[minute] = HfHistoryParser::hfCandle(bar); });
    keepNewest(hfByMin, hfHistoryMinutes.keep);
    ++sideRevision_;
    scheduleOverlays();
}

void AppModel::takeBubbles(JsonView payload) {
    forEachMinute(payload, bubbleMinutes, [this](std::int64_t minute, JsonView object) {
        bubbleByMin[minute] = BubbleParser::bubblePts(object, minute);
    });
    keepNewest(bubbleByMin, bubbleMinutes.keep);
    bubblePts = allPoints(bubbleByMin);
}

void AppModel::takeTriangles(JsonView payload) {
    forEachMinute(payload, triangleMinutes, [this](std::int64_t minute, JsonView object) {
        triByMin[minute] = BubbleParser::trianglePts(object, minute);
    });
    keepNewest(triByMin, triangleMinutes.keep);
    trianglePts = allPoints(triByMin);
}

void AppModel::takeOscillator(JsonView payload) {
    OscParser::merge(payload, oscByMin);
    keepNewest(oscByMin, OscParser::minutesCap);
}

void AppModel::scheduleOscRebuild() {
    if (oscRebuildScheduled_) return;
    oscRebuildScheduled_ = true;
    at_.main.after(oscPace, [this, weak = std::weak_ptr(alive_)] {
        if (weak.expired()) return;
        oscRebuildScheduled_ = false;
        oscLines.edit([this](OscLines& lines) { OscParser::build(oscByMin, lines); });
    });
}

void AppModel::takeSupportResistance(JsonView payload) {
    SRLevelsParser::merge(payload, srSessions);
    ++sideRevision_;
    rebuildSRLines();
    scheduleOverlays();
}

void AppModel::rebuildSRLines() {
    srLines = SessionLines::build(candles, srSessions, sessionHHMM());
    ++srLinesRevision_;
    srLinesBars_ = {candles.size(), candles.empty() ? 0 : candles.back().time};
}

// At the cap the count stands still, so the last bar's time counts as well.
void AppModel::rebuildSRLinesIfBarChanged() {
    const std::pair<std::size_t, std::int64_t> now{candles.size(), candles.empty() ? 0 : candles.back().time};
    if (now != srLinesBars_) rebuildSRLines();
}

}  // namespace vmr
