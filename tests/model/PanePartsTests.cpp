// Parts of a pane by themselves.
#include "model/Catalog.h"
#include "model/ChartChannels.h"
#include "model/HfScales.h"
#include "model/HfpSampling.h"
#include "model/LiveBars.h"
#include "model/MinuteMarkers.h"
#include "model/Notices.h"
#include "model/OptionsData.h"
#include "model/Oscillator.h"
#include "model/Overlays.h"
#include "model/PaneLog.h"
#include "model/SessionLevels.h"
#include "model/Surface3D.h"
#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

constexpr std::int64_t minute = 1781100000;  // Wednesday 2026-06-10 10:00 New York

class PaneParts : public testing::Test {
 protected:
    static Json json(const char* text) { return Json::parse(text).value(); }

    TestTime time{static_cast<double>(minute)};
    TestQueue main{time};
    PaneWork work{main};
    SessionTime session;
    UuidSource ids{1};
};

TEST_F(PaneParts, BarsRollInOpenMarketAndDropTheOldestBeyondTheCap) {
    LiveBars bars(work, session);
    EXPECT_FALSE(bars.rollForward(minute, false)) << "nothing to go on from";
    for (int i = 0; i < 5000; ++i) bars.candles.push_back({minute - (5000 - i) * 60, 1, 1, 1, 2, 3});
    EXPECT_TRUE(bars.rollForward(minute + 0.5, false));
    EXPECT_FALSE(bars.rollForward(minute + 59.9, false)) << "once a minute";
    EXPECT_EQ(bars.candles.back(), (Candle{minute, 2, 2, 2, 2, 0}));
    EXPECT_EQ(bars.candles.size(), 5000u);
    EXPECT_EQ(bars.candles.front().time, minute - 4999 * 60);
    EXPECT_FALSE(bars.rollForward(minute + 6.5 * 3600, true)) << "stocks are closed at half past four";
}

TEST_F(PaneParts, ThePriceRisesOrFallsFromRebuildToRebuild) {
    LiveBars bars(work, session);
    bars.candles = {{minute, 5, 5, 5, 5, 0}};
    std::vector<bool> rising;
    for (const double price : {5.0, 4.0, 4.5, 4.5}) {
        EXPECT_EQ(bars.applyTrade(price, minute * 1000.0), TradeEffect::edited);
        time.advance(0.1);
        rising.push_back(bars.priceRising);
    }
    EXPECT_THAT(rising, ElementsAre(true, false, true, true));
    EXPECT_EQ(bars.applyTrade(1, (minute - 60) * 1000.0), TradeEffect::tooOld);
}

TEST_F(PaneParts, FieldsGoWithTheChartAndWhatWasMadeOfThemStays) {
    OptionsData options(ids);
    options.takeDerived(json(R"({"etfRatio":40,"callWallStrike":610,"gexByStrike":[{"strike":600}]})"), nullptr,
                        minute);
    options.takeSecondaryGex(json(R"({"etfRatio":2,"gexByStrike":[{"strike":24600}]})"));
    EXPECT_EQ(options.levels->front().price, 24400);
    options.open();
    EXPECT_TRUE(options.derivedFields.empty() && options.secondaryGexFields.empty() && options.levels->empty() &&
                options.secStrikes->empty());
    EXPECT_THAT(options.strikes.get(), ElementsAre(StrikeRow{600}));
    EXPECT_EQ(std::pair(options.etfRatio.get(), options.secEtfRatio.get()), std::pair(40.0, 2.0));
}

TEST_F(PaneParts, MarkersStandInTheOrderOfTheirMinutes) {
    MinuteMarkers markers;
    markers.takeBubbles(json(R"({"bubbles":{"1781100060":{"s":2},"1781100000":{"s":1}}})"));
    EXPECT_EQ(std::pair(markers.bubblePts->size(), markers.bubblePts->front().strike), std::pair(std::size_t{2}, 1.0));
    markers.open();
    EXPECT_TRUE(markers.bubblePts->empty());
}

TEST_F(PaneParts, ABurstOfOscillatorMinutesCostsOneRebuild) {
    Oscillator oscillator(work);
    int heard = 0;
    const auto link = oscillator.oscLines.changed.connect([&] { ++heard; });
    for (int i = 0; i < 50; ++i) oscillator.take(json(R"({"points":{"1781100000":{"nq":1},"1781100060":{"nq":2}}})"));
    time.advance(1);
    EXPECT_EQ(heard, 1);
    EXPECT_THAT(oscillator.oscLines->nq, ElementsAre(OscPt{minute, 1}, OscPt{minute + 60, 2}));
}

TEST_F(PaneParts, LinesAreBuiltAnewWhenABarComesOrGoes) {
    SessionLevels levels;
    std::vector<Candle> candles{{minute, 1, 1, 1, 1, 0}, {minute + 60, 1, 1, 1, 1, 0}};
    levels.rebuildIfBarChanged(candles, 930);
    const auto revision = levels.srLines.revision();
    levels.take(json(R"({"sessions":{"1781098200":{"openPrice":1,"up":[{"i":1,"price":101}]}}})"));
    levels.rebuildIfBarChanged(candles, 930);
    EXPECT_EQ(levels.srLines.revision(), revision) << "a tick";
    for (Candle& bar : candles) bar.time += 60;
    levels.rebuildIfBarChanged(candles, 930);
    EXPECT_GT(levels.srLines.revision(), revision) << "as many bars, but others";
}

