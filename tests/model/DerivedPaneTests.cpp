// A pane's derived data beside its steps: long rows, markers, session lines, overlays, and what is sampled when.
#include <algorithm>

#include "model/PaneFixture.h"
#include "perf/Perf.h"

namespace vmr {
namespace {

using namespace testing;

using DerivedPane = test::PaneFixture;

// Aggregate rows, and rows of two expirations out of four.
const std::string wholePatch =
    R"({"etfRatio":41,"spot":600,"expirations":["2026-06-17","2026-06-12","2026-06-10","2026-07-17"],)"
    R"("gexByStrike":[{"strike":601,"callGex":5,"putGex":1},{"strike":599,"callGex":"2","putGex":4}],)"
    R"("byExpiration":{"2026-06-12":{"gexByStrike":[{"strike":605,"callGex":9}]},)"
    R"("2026-06-10":{"gexByStrike":[{"strike":598,"callGex":1},{"strike":600,"callGex":2}]}}})";

std::vector<double> strikesOf(const AppModel& pane) {
    std::vector<double> out;
    for (const StrikeRow& row : pane.strikes.get()) out.push_back(row.strike);
    return out;
}

TEST_F(DerivedPane, LongRowsReadOnTheRelaysQueueEqualShortOnesReadHere) {
    AppModel& pane = openSymbol("NQ");
    std::string rows;
    for (int i = 12000; i > 0; --i)
        rows += (rows.empty() ? "" : ",") + (R"({"strike":)" + std::to_string(i) + R"(,"callGex":2})");
    snapshot("derived:QQQ", R"({"etfRatio":2,"gexByStrike":[)" + rows + "]}");
    ASSERT_EQ(pane.strikes->size(), 12000u);
    EXPECT_EQ(pane.strikes->front().strike, 1);
    EXPECT_EQ(pane.strikes->back().callGex, 2);
    event("derived:QQQ", R"({"gexByStrike":[{"strike":5}]})");
    EXPECT_THAT(strikesOf(pane), ElementsAre(5));
    // rows that came while an expiration was shown are there when it goes
    event("derived:QQQ",
          R"({"expirations":["2026-06-12"],"byExpiration":{"2026-06-12":{"gexByStrike":[{"strike":7}]}}})");
    snapshot("derived:QQQ", R"({"gexByStrike":[)" + rows + "]}");
    EXPECT_THAT(strikesOf(pane), ElementsAre(7));
    event("derived:QQQ", R"({"expirations":[]})");
    EXPECT_EQ(pane.strikes->size(), 12000u);
    event("derived:QQQ", R"({"gexByStrike":[{"strike":5}]})");
    event("derived:QQQ", R"({"etfRatio":3})");
    EXPECT_THAT(strikesOf(pane), ElementsAre(5));
}

TEST_F(DerivedPane, KeepsMarkersAndHistoriesByMinute) {
    AppModel& pane = openSymbol("NQ");
    snapshot("derived:gexBubbles:QQQ",
             R"({"bubbles":{"1781100060":{"s":600,"dom":2,"pos":1},"1781100000":{"s3":601}}})");
    event("derived:gexBubbles:QQQ", R"({"minuteTs":"1781100120.9","bubble":{"s":602,"s2":603}})");
    std::vector<std::pair<double, int>> bubbles;
    for (const BubblePt& p : pane.bubblePts.get()) bubbles.emplace_back(p.strike, p.rank);
    EXPECT_THAT(bubbles, ElementsAre(Pair(601, 2), Pair(600, 0), Pair(602, 0), Pair(603, 1)));
    for (int i = 0; i < 700; ++i)
        event("derived:hfTriangles:QQQ",
              R"({"minuteTs":)" + std::to_string(minute + i * 60) + R"(,"triangle":{"d":[[600,-10],[601,4]]}})");
    EXPECT_EQ(pane.triByMin.size(), 600u);
    EXPECT_EQ(pane.trianglePts->size(), 1200u);
    EXPECT_EQ(pane.trianglePts->front().minuteTs, minute + 100 * 60);
    EXPECT_EQ(pane.trianglePts->front().minuteMax, 10);
    event("derived:hfHistory:QQQ", R"({"candles":{"1781100000":{"c":5},"x":{"c":1}}})");
    EXPECT_EQ(pane.hfByMin.size(), 1u);

    event("derived:osc:QQQ", R"({"points":{"1781100000000":{"nq":1,"vix":"2.5"},"1781100060":{"nq":3}}})");
    EXPECT_TRUE(pane.oscLines->nq.empty());  // coalesced
    time.advance(1.0 / 100);
    EXPECT_EQ(pane.oscLines->nq, (std::vector<OscPt>{{1781100000, 1}, {1781100060, 3}}));
    EXPECT_EQ(pane.oscLines->vix, (std::vector<OscPt>{{1781100000, 2.5}}));
}

TEST_F(DerivedPane, SessionLinesFollowTheBarsAlsoAtTheCap) {
    AppModel& pane = openSymbol("NQ");
    snapshot(pane.chartChannel, test::flatBars(minute - 4999 * 60, 5000));
    time.advance(0.1);
    const auto before = pane.srLines->size();
    EXPECT_GT(before, 4u);
    event("derived:srlevels:NQ",
          R"({"sessions":{"x":{"sessionOpenTs":1781042400,"openPrice":100,"up":[{"i":1,"price":101}],"dn":[]}}})");
    EXPECT_EQ(pane.srLines->size(), before + 1);
    EXPECT_EQ(pane.srLines->back().label, "R1");
    // at the cap a new bar drops the oldest session's first bar, which moves that session's open line
    const auto open = pane.srLines->front().startTime;
    event(pane.chartChannel.get() + ":1m", test::flatBars(minute + 60, 1));
    EXPECT_EQ(pane.candles.size(), 5000u);
    EXPECT_EQ(pane.srLines->front().startTime, open + 60);
}

TEST_F(DerivedPane, OverlaysComeWithTheirDataAndGoWithTheirSetting) {
    AppModel& pane = openSymbol("NQ");
    snapshot(pane.chartChannel, test::flatBars(minute - 600 * 60, 600));
    snapshot(pane.secondaryChannel, test::flatBars(minute - 600 * 60, 600, 50));
    time.advance(1);
    EXPECT_EQ(pane.overlays().vwapMain.back().v, 100);
    ASSERT_FALSE(pane.overlays().secondCandles.empty());
    EXPECT_EQ(pane.overlays().secondCandles.back().c, 100);  // scaled onto the primary's open
    EXPECT_EQ(pane.overlays().secondCandles.back().realC, 50);
    GexConfig off = pane.config;
    off.vwapEnabled = off.showSecondary = false;
    pane.setConfig(off);
    time.advance(1);
    EXPECT_TRUE(pane.overlays().vwapMain.empty() && pane.overlays().secondCandles.empty());
}

TEST_F(DerivedPane, OverlaysAreHeldBackInADragAndOtherwiseCoalesced) {
    AppModel& pane = openSymbol("NQ");
    snapshot(pane.chartChannel, test::flatBars(minute - 600 * 60, 601));
    time.advance(1);
    int builds = 0;
    bool dragging = false;
    const auto heard = pane.overlaysChanged.connect([&] { ++builds; });
    pane.setRendererBridge({[&] { return dragging; }, {}});
    const std::string trades = pane.chartChannel.get() + ":trades";
    const auto trade = [&](int i) {
        event(trades,
              R"({"price":)" + std::to_string(100 + i % 7) + R"(,"ts":)" + std::to_string(minute * 1000 + i) + "}");
    };
    for (int i = 0; i < 500; ++i) trade(i);
    time.advance(1);
    EXPECT_GE(builds, 1);
    EXPECT_LE(builds, 2);  // at once if the last is long ago, and one trailing
    builds = 0;
    dragging = true;
    for (int i = 0; i < 50; ++i) trade(500 + i);
    time.advance(1);
    EXPECT_EQ(builds, 0);
    dragging = false;
    pane.interactionEnded();
    EXPECT_EQ(builds, 1);
    pane.interactionEnded();
    EXPECT_EQ(builds, 1);
}

TEST_F(DerivedPane, ATickLeavesTheGeometryOfTheSessionLinesAlone) {
    AppModel& pane = openSymbol("NQ");
    snapshot(pane.chartChannel, test::flatBars(minute - 3000 * 60, 3001));
    time.advance(1);
    OverlayLists seen;
    pane.setRendererBridge({{}, [&](const OverlayLists& lists) { seen = lists; }});
    EXPECT_FALSE(seen.lines.empty());
    EXPECT_FALSE(seen.sessionLines.empty());
    const auto revision = seen.sessionRevision;
    event(pane.chartChannel.get() + ":trades", R"({"price":105,"ts":1781100001000})");
    time.advance(1);
    EXPECT_EQ(seen.sessionRevision, revision);
    EXPECT_EQ(seen.origin.price, 100);
    event(pane.chartChannel.get() + ":trades", R"({"price":105,"ts":1781100061000})");
    time.advance(1);
    EXPECT_GT(seen.sessionRevision, revision);
    EXPECT_EQ(seen.origin.price, 105);
    GexConfig off = pane.config;
    off.sessionEnabled = false;
    pane.setConfig(off);
    time.advance(1);
    EXPECT_TRUE(seen.sessionLines.empty());
    pane.switchSymbol("ES");
    EXPECT_TRUE(seen.lines.empty());
}

TEST_F(DerivedPane, SamplesPressureOnlyWhileWantedAndSignedIn) {
    AppModel& pane = openSymbol("NQ");
    event("derived:QQQ", wholePatch);
    time.advance(5);
    EXPECT_TRUE(pane.hfp.samples.empty());
    GexConfig on = pane.config;
    on.hfPressure = true;
    pane.setConfig(on);
    time.advance(3.5);
    ASSERT_EQ(pane.hfp.samples.size(), 3u);
    EXPECT_EQ(pane.hfp.samples.back().band, (std::vector<double>{598, 600}));
    pane.signOut();
    time.advance(5);
    EXPECT_EQ(pane.hfp.samples.size(), 3u);
    signIn();
    greet();
    time.advance(2.5);
    EXPECT_EQ(pane.hfp.samples.size(), 5u);
}

TEST_F(DerivedPane, EveryTurnOfTheSamplerIsTimedAlsoWithoutRows) {
    std::string report;
    Perf perf(time, [&report](const std::string& line) { report = line; });
    auto around = surroundings();
    around.perf = &perf;
    model = std::make_unique<AppModel>(around);
    signIn();
    greet();
    GexConfig on = model->config;
    on.hfPressure = true;
    model->setConfig(on);
    time.advance(2.5);
    EXPECT_TRUE(model->hfp.samples.empty());
    perf.frame(1);
    EXPECT_THAT(report, HasSubstr("hfpSample"));
    model.reset();
}

TEST_F(DerivedPane, BuildsTheSurfaceAtMostEveryThreeSecondsWhileOpen) {
    AppModel& pane = openSymbol("NQ");
    event("derived:QQQ", wholePatch);
    EXPECT_FALSE(pane.gex3D.get());
    pane.setGex3DActive(true);
    ASSERT_TRUE(pane.gex3D.get());
    EXPECT_EQ(pane.gex3D.get()->strikes, (std::vector<double>{598, 600, 605}));
    EXPECT_EQ(pane.gex3D.get()->expLabels.size(), 4u);
    time.advance(2.9);
    event("derived:QQQ", R"({"spot":590})");
    EXPECT_EQ(pane.gex3D.get()->spot, 600);
    time.advance(0.1);
    event("derived:QQQ", R"({"spot":595})");
    EXPECT_EQ(pane.gex3D.get()->spot, 595);
    pane.setGex3DActive(false);
    time.advance(10);
    event("derived:QQQ", R"({"spot":600})");
    EXPECT_EQ(pane.gex3D.get()->spot, 595);
}

TEST_F(DerivedPane, ARestoreIsShownAtOnceInARunningPane) {
    AppModel& pane = openSymbol("NQ");
    pane.applyRestore({"ES", 5, "INDEX"});
    EXPECT_EQ(pane.currentSymbol(), "ES");
    EXPECT_EQ(pane.timeframe, 5);
    EXPECT_EQ(pane.levelsChannel.get(), "derived:SPX");
}

}  // namespace
}  // namespace vmr
