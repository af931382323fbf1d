// A pane's data beside its steps: what the clock adds, what is prepared elsewhere, held back, coalesced or sampled, and
// what listeners see when a chart is opened.
#include <fmt/format.h>

#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <set>

#include "chart/HfPressure.h"
#include "relay/DerivedBench.h"
#include "support/pane/TestPane.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace vmr::test {
namespace {

using testing::ElementsAre;

using PaneData = PaneFixture;
using PaneOpening = PaneFixture;

TEST_F(PaneData, AFlatBarComesOnlyWhileConnected) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    sockets.last().close(1006);
    time.advance(0.5);
    time.setNow(minute + 300);
    model->rollForwardBarIfNeeded();
    EXPECT_EQ(model->bars.candles.size(), 1u) << "not while the connection is down";
    time.advance(0.5);
    greet();
    event("any", "1");
    EXPECT_EQ(model->bars.candles.size(), 2u) << "with the first message after it";
    EXPECT_EQ(model->bars.candles.back().time, minute + 300) << "one bar; the missing minutes stay missing";
    for (const int second : {360, 420}) {  // the clock jumps ahead of the timer
        time.setNow(minute + second);
        batch("any", "[1,2]");
        EXPECT_EQ(model->bars.candles.back().time, minute + second);
    }
}

TEST_F(PaneData, LongRowsReadOnTheRelaysQueueEqualShortOnesReadHere) {
    AppModel& pane = openSymbol("NQ");
    std::string rows;
    for (int i = 12000; i > 0; --i) rows += R"({"strike":)" + std::to_string(i) + R"(,"callGex":2},)";
    rows = R"({"etfRatio":2,"gexByStrike":[)" + rows + R"({"strike":0}]})";
    snapshot("derived:QQQ", rows);
    EXPECT_EQ(pane.options.strikes->size(), 12001u);
    EXPECT_EQ(pane.options.strikes->front().strike, 0);
    EXPECT_LT(pane.options.derivedFields["etfRatio"].documentBytes(), 1000u)
        << "a small field does not hold the whole message";
    // rows that came while an expiration was shown are there when it goes, the newest
    const auto expectAfterExpiration = [&](const std::string& newest, std::size_t count) {
        event("derived:QQQ",
              R"({"expirations":["2026-06-12"],"byExpiration":{"2026-06-12":{"gexByStrike":[{"strike":7}]}}})");
        snapshot("derived:QQQ", rows);
        event("derived:QQQ", newest);
        EXPECT_THAT(pane.options.strikes.get(), ElementsAre(StrikeRow{7}));
        event("derived:QQQ", R"({"expirations":[]})");
        EXPECT_EQ(pane.options.strikes->size(), count);
    };
    expectAfterExpiration(R"({"etfRatio":3})", 12001);
    expectAfterExpiration(R"({"gexByStrike":[{"strike":5}]})", 1);
}

TEST_F(PaneData, ABurstCostsOneRebuildAndADragNone) {
    AppModel& pane = openSymbol("NQ");
    snapshot(pane.channels->chartChannel, flatBars(minute - 3000 * 60, 3001));
    StillChart chart;
    pane.setChartPort(&chart);
    std::array<std::uint64_t, 3> rebuilds;
    const auto heard = pane.bars.chartVersionChanged.connect([&] { ++rebuilds[0]; });
    const auto heardToo = pane.overlays.overlaysChanged.connect([&] { ++rebuilds[1]; });
    const auto lines = [&] { return pane.chartContent().revisions.srLines; };
    // of the bars, of the overlays and of the session lines
    const auto rebuildsOf = [&](int trades, std::int64_t second) {
        time.advance(1);
        rebuilds = {0, 0, lines()};
        for (int i = 0; i < trades; ++i) pane.applyTrade(100 + i % 7, static_cast<double>(second) * 1000 + i);
        EXPECT_EQ(rebuilds[0], 0u);
        time.advance(1.0 / 120);
        rebuilds[2] = lines() - rebuilds[2];
        return rebuilds;
    };
    EXPECT_THAT(rebuildsOf(500, minute), ElementsAre(1, 1, 0));
    EXPECT_THAT(rebuildsOf(500, minute + 60), ElementsAre(1, 1, 0)) << "the lines run on over the new bar";
    const auto before = lines();
    event("derived:srlevels:NQ", R"({"sessionOpenTs":1781042400,"up":[{"price":101}]})");
    time.advance(1);
    EXPECT_GT(lines(), before) << "new levels";
    snapshot(pane.channels->secondaryChannel, flatBars(minute, 1));
    time.advance(1);
    rebuilds[1] = 0;
    for (const std::int64_t t : {minute + 60, minute + 60, minute}) {  // opens a bar, changes it, is too old
        pane.applySecondaryTrade(101, static_cast<double>(t) * 1000);
        time.advance(1);
    }
    EXPECT_EQ(rebuilds[1], 2u);
    chart.dragged = true;
    EXPECT_THAT(rebuildsOf(50, minute + 120), ElementsAre(1, 0, 0));
    chart.dragged = false;
    pane.interactionEnded();
    pane.interactionEnded();
    EXPECT_EQ(rebuilds[1], 1u);
}