TEST_F(PaneParts, OverlaysWaitForTheEndOfADragAndOfTheLastRebuildsShare) {
    std::vector<Candle> bars{{minute, 1, 1, 1, 1, 5}, {minute + 60, 1, 1, 1, 1, 5}}, none;
    const SRSessions noSessions;
    OverlaySettings settings;
    settings.vwapEnabled = true;
    Overlays* made = nullptr;
    Overlays overlays({.clock = time, .work = work, .session = session, .input = [&]() -> OverlayInput {
                           return {bars, none, none, made->hfByMin, noSessions, made->sideRevision(), settings};
                       }});
    made = &overlays;
    StillChart drag;
    drag.dragged = true;
    overlays.setChartPort(&drag);
    overlays.schedule();
    EXPECT_EQ(overlays.revision(), 0u);
    drag.dragged = false;
    overlays.interactionEnded();
    EXPECT_EQ(overlays.revision(), 1u) << "at once";
    bars.back().close = 2;
    overlays.schedule();
    overlays.schedule();
    EXPECT_EQ(overlays.revision(), 1u) << "a moment later";
    time.advance(1);
    EXPECT_EQ(overlays.revision(), 2u) << "one for both";
    overlays.schedule();
    EXPECT_EQ(overlays.revision(), 2u) << "nothing is another";
    bars.back().close = 3;
    overlays.schedule();
    work.openNext();
    overlays.open();
    time.advance(1);
    EXPECT_EQ(overlays.revision(), 3u) << "emptied, and the rebuild that was due is the former chart's";
    EXPECT_TRUE(overlays.series().vwapMain.empty());
}

TEST_F(PaneParts, TheSurfaceIsBuiltWhileItsViewIsOpen) {
    Surface3D surface(time);
    DerivedFields fields;
    const Json payload =
        json(R"({"spot":600,"expirations":["2026-06-10"],"gexByStrike":[{"strike":598},{"strike":600}]})");
    for (const auto& [key, value] : payload.members()) fields[std::string(key)] = payload.at(value);
    surface.rebuild({}, 1, fields, true);
    EXPECT_EQ(surface.gex3D.get(), std::nullopt);
    surface.setActive(true);
    surface.rebuild({}, 1, fields, false);
    ASSERT_TRUE(surface.gex3D.get());
    surface.open();
    EXPECT_EQ(surface.gex3D.get(), std::nullopt);
    surface.rebuild({}, 1, fields, false);
    EXPECT_TRUE(surface.gex3D.get()) << "the pace is kept within a chart alone";
}

TEST_F(PaneParts, SamplesLastAsLongAsTheChart) {
    HfpSampling hfp;
    hfp.take({{.strike = 5, .callHf = 2}}, 5, minute);
    hfp.take({{.strike = 5, .callHf = 2}}, 5, minute + Hfp::retention + 1);
    EXPECT_EQ(hfp.samples.size(), 1u);
    hfp.open();
    EXPECT_TRUE(hfp.samples.empty());
}

TEST_F(PaneParts, ALaterNoticeHasItsOwnTime) {
    Notices notices(work);
    notices.flashToast("first");
    time.advance(2);
    notices.flashToast("second", "detail");
    time.advance(2);
    EXPECT_EQ(notices.toast.get(), (ToastMsg{"second", "detail"}));
    time.advance(0.5);
    EXPECT_EQ(notices.toast.get(), std::nullopt);
}

TEST_F(PaneParts, ChannelsNameNothingOfASourceThatIsNotThere) {
    HfScales named;
    named.set("NQ", 3);
    const auto of = [&](const char* source) {
        return chartChannels({"futures:NQM6", source, Catalog(), "BOTH", "1d", named, 7});
    };
    EXPECT_EQ(of("derived:QQQ").hfScale, 3) << "the one named";
    EXPECT_EQ(of("").hfScale, 7) << "the former chart's";
    EXPECT_EQ(of("").vixChannel, "indices:I:VIX1D:1m");
    EXPECT_EQ(of("").secondaryGexChannel + of("").oscChannel, "");
}

TEST_F(PaneParts, TheLogKeepsTheNewestAndPrintsArrows) {
    std::vector<std::string> printed;
    PaneLog log(time, ids, [&](const std::string& line) { printed.push_back(line); });
    for (int i = 0; i < 502; ++i) log.append(i == 7 ? "→ opened" : std::to_string(i));
    EXPECT_THAT(printed, ElementsAre("[app] → opened"));
    EXPECT_EQ(log.logLines.size(), PaneLog::maxLogLines);
    EXPECT_EQ(log.logLines.front().text, "2");
}

}  // namespace
}  // namespace vmr::test
