// Bubbles and triangles as vertices, and how they fade with the zoom.
#include "chart/Markers.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <random>

#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

constexpr double inf = std::numeric_limits<double>::infinity();

struct MarkersTest : testing::Test {
    std::vector<Candle> candles = bars(400);
    std::vector<BubblePt> bubbles;
    std::vector<TrianglePt> triangles;
    RenderConfig config;
    double ratio = 41.0;
    DataOrigin origin{399, 21000};
    std::vector<MarkerVertex> out;

    const std::vector<MarkerVertex>& build() {
        Markers::build(out, {bubbles, triangles, candles, ratio, config, origin});
        return out;
    }
};

TEST_F(MarkersTest, BubblesAreFansWhoseSizeAndRankTellTheirAlpha) {
    struct Case {
        double dom;
        int rank;
        bool pos;
        float radius, alpha;
    };
    config.bubbleOpacity = 0.5F;
    for (const Case& c : {Case{0.05, 0, true, 2, 0.15F},
                          {0.55, 0, true, 11, 0.1F},
                          {1, 1, false, 20, 0.7F * 0.05F},
                          {2, 2, true, 40, 0.5F * 0.05F},
                          {-3, 7, false, 2, 0.5F * 0.15F}}) {
        SCOPED_TRACE(c.dom);
        bubbles = {{firstBarTime + 50 * 60, 512.0, c.dom, c.pos, c.rank}};
        ASSERT_EQ(build().size(), 36U);
        const Rgba& rgb = c.pos ? config.bubblePos : config.bubbleNeg;
        for (std::size_t i = 0; i < 36; ++i) {
            const MarkerVertex& v = out[i];
            EXPECT_THAT(v.center, testing::ElementsAre(50.0F - 399.0F, 512.0F * 41.0F - 21000.0F, 0, 1));
            const double turn = static_cast<double>(i / 3 + (i % 3 == 2 ? 1 : 0)) / 12 * 2 * 3.14159265358979;
            const bool rim = i % 3 != 0;
            EXPECT_NEAR(v.off[0], rim ? std::cos(turn) : 0, 1e-6);
            EXPECT_NEAR(v.off[1], rim ? std::sin(turn) : 0, 1e-6);
            EXPECT_NEAR(v.off[2], rim ? c.radius : 0, 1e-5);
            EXPECT_THAT(v.color,
                        testing::Pointwise(testing::FloatNear(1e-6F), {rgb[0], rgb[1], rgb[2], 0.5F * c.alpha}));
        }
    }
}

TEST_F(MarkersTest, TrianglesPointWhereTheFlowGoes) {
    struct Case {
        double net, max;
        float tip, radius, alpha;
    };
    for (const Case& c : {Case{5, 10, 1, 11, 0.1F}, {-30, 10, -1, 20, 0.05F}, {0, 1, 1, 2, 0.15F}}) {
        SCOPED_TRACE(c.net);
        triangles = {{firstBarTime, 510.0, c.net, c.max}};
        ASSERT_EQ(build().size(), 3U);
        EXPECT_THAT(out[0].off, testing::Pointwise(testing::FloatNear(1e-5F), {0.0F, c.tip, c.radius, 0.0F}));
        EXPECT_THAT(out[1].off, testing::Pointwise(testing::FloatNear(1e-5F), {-1.0F, -c.tip, c.radius, 0.0F}));
        EXPECT_THAT(out[2].off, testing::Pointwise(testing::FloatNear(1e-5F), {1.0F, -c.tip, c.radius, 0.0F}));
        Rgba expected = c.net >= 0 ? config.hfCall : config.hfPut;
        expected[3] = c.alpha;
        for (const MarkerVertex& v : out) EXPECT_THAT(v.color, testing::Pointwise(testing::FloatNear(1e-6F), expected));
    }
}

TEST_F(MarkersTest, EachMinuteFindsItsBarInAnyOrder) {
    candles.erase(candles.begin() + 120, candles.begin() + 180);  // an hour without trade
    std::mt19937 random(7);
    std::uniform_int_distribution<std::int64_t> seconds(-4000, 28000);
    for (const bool ascending : {true, false}) {
        triangles.clear();
        for (int i = 0; i < 3000; ++i) triangles.push_back({firstBarTime + seconds(random), 512, 1, 1});
        if (ascending) std::ranges::sort(triangles, {}, &TrianglePt::minuteTs);
        build();
        for (std::size_t i = 0; i < triangles.size(); ++i) {
            std::size_t bar = 0;
            while (bar + 1 < candles.size() && candles[bar + 1].time <= triangles[i].minuteTs) ++bar;
            ASSERT_EQ(out[i * 3].center[0], static_cast<float>(bar) - 399.0F) << triangles[i].minuteTs;
        }
    }
}

TEST_F(MarkersTest, OnlyWhatCanBePlacedAndIsSwitchedOn) {
    bubbles = {{firstBarTime, 512, 1, true, 0}, {firstBarTime, std::nan(""), 1, true, 0}};
    triangles = {
        {firstBarTime, 512, 1, 1}, {firstBarTime, 512, 1, 0}, {firstBarTime, 512, 1, -2}, {firstBarTime, inf, 1, 1}};
    EXPECT_EQ(build().size(), 39U);
    config.bubblesEnabled = false;
    EXPECT_EQ(build().size(), 3U);
    config.trianglesEnabled = false;
    EXPECT_EQ(build().size(), 0U);
    config = {};
    ratio = inf;
    EXPECT_EQ(build().size(), 0U);
}

}  // namespace
}  // namespace vmr::test