TEST_F(PaneData, SamplesPressureWhileWantedAndBuildsTheSurfaceAtMostEveryThreeSeconds) {
    AppModel& pane = openSymbol("NQ");
    const std::string rows =
        R"({"spot":600,"expirations":["2026-06-10"],"gexByStrike":[{"strike":598},{"strike":600}]})";
    const auto set = [&](const char* vixMode, bool pressure) {
        GexConfig changed = pane.config;
        changed.vixMode = vixMode;
        changed.hfPressure = pressure;
        pane.setConfig(changed);
        event("derived:QQQ", rows);
    };
    snapshot("indices:I:VIX", flatBars(minute, 1));
    set("1d", true);  // both at once, which opens the chart anew
    EXPECT_EQ(pane.channels->subscribedChans[6], "indices:I:VIX1D");
    EXPECT_TRUE(pane.bars.vixCandles.empty());
    EXPECT_EQ(pane.surface.gex3D.get(), std::nullopt) << "its view is closed";
    pane.setGex3DActive(true);
    const auto spotAfter = [&](double seconds, const char* patch) {
        time.advance(seconds);
        event("derived:QQQ", patch);
        return pane.surface.gex3D.get()->spot;
    };
    EXPECT_EQ(spotAfter(2.9, R"({"spot":590})"), 600);
    EXPECT_EQ(spotAfter(0.1, R"({"spot":595})"), 595);
    EXPECT_EQ(pane.hfp.samples.size(), 3u);
    pane.surface.markedStrike = 598;
    EXPECT_EQ(pane.chartContent().markedStrike, 598);
    set("30d", false);
    EXPECT_EQ(pane.channels->subscribedChans[6], "indices:I:VIX");
    EXPECT_EQ(pane.surface.markedStrike.get(), std::nullopt) << "it was another chart's";
    pane.surface.markedStrike = 600;
    pane.setGex3DActive(false);
    EXPECT_EQ(pane.chartContent().markedStrike, std::nullopt) << "it goes with the view";
    pane.setGex3DActive(true);
    EXPECT_EQ(pane.surface.gex3D.get()->spot, 600) << "another chart does not wait for the pace";
    time.advance(5);
    EXPECT_TRUE(pane.hfp.samples.empty());
    set("30d", true);
    time.advance(1);
    EXPECT_EQ(pane.hfp.samples.size(), 1u);
    pane.reloadChart();
    time.advance(2);
    EXPECT_TRUE(pane.hfp.samples.empty()) << "the rows are still the former chart's";
    pane.signOut();
    time.advance(5);
    EXPECT_TRUE(pane.hfp.samples.empty());
}

// Bytes in use; 0 where the C library does not tell.
std::size_t heapInUse() {
#ifdef __GLIBC__
    return mallinfo2().uordblks;
#else
    return 0;
#endif
}

