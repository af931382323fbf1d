// Parts of a pane by themselves.
#include <fmt/format.h>

#include "model/BarRollSelfTest.h"
#include "model/Catalog.h"
#include "model/ChartChannels.h"
#include "model/FeedRepairs.h"
#include "model/HfScales.h"
#include "model/LiveBars.h"
#include "model/MinuteMarkers.h"
#include "model/Notices.h"
#include "model/Oscillator.h"
#include "model/Overlays.h"
#include "model/PaneLog.h"
#include "model/RenderLook.h"
#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

class PaneParts : public PaneFixture {
 protected:
    static Json json(const std::string& text) { return Json::parse(text).value(); }

    // A history of `count` minutes from the newest back, each holding `one`.
    static Json history(const char* key, int count, const char* one) {
        std::string text;
        while (count-- > 0) text += fmt::format(R"("{}":{},)", minute + count * 60, one);
        text.back() = '}';
        return json(fmt::format(R"({{"{}":{{{}}})", key, text));
    }

    OverlayInput input() {
        time.advance(rebuildCost);
        return {bars, none, none, overlays.hfByMin, noSessions, overlays.sideRevision(), settings};
    }

    PaneWork work{main};
    PaneLog log{time, ids, [this](const std::string& line) { printed.push_back(line); }};
    RepairTally tally;

    std::vector<Candle> bars{{minute, 1, 1, 1, 1, 5}, {minute + 60, 1, 1, 1, 1, 5}}, none;
    SRSessions noSessions;
    OverlaySettings settings{.vwapEnabled = true};
    double rebuildCost = 0;  // seconds
    Overlays overlays{{.clock = time, .work = work, .session = session, .input = [this] { return input(); }}};
};

TEST_F(PaneParts, KeepTheNewestMinutesOfTheirCaps) {
    const auto expectNewest = [](const auto& byMinute, std::size_t cap) {
        EXPECT_EQ(byMinute.size(), cap);
        EXPECT_EQ(byMinute.begin()->first, minute + 120);
    };
    MinuteMarkers markers;
    markers.takeBubbles(history("bubbles", 602, R"({"s":1,"s3":3})"), tally);
    markers.takeTriangles(history("triangles", 602, R"({"d":[[1,2]]})"), tally);
    overlays.takeHfHistory(history("candles", 5002, "{}"), tally);
    Oscillator oscillator(work);
    for (int i = 0; i < 3; ++i) oscillator.take(history("points", 14002, R"({"nq":1})"));
    int heard = 0;
    const auto link = oscillator.oscLines.changed.connect([&] { ++heard; });
    time.advance(1);
    EXPECT_EQ(heard, 1) << "a burst costs one rebuild";
    expectNewest(markers.bubbleByMin, 600);
    expectNewest(markers.triByMin, 600);
    expectNewest(overlays.hfByMin, 5000);
    expectNewest(oscillator.oscByMin, 14000);
    EXPECT_EQ(oscillator.oscLines->nq.size(), 14000u);
    const auto& points = markers.bubblePts.get();
    ASSERT_EQ(points.size(), 1200u);
    EXPECT_EQ(points[0], (BubblePt{minute + 120, 1, 0, false, 0}));
    EXPECT_EQ(points[3], (BubblePt{minute + 180, 3, 0, false, 2})) << "ascending by minute, then by rank";
}

TEST_F(PaneParts, OverlayRebuildsTakeAQuarterOfTheTime) {
    int rebuilt = 0;
    const auto link = overlays.overlaysChanged.connect([&] { ++rebuilt; });
    // 500 wishes bring one rebuild at once and one more `interval` seconds after the first began
    const auto expectTwo = [&](double cost, double interval) {
        rebuildCost = cost;
        time.advance(1);
        rebuilt = 0;
        for (int i = 0; i < 500; ++i) overlays.schedule();
        EXPECT_EQ(rebuilt, 1);
        time.advance(interval - cost - 1e-6);
        EXPECT_EQ(rebuilt, 1) << cost << " " << interval;
        time.advance(1);
        EXPECT_EQ(rebuilt, 2) << cost << " " << interval;
    };
    expectTwo(0.010, 0.040);
    expectTwo(0.001, 4 * 0.0082);  // a rebuild counts for a fifth of what is expected of the next
    expectTwo(0.001, 4 * 0.005608);
    for (int i = 0; i < 20; ++i) expectTwo(0.0001, 0.001);
    expectTwo(0.001, 1.0 / 120);
    EXPECT_EQ(overlays.revision(), 1u) << "no point was another after the first";
    bars.back().close = 2;
    overlays.schedule();
    EXPECT_EQ(overlays.revision(), 2u);
}

