// A pane's derived data beside its steps: long rows, markers, session lines, overlays, and what is sampled when.
#include "model/PaneFixture.h"

namespace vmr {
namespace {

using namespace testing;

using DerivedPane = test::PaneFixture;

// Rows of two expirations.
const std::string wholePatch =
    R"({"etfRatio":41,"spot":600,"expirations":["2026-06-12","2026-06-10"],"byExpiration":{)"
    R"("2026-06-12":{"gexByStrike":[{"strike":605}]},"2026-06-10":{"gexByStrike":[{"strike":598},{"strike":600}]}}})";

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

TEST_F(DerivedPane, KeepsTheNewestMinutesOfMarkersAndCoalescesTheOscillator) {
    AppModel& pane = openSymbol("NQ");
    for (int i = 0; i < 700; ++i)
        event("derived:hfTriangles:QQQ",
              R"({"minuteTs":)" + std::to_string(minute + i * 60) + R"(,"triangle":{"d":[[600,-10],[601,4]]}})");
    EXPECT_EQ(pane.trianglePts->size(), 1200u);
    EXPECT_EQ(pane.trianglePts->front().minuteTs, minute + 100 * 60);
    event("derived:osc:QQQ", R"({"points":{"1781100000000":{"nq":1,"vix":"2.5"},"1781100060":{"nq":3}}})");
    EXPECT_TRUE(pane.oscLines->nq.empty());  // coalesced
    time.advance(1.0 / 100);
    EXPECT_EQ(pane.oscLines->nq, (std::vector<OscPt>{{1781100000, 1}, {1781100060, 3}}));
}

TEST_F(DerivedPane, SessionLinesFollowTheBarsAlsoAtTheCap) {
    AppModel& pane = openSymbol("NQ");
    snapshot(pane.chartChannel, test::flatBars(minute - 4999 * 60, 5000));
    time.advance(0.1);
    // at the cap a new bar drops the oldest session's first bar, which moves that session's open line
    const auto open = pane.srLines->front().startTime;
    event(pane.chartChannel.get() + ":1m", test::flatBars(minute + 60, 1));
    EXPECT_EQ(pane.candles.size(), 5000u);
    EXPECT_EQ(pane.srLines->front().startTime, open + 60);
}

TEST_F(DerivedPane, OverlaysAreHeldBackInADragAndOtherwiseCoalesced) {
    AppModel& pane = openSymbol("NQ");
    snapshot(pane.chartChannel, test::flatBars(minute - 600 * 60, 601));
    time.advance(1);
    int builds = 0;
    bool dragging = false;
    const auto heard = pane.overlaysChanged.connect([&] { ++builds; });
    pane.setRendererBridge({[&] { return dragging; }, {}});
    const auto trade = [&](int i) { pane.applyTrade(100 + i % 7, static_cast<double>(minute) * 1000 + i); };
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
    const auto revision = seen.sessionRevision;
    event(pane.chartChannel.get() + ":trades", R"({"price":105,"ts":1781100001000})");
    time.advance(1);
    EXPECT_EQ(seen.sessionRevision, revision);
    event(pane.chartChannel.get() + ":trades", R"({"price":105,"ts":1781100061000})");
    time.advance(1);
    EXPECT_GT(seen.sessionRevision, revision);
    EXPECT_FALSE(seen.sessionLines.empty());
    pane.switchSymbol("ES");
    EXPECT_TRUE(seen.lines.empty() && seen.sessionLines.empty());
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
}

TEST_F(DerivedPane, BuildsTheSurfaceAtMostEveryThreeSecondsWhileOpen) {
    AppModel& pane = openSymbol("NQ");
    event("derived:QQQ", wholePatch);
    EXPECT_FALSE(pane.gex3D.get());
    pane.setGex3DActive(true);
    ASSERT_TRUE(pane.gex3D.get());
    EXPECT_EQ(pane.gex3D.get()->strikes, (std::vector<double>{598, 600, 605}));
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

}  // namespace
}  // namespace vmr