// The practice market's own rows, at 60 times the speed: 40 minutes, which fill the history, and as many again.
TEST(PanePressure, HistoryKeepsItsSizeOnAFastMarket) {
    TestPane at(TestPane::wednesdayAt10, 60);
    relay::test::DerivedBench market;
    AppModel& pane = at.openSymbol("NQ");
    GexConfig config = pane.config;
    config.hfPressure = true;
    pane.setConfig(config);
    const auto run = [&](int minutes) {
        for (int i = 0; i < minutes; ++i) {
            const auto now = static_cast<std::int64_t>(at.time.now() * 1000);
            at.event("derived:QQQ", market.snapshot("derived:QQQ", now).dump());
            at.time.advance(1);
        }
        pane.log.clear();
        return heapInUse();
    };
    const auto document = [&] { return nlohmann::json::parse(at.documentWithoutLog())["panes"][0]["hfPressure"]; };
    EXPECT_EQ(document()["readouts"]["putShare"], "—");
    const std::size_t held = run(40);
    EXPECT_LE(pane.hfp.samples.size(), 1801U);
    EXPECT_GE(pane.hfp.samples.size(), 1790U);
    EXPECT_GE(pane.hfp.samples.front().t, at.time.now() - 1801);
    EXPECT_LT(run(40), held + 300000) << "bytes";

    pane.setPressureWindow(30);
    pane.setPressureWindow(30);
    EXPECT_EQ(std::count(at.printed.begin(), at.printed.end(), "[hfp] window → 30m"), 2) << "each is told";
    const nlohmann::json told = document();
    EXPECT_EQ(told["visible"], 601);
    EXPECT_EQ(told["window"], 30);
    EXPECT_EQ(told["open"], true);
    EXPECT_EQ(told["strip"], nullptr) << "nothing shows it";
    ASSERT_EQ(told["ladder"].size(), 5U);
    const HfpSample& last = pane.hfp.samples.back();
    for (std::size_t i = 0; i < 5; ++i) {
        const nlohmann::json& box = told["ladder"][i];
        EXPECT_EQ(box["strike"], HfPressure::strikeText(last.band[i]).text());
        EXPECT_EQ(box["put"], HfPressure::fmt(last.atmAt(last.band[i])->put).text());
        EXPECT_EQ(box["atm"], i == 2);
    }
    EXPECT_EQ(told["readouts"]["put"], HfPressure::fmt(last.put).text());
    const double steps = told["plot"]["top"].get<double>() / told["plot"]["step"].get<double>();
    EXPECT_NEAR(steps, std::round(steps), 1e-9);
    EXPECT_EQ(told["plot"]["ticks"].size(), static_cast<std::size_t>(std::round(steps)) + 1);
    EXPECT_EQ(told["plot"]["ticks"][0], "0");
}

TEST_F(PaneData, ALaterVolatilityBarOrFlipStrikeReachesTheChartByItself) {
    AppModel& pane = openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 60, 2, 24600));
    snapshot("indices:I:VIX", flatBars(minute - 60, 2, 17));
    time.advance(1);
    const std::vector<OvPoint> first = pane.chartContent().overlays->vixLine;
    EXPECT_EQ(first.size(), 2u);
    event("indices:I:VIX:1m", flatBars(minute, 1, 18));
    time.advance(1);
    EXPECT_NE(pane.chartContent().overlays->vixLine, first);
    event("derived:QQQ", R"({"gammaFlipStrike":600,"gexByStrike":[{"strike":600}]})");
    StillChart chart;
    pane.setChartPort(&chart);
    const int told = chart.told;
    const auto before = pane.chartContent().revisions;
    event("derived:QQQ", R"({"gammaFlipStrike":601})");
    EXPECT_EQ(chart.told, told + 1);
    EXPECT_GT(pane.chartContent().revisions.strikes, before.strikes);
    EXPECT_EQ(pane.chartContent().flipStrike, 601);
    event("derived:QQQ", R"({"gammaFlipStrike":"601"})");
    EXPECT_EQ(chart.told, told + 1) << "the same value is no news";
}

