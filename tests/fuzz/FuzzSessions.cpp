// Any JSON as oscillator and support/resistance payloads, and as the bars, flow and levels that overlays are made of.
#include "FuzzEntry.h"
#include "market/CandleParser.h"
#include "market/MinuteChannel.h"
#include "market/OscParser.h"
#include "market/SessionLines.h"
#include "model/OverlayBuilder.h"

namespace vmr::fuzz {
namespace {

void drawOverlays(const std::vector<Candle>& bars, const HfByMin& flow, const SRSessions& levels) {
    static SessionTime session;
    OverlayBuilder builder(session);
    OverlaySettings on;
    on.vwapEnabled = on.vwapNyEnabled = on.showSecondary = on.hfEnabled = on.vixEnabled = on.ema1Enabled = true;
    on.ema1Period = 3;
    on.vixSmooth = 3;
    on.hfFallbackScale = on.vixScale = 1e-3;
    std::vector<Candle> fewer = bars;
    for (int round = 0; round < 3 && !fewer.empty(); ++round, fewer.pop_back()) {
        builder.update({fewer, bars, bars, flow, levels, 0, on});
        require(builder.series().ema1.size() == (fewer.size() < 2 ? 0 : fewer.size()));
        require(builder.series().hfLine.size() <= fewer.size());
    }
    builder.update({bars, bars, bars, flow, levels, 0, on});
}
}  // namespace

void take(std::string_view text) {
    const auto json = Json::parse(text);
    if (!json) return;
    survives([&] {
        OscByMin minutes;
        OscParser::merge(*json, minutes);
        const OscLines lines = OscParser::build(minutes);
        require(lines.nq.size() <= minutes.size());
        for (std::size_t i = 1; i < lines.net.size(); ++i) require(lines.net[i - 1].t < lines.net[i].t);
    });
    survives([&] {
        SRSessions levels;
        RepairTally tally(strict());
        SRLevelsParser::merge(*json, levels, tally);
        require(!levels.contains(0));
        const auto bars = CandleParser::merge({}, CandleParser::parse(*json, tally), 500);
        for (const int hhmm : {1800, 930, -1})
            require(SessionLines::build(bars, levels, hhmm).empty() == (bars.size() < 2));
        HfByMin flow;
        forEachMinute(*json, hfHistoryMinutes, tally, [&flow](std::int64_t minute, JsonView object) {
            flow[minute] = HfHistoryParser::hfCandle(object);
        });
        drawOverlays(bars, flow, levels);
    });
}

}  // namespace vmr::fuzz
