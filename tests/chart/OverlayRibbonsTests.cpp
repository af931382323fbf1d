// How the overlay series are drawn, and when the session lines are made anew.
#include "chart/OverlayRibbons.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "chart/CandleGeometry.h"
#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

struct OverlayRibbonsTest : testing::Test {
    OverlaySet series;
    OverlayStyle style{.ema1Color = {1, 0, 0, 1}, .ema2Color = {0, 1, 0, 1}, .hfLineOpacity = 0.4, .lineOpacity = 0.5};
    std::vector<Candle> candles = bars(10);
    std::vector<OverlayLine> lines{{21000, firstBarTime, {}, "Open", false},
                                   {21001, firstBarTime, {}, "PrevHigh", false},
                                   {21002, firstBarTime, {}, "R1", false}};
    std::uint64_t linesRevision = 1;
    double timeframe = 1;
    OverlayRibbons ribbons;

    const OverlayLists& make() { return ribbons.make({&series, lines, linesRevision, style, candles, timeframe}); }
    std::vector<double> linePrices() {
        std::vector<double> prices;
        const OverlayLists& lists = make();
        for (std::size_t i = 0; i < lists.sessionLines.size(); i += segmentVertices)
            prices.push_back(lists.sessionLines[i].pos[1] + lists.origin.price);
        return prices;
    }
};

TEST_F(OverlayRibbonsTest, EachSeriesHasItsLookAndPlace) {
    const std::vector<OvPoint> points{{3, 21000}, {4, 21001}};
    series.vwapMain = series.vwapNY = series.vixLine = series.ema1 = series.ema2 = points;
    series.hfLine = {{3, 21000, true, 20990, 1}, {4, 20980, false, 20990, -1}};
    series.secondCandles = {{3, 20999, 21003, 20990, 20995, 7000}, {4, 20995, 21003, 20990, 20999, 7000}};
    const OverlayLists& lists = make();
    const struct {
        float width;
        Rgba color;
    } looks[] = {{2, {1, 0.843F, 0, 1}},           // VWAP
                 {1, {1, 0.902F, 0.502F, 1}},      // New York's
                 {2, {0.353F, 0.82F, 0.749F, 1}},  // VIX
                 {1.5F, {1, 0, 0, 1}},             // averages
                 {1.5F, {0, 1, 0, 1}},             //
                 {2, {0, 0.588F, 1, 0.4F}}};       // flow above its base
    for (std::size_t i = 0; i < OverlayLists::ribbonCount; ++i) {
        SCOPED_TRACE(i);
        const auto& verts = lists.ribbons[i].vertices;
        ASSERT_EQ(verts.size(), (i == 5 ? 2 : 1) * segmentVertices);
        EXPECT_EQ(verts[0].beside, looks[i].width / 2);
        EXPECT_EQ(verts[0].color, Rgba8(looks[i].color));
        EXPECT_EQ(lists.ribbons[i].dash.has_value(), i == 1);
    }
    EXPECT_EQ(lists.ribbons[5].vertices[4].color, Rgba8({1, 0.314F, 0.314F, 0.4F})) << "below it";
    EXPECT_EQ(lists.origin, (DataOrigin{9, candles.back().close}));
    EXPECT_EQ(lists.ribbons[0].vertices[0].pos[0], 3.0F - 9.0F);
    const auto& second = lists.second.vertices;
    EXPECT_EQ(second.size(), 2 * CandleGeometry::candleVertices);
    EXPECT_EQ(std::ranges::count_if(second, [](const CandleVertex& v) { return v.halfStroke > 0; }),
              CandleGeometry::candleVertices)
        << "only falling ones are outlined";
    ASSERT_FALSE(lists.sessionLines.empty());
    EXPECT_EQ(lists.sessionLines[0].color.a, 128);
}

TEST_F(OverlayRibbonsTest, TheLabelOfASessionLineTellsWhatShowsIt) {
    using testing::ElementsAre;
    EXPECT_THAT(linePrices(), ElementsAre(21000, 21001, 21002));
    style.showPrev = false;
    EXPECT_THAT(linePrices(), ElementsAre(21000, 21002));
    style = {.showOpen = false, .showLevels = false};
    EXPECT_THAT(linePrices(), ElementsAre(21001));
}

TEST_F(OverlayRibbonsTest, SessionLinesAreMadeAnewOnlyWhenSomethingThatTheyDependOnChanged) {
    const std::vector<OvPoint> points{{1, 21000}, {2, 21001}};
    const struct {
        const char* name;
        std::function<void()> change;
        bool anew = true;
    } cases[] = {
        {"nothing", [] {}, false},
        {"tick", [&] { candles.back().close += 5; }, false},
        {"series", [&] { series.ema1 = points; }, false},
        {"colour of a series", [&] { style.ema1Color[1] = 1; }, false},
        {"lines", [&] { ++linesRevision; }},
        {"new bar", [&] { candles = bars(11); }},
        {"as many bars, one dropped", [&] { candles = bars(11, 1); }},
        {"timeframe", [&] { timeframe = 5; }},
        {"opacity", [&] { style.lineOpacity = 0.25; }},
        {"levels hidden", [&] { style.showLevels = false; }},
        {"one bar", [&] { candles.resize(1); }},
        {"no bar", [&] { candles.clear(); }, false},
        {"bars again", [&] { candles = bars(11, 1); }},
    };
    make();
    for (const auto& [name, change, anew] : cases) {
        SCOPED_TRACE(name);
        const auto revision = make().sessionRevision;
        const DataOrigin origin = make().origin;
        change();
        const OverlayLists& lists = make();
        EXPECT_EQ(lists.sessionRevision != revision, anew);
        EXPECT_TRUE(anew || lists.origin == origin);
        EXPECT_EQ(lists.sessionLines.empty(), candles.size() < 2);
        EXPECT_EQ(lists.ribbons[3].vertices.empty(), series.ema1.empty() || candles.size() < 2);
    }
}

}  // namespace
}  // namespace vmr::test