TEST_F(PaneOpening, WhatComesWithAChartIsPublishedAtOnce) {
    AppModel& m = openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 600, 11));
    event("derived:QQQ", R"({"etfRatio":1,"callWallStrike":610,"gexByStrike":[{"strike":600}]})");
    event("derived:gexBubbles:QQQ", R"({"bubbles":{"1781100000":{"s":600}}})");
    event("derived:srlevels:NQ", R"({"sessions":{"1781042400":{"openPrice":1,"up":[{"i":1,"price":101}]}}})");
    time.advance(1);
    // the pane's whole state and its chart, as of each notice
    const auto state = [&] { return fmt::format("{} {}", m.chartContent().candles.size(), documentWithoutLog()); };
    std::set<std::string> heard;
    int opened = 0;
    std::vector<Connection> links;
    for (Signal<>* signal : {&m.config.changed, &m.log.logChanged, &m.channels.changed, &m.bars.displayCandles.changed,
                             &m.bars.chartVersionChanged, &m.options.levels.changed, &m.options.strikes.changed,
                             &m.options.hud.changed, &m.markers.bubblePts.changed, &m.oscillator.oscLines.changed,
                             &m.sessionLevels.srLines.changed, &m.overlays.overlaysChanged, &m.hfp.changed})
        links.push_back(signal->connect([&] { heard.insert(state()); }));
    links.push_back(m.channels.changed.connect([&] { ++opened; }));
    StillChart chart;
    m.setChartPort(&chart);
    m.switchSymbol("AAPL");
    EXPECT_THAT(heard, ElementsAre(state()));
    EXPECT_EQ(opened, 1);
    EXPECT_GT(chart.told, 1);
    m.switchSymbol("NQ");
    const auto number = m.chartNumber();
    heard.clear();
    GexConfig other = m.config;
    other.vixMode = "1d";
    m.setConfig(other);
    EXPECT_THAT(heard, ElementsAre(state()));
    m.reloadChart();
    EXPECT_EQ(m.chartContent().chart, number + 2) << "each a chart of its own";
}

TEST_F(PaneOpening, NothingOfTheFormerChartIsLeft) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 60, 2));
    time.advance(1);
    model->applyTrade(200, minute * 1000.0);  // display, overlays and oscillator are to be rebuilt
    model->overlays.schedule();
    event("derived:osc:QQQ", R"({"points":{"1781100000":{"nq":1}}})");
    model->reloadChart();
    const auto version = model->bars.chartVersion;
    int heard = 0;
    const std::array links{model->oscillator.oscLines.changed.connect([&] { ++heard; }),
                           model->overlays.overlaysChanged.connect([&] { ++heard; })};
    time.advance(1);
    EXPECT_EQ(model->bars.chartVersion, version);
    EXPECT_EQ(heard, 0);
    snapshot("futures:NQM6", flatBars(minute, 1));
    model->applyTrade(201, minute * 1000.0);
    event("derived:osc:QQQ", R"({"points":{"1781100060":{"nq":2}}})");
    time.advance(1);
    EXPECT_EQ(model->bars.displayCandles->back().close, 201) << "the new chart's own work is done";
    EXPECT_THAT(model->oscillator.oscLines->nq, ElementsAre(OscPt{minute + 60, 2})) << "its own minute alone";
}

// What of a chart is looked at again when a setting changes. A plot that is drawn by the processor shows new data at
// leisure, and what a hand does at once.
TEST_F(PaneOpening, ASettingRaisesWhatDependsOnIt) {
    AppModel& pane = openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 6000, 101));
    time.advance(1);
    const struct {
        const char *key, *value;
        bool look, overlays;
    } cases[] = {{"oscHeight", "300", false, false},
                 {"ema1Color", R"("#123456")", true, false},
                 {"gexOpacity", "30", true, false},
                 {"lineOpacity", "30", true, false},
                 {"ema1Enabled", "true", true, true},
                 {"vwapEnabled", "false", true, true},
                 {"sessionStart", "930", true, true},
                 {"hfScaleBySymbol", R"({"AAPL":3})", false, false},
                 {"hfScaleBySymbol", R"({"NQ":3})", true, true}};
    int rebuilt = 0;
    const auto link = pane.overlays.overlaysChanged.connect([&] { ++rebuilt; });
    for (const auto& c : cases) {
        const auto before = pane.chartContent().revisions;
        GexConfig changed = pane.config;
        ASSERT_EQ(changed.set(c.key, c.value), std::nullopt);
        pane.setConfig(changed);
        time.advance(1);
        const auto after = pane.chartContent().revisions;
        EXPECT_EQ(after.look != before.look, c.look) << c.key;
        EXPECT_EQ(std::exchange(rebuilt, 0), c.overlays ? 1 : 0) << c.key << c.value;
        EXPECT_EQ(after.candles, before.candles) << c.key;
    }
    const auto look = pane.chartContent().revisions.look;
    pane.applyTrade(150, time.now() * 1000);
    time.advance(1);
    EXPECT_EQ(std::pair(pane.chartContent().revisions.look, rebuilt), std::pair(look, 1)) << "new data is no look";
}

}  // namespace
}  // namespace vmr::test
