// The camera without a frame: margins, first data, input, mirrors and the price range.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "chart/Camera.h"

namespace vmr::test {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

std::vector<Candle> flatBars(std::size_t n, double low, double high, double close) {
    return std::vector<Candle>(n, Candle{0, close, high, low, close, 0});
}

struct CameraTest : testing::Test {
    Camera camera;

    double span() const { return camera.yMaxManual - camera.yMinManual; }
};

TEST_F(CameraTest, FirstDataShowsTheBarsAskedForLeftOfAMarginThatFollowsTheWidth) {
    struct Case {
        double width, initial;
        std::size_t n;
        double count, gap;
    };
    const double keep = 1 - 652.0 / 1400;
    for (const Case& c : {Case{1400, 150, 5000, 150 / keep, 150 / keep * 652 / 1400},
                          {200, 150, 5000, 300, 150},
                          {8000, 22, 5000, 22 / (1 - 1972.0 / 8000), 12},
                          {1400, 150, 20, 20, 10},
                          {1400, 10, 5000, 10 / keep, 5 / keep},
                          {200, 10, 5000, 20, 10}}) {
        SCOPED_TRACE(c.width);
        camera.lastViewW = c.width;
        camera.followLive = camera.autoY = false;
        camera.showFirstData(c.n, c.initial);
        EXPECT_NEAR(camera.visibleCount, c.count, 1e-9);
        EXPECT_NEAR(camera.firstVisible, static_cast<double>(c.n) - c.count + c.gap, 1e-9);
        EXPECT_TRUE(camera.followLive && camera.autoY);
    }
}

TEST_F(CameraTest, PanStopsAtBothEndsAndFollowsNearTheRightOne) {
    camera.showFirstData(500, 150);
    const double right = camera.rightEdgeFirst(500);
    struct Case {
        double by, first;
        bool follows;
    };
    for (const Case& c : {Case{-0.6, right - 0.6, false},
                          {0.2, right - 0.4, true},
                          {50, right, true},
                          {-9999, 0, false},
                          {9999, right, true}}) {
        EXPECT_TRUE(camera.pan(c.by, 500));
        EXPECT_NEAR(camera.firstVisible, c.first, 1e-9);
        EXPECT_EQ(camera.followLive, c.follows);
    }
    EXPECT_FALSE(camera.pan(nan, 500));
    EXPECT_EQ(camera.firstVisible, right);
}

TEST_F(CameraTest, ZoomHoldsTheRightEdgeWithinItsBounds) {
    camera.showFirstData(2000, 150);
    camera.pan(-400, 2000);
    const double right = camera.firstVisible + camera.visibleCount;
    camera.zoom(0.5, 2000);
    EXPECT_NEAR(camera.firstVisible + camera.visibleCount, right, 1e-9);
    camera.zoom(0.0001, 2000);
    EXPECT_EQ(camera.visibleCount, 10);
    camera.zoom(1e9, 2000);
    EXPECT_EQ(camera.visibleCount, 2000);
    camera.zoom(0.1, 4);
    EXPECT_EQ(camera.visibleCount, 4) << "fewer than ten bars are all shown";
}

TEST_F(CameraTest, PriceInputTakesTheRangeOrMovesThePin) {
    camera.mirrorPrice(100, 200);
    camera.autoY = true;
    EXPECT_TRUE(camera.zoomPrice(2));
    EXPECT_FALSE(camera.autoY);
    EXPECT_EQ(camera.yMinManual, 50);
    for (const double bad : {0.0, -1.0, nan, inf, 1e-300}) EXPECT_FALSE(camera.zoomPrice(bad)) << bad;

    camera.setPriceLineFrac(0.5);
    EXPECT_TRUE(camera.autoY);
    EXPECT_FALSE(camera.zoomPrice(2));
    EXPECT_TRUE(camera.panByPrice(90, 900));
    EXPECT_DOUBLE_EQ(camera.priceLineFrac, 0.4);
    camera.panByPrice(900, 900);
    EXPECT_EQ(camera.priceLineFrac, 0.05);
    EXPECT_EQ(camera.yMinManual, 50);
}

TEST_F(CameraTest, TheAutomaticRangeBreathesRarely) {
    camera.showFirstData(200, 150);
    struct Case {
        double low, high;
        bool resets;
    };
    // A reset leaves three times the range seen; it holds until the range leaves it or falls under 1/2.2 of it.
    for (const Case& c : {Case{100, 110, true},
                          {89.9, 103.75, false},
                          {89.7, 112, true},
                          {88, 119, false},
                          {88, 118.5, true},
                          {100, 110, true},
                          {100, 100, true},
                          {100, 102.4, true}}) {
        const double before = span();
        ASSERT_TRUE(camera.settle(flatBars(200, c.low, c.high, (c.low + c.high) / 2)));
        EXPECT_EQ(camera.snapLerps, c.resets) << c.low << " " << c.high;
        const double range = c.high > c.low ? c.high - c.low : 1;
        EXPECT_NEAR(span(), c.resets ? range * 3.04 : before, 1e-9);
    }
    camera.mirrorPrice(1, 2);
    camera.settle(flatBars(200, 100, 110, 105));
    EXPECT_EQ(camera.yMaxManual, 2) << "a manual range stays";
}

TEST_F(CameraTest, OnlyBarsInViewCount) {
    auto list = flatBars(300, 100, 110, 105);
    list[10].high = 900;
    list[299].low = 1;
    camera.showFirstData(300, 50);
    camera.mirrorView(100, 50, 300);
    camera.settle(list);
    EXPECT_NEAR(camera.yMaxManual, 120.2, 1e-9);
    camera.mirrorView(10.9, 50, 300);
    camera.settle(list);
    EXPECT_GT(camera.yMaxManual, 900);
}

TEST_F(CameraTest, ThePinIsExactAndItsScaleLazy) {
    camera.showFirstData(200, 150);
    camera.setPriceLineFrac(0.25);
    const double first = std::max(4 / 0.25, 6 / 0.75) * 1.02;
    struct Case {
        double low, high, close, span;
    };
    for (const Case& c : {Case{100, 110, 104, first},
                          {100, 110, 104.1, first},
                          {102, 110, 104, first},
                          {103.5, 106, 104, 2 / 0.75 * 1.02},
                          {95, 110, 104, 9 / 0.25 * 1.02}}) {
        camera.settle(flatBars(200, c.low, c.high, c.close));
        EXPECT_NEAR((c.close - camera.yMinManual) / span(), 0.25, 1e-9);
        EXPECT_NEAR(span(), c.span, 1e-9) << c.low;
    }
}

}  // namespace
}  // namespace vmr::test