TEST_F(PaneParts, ThePriceRisesOrFallsFromRebuildToRebuild) {
    LiveBars live(work, session);
    live.candles = {{minute, 5, 5, 5, 5, 0}};
    std::vector<bool> rising;
    for (const double price : {5.0, 4.0, 4.5, 4.5}) {
        live.applyTrade(price, minute * 1000.0);
        time.advance(0.1);
        rising.push_back(live.priceRising);
    }
    EXPECT_THAT(rising, ElementsAre(true, false, true, true));
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
    EXPECT_EQ(of("").secondaryGexChannel + of("").oscChannel, "");
}

TEST_F(PaneParts, TheLogKeepsTheNewest500AndPrintsArrows) {
    for (int i = 0; i < 502; ++i) log.append(i == 7 ? "→ opened" : std::to_string(i));
    EXPECT_THAT(printed, ElementsAre("[app] → opened"));
    EXPECT_EQ(log.logLines.size(), 500u);
    EXPECT_EQ(log.logLines.front().text, "2");
}

TEST_F(PaneParts, RepairsAreToldOnceAMinuteAChannel) {
    FeedRepairs repairs(time, log, false);
    time.setSpeed(60);  // the minute is a real one
    repairs.add("a", 0);
    repairs.add("a", 1);
    repairs.add("a", 2);
    time.advance(59);
    repairs.add("a", 1);
    repairs.add("b", 1);
    time.advance(1);
    repairs.add("a", 1);
    repairs.add("b", 1);
    const std::string says = " with a number that fits no integer (";
    EXPECT_THAT(printed,
                ElementsAre("[app] → a: left out 1" + says + "1 so far)", "[app] → b: left out 1" + says + "1 so far)",
                            "[app] → a: left out 4" + says + "5 so far)"));
    for (int i = 0; i < 200; ++i) repairs.add("c" + std::to_string(i), 1);
    EXPECT_EQ(repairs.byChannel().size(), FeedRepairs::mostChannels + 1);
    EXPECT_EQ(repairs.byChannel().find(FeedRepairs::others)->second.elements, 102u);
}

TEST(RenderLook, FollowsTheSettings) {
    const auto with = [](const char* json) { return renderLook(GexConfig::fromJson(json).value()); };
    const RenderLook look = with(R"({"ema1Color":"#ff0000","ema2Color":"#00ff00","hfLineOpacity":40,"lineOpacity":30,
        "gexOpacity":20,"gexBubbleOpacity":50,"hfTriangleOpacity":60,"hfLateralOpacity":70,"oiOpacity":80,
        "gexPosColor":"#0000ff","gexNegColor":"#ffff00","hfCallColor":"#ff00ff","hfPutColor":"#00ffff"})");
    const RenderConfig& chart = look.config;
    EXPECT_THAT((std::vector{look.overlays.ema1Color, look.overlays.ema2Color, chart.bubblePos, chart.bubbleNeg,
                             chart.hfCall, chart.hfPut}),
                ElementsAre(Rgba{1, 0, 0, 1}, Rgba{0, 1, 0, 1}, Rgba{0, 0, 1, 1}, Rgba{1, 1, 0, 1}, Rgba{1, 0, 1, 1},
                            Rgba{0, 1, 1, 1}));
    EXPECT_EQ(std::pair(look.overlays.hfLineOpacity, look.overlays.lineOpacity), std::pair(0.4, 0.3));
    EXPECT_THAT(
        (std::vector{chart.gexOpacity, chart.bubbleOpacity, chart.triangleOpacity, chart.waveOpacity, chart.oiOpacity}),
        ElementsAre(0.2F, 0.5F, 0.6F, 0.7F, 0.8F));
    // open, the session before, levels
    const std::pair<const char*, std::vector<bool>> filters[] = {{"sessionEnabled", {false, false, true}},
                                                                 {"showOpen", {false, true, true}},
                                                                 {"showPrev", {true, false, true}},
                                                                 {"levelsEnabled", {true, true, false}}};
    for (const auto& [off, shown] : filters) {
        const OverlayStyle style = with(fmt::format(R"({{"{}":false}})", off).c_str()).overlays;
        EXPECT_EQ((std::vector{style.showOpen, style.showPrev, style.showLevels}), shown) << off;
    }
}

TEST(BarRollSelfTest, SaysWhatItSimulated) {
    const BarRollResult result = runBarRollSelfTest();
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.summary,
              "futuros quieto: OK — 121 barras em 120 min\n  futuros ativo: OK — 121 barras em 120 min\n  "
              "ações quieto: OK — 301 barras em 300 min\n  ações ativo: OK — 301 barras em 300 min");
}

}  // namespace
}  // namespace vmr::test
