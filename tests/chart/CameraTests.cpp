// The camera without a frame: margins, first data, input and the price range.
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

#include "chart/Camera.h"

namespace vmr::test {
namespace {

std::vector<Candle> flatBars(std::size_t n, double low, double high, double close) {
    return std::vector<Candle>(n, Candle{0, close, high, low, close, 0});
}

struct CameraTest : testing::Test {
    Camera camera;

    double span() const { return camera.yMaxManual - camera.yMinManual; }
};

TEST_F(CameraTest, FirstDataShowsTheBarsAskedForLeftOfAMarginThatFollowsTheWidth) {
    const double keep = 1 - 652.0 / 1400;
    for (const auto& [width, initial, n, count, gap] :
         {std::tuple{1400.0, 150.0, 5000.0, 150 / keep, 150 / keep * 652 / 1400},
          {200, 150, 5000, 300, 150},
          {8000, 22, 5000, 22 / (1 - 1972.0 / 8000), 12},
          {1400, 150, 20, 20, 10}}) {
        SCOPED_TRACE(width);
        camera.lastViewW = width;
        camera.followLive = camera.autoY = false;
        camera.showFirstData(static_cast<std::size_t>(n), initial);
        EXPECT_NEAR(camera.visibleCount, count, 1e-9);
        EXPECT_NEAR(camera.firstVisible, n - count + gap, 1e-9);
        EXPECT_TRUE(camera.followLive && camera.autoY);
    }
}

TEST_F(CameraTest, PanStopsAtBothEndsAndZoomHoldsTheRightOne) {
    camera.showFirstData(2000, 150);
    const double right = camera.rightEdgeFirst(2000);
    for (const auto& [by, first, follows] :
         {std::tuple{-0.6, right - 0.6, false}, {0.2, right - 0.4, true}, {-9999, 0, false}, {9999, right, true}}) {
        EXPECT_TRUE(camera.pan(by, 2000));
        EXPECT_NEAR(camera.firstVisible, first, 1e-9);
        EXPECT_EQ(camera.followLive, follows);
    }
    camera.pan(-400, 2000);
    const double edge = camera.firstVisible + camera.visibleCount;
    camera.zoom(0.5, 2000);
    EXPECT_NEAR(camera.firstVisible + camera.visibleCount, edge, 1e-9);
    for (const auto& [factor, n, count] : {std::tuple{0.0001, 2000U, 10}, {1e9, 2000U, 2000}, {0.1, 4U, 4}}) {
        camera.zoom(factor, n);
        EXPECT_EQ(camera.visibleCount, count) << "at least ten bars, or all";
    }
}

TEST_F(CameraTest, AnotherWidthKeepsTheLiveEdgeAtOnce) {
    for (const bool follows : {true, false}) {
        camera.lastViewW = 1400;
        camera.showFirstData(2000, 150);
        if (!follows) camera.pan(-300, 2000);
        const double first = camera.firstVisible;
        camera.resize(900, 2000);
        EXPECT_EQ(camera.firstVisible, follows ? camera.rightEdgeFirst(2000) : first);
        EXPECT_EQ(camera.firstVisible != first, follows);
    }
}

TEST_F(CameraTest, PriceInputTakesTheRangeOrMovesThePin) {
    camera.mirrorPrice(100, 200);
    camera.autoY = true;
    EXPECT_TRUE(camera.zoomPrice(2));
    EXPECT_FALSE(camera.autoY);
    for (const double bad : {0.0, -1.0, std::nan(""), HUGE_VAL, 1e-300}) EXPECT_FALSE(camera.zoomPrice(bad)) << bad;

    camera.setPriceLineFrac(0.5);
    EXPECT_TRUE(camera.autoY);
    EXPECT_FALSE(camera.zoomPrice(2));
    EXPECT_TRUE(camera.panByPrice(90, 900));
    EXPECT_DOUBLE_EQ(camera.priceLineFrac, 0.4);
    camera.panByPrice(900, 900);
    EXPECT_EQ(camera.priceLineFrac, 0.05);
    EXPECT_EQ(camera.yMinManual, 50);
}

TEST_F(CameraTest, TheAutomaticRangeBreathesRarelyAndSeesOnlyTheView) {
    camera.showFirstData(200, 150);
    // A reset leaves three times the range seen; it holds until the range leaves it or falls under 1/2.2 of it.
    for (const auto& [low, high, resets] : {std::tuple{100.0, 110.0, true},
                                            {89.9, 103.75, false},
                                            {89.7, 112, true},
                                            {88, 119, false},
                                            {88, 118.5, true},
                                            {100, 110, true},
                                            {100, 102.4, true}}) {
        const double before = span();
        ASSERT_TRUE(camera.settle(flatBars(200, low, high, (low + high) / 2)));
        EXPECT_EQ(camera.snapLerps, resets) << low << " " << high;
        EXPECT_NEAR(span(), resets ? (high - low) * 3.04 : before, 1e-9);
    }
    auto list = flatBars(300, 100, 110, 105);
    list[10].high = 900;
    list[299].low = 1;
    for (const auto& [first, high] : {std::pair{100.0, 120.2}, {10.9, 900 + 800 * 1.02}}) {
        camera.mirrorView(first, 50, 300);
        camera.settle(list);
        EXPECT_NEAR(camera.yMaxManual, high, 1e-9);
    }
    camera.mirrorPrice(1, 2);
    camera.settle(list);
    EXPECT_EQ(camera.yMaxManual, 2) << "a manual range stays";
}

TEST_F(CameraTest, ThePinIsExactAndItsScaleLazy) {
    camera.showFirstData(200, 150);
    camera.setPriceLineFrac(0.25);
    const double first = std::max(4 / 0.25, 6 / 0.75) * 1.02;
    for (const auto& [low, high, close, expected] : {std::tuple{100.0, 110.0, 104.1, first * 4.1 / 4},
                                                     {100, 110, 104, first * 4.1 / 4},
                                                     {103.5, 106, 104, 2 / 0.75 * 1.02},
                                                     {95, 110, 104, 9 / 0.25 * 1.02}}) {
        camera.settle(flatBars(200, low, high, close));
        EXPECT_NEAR((close - camera.yMinManual) / span(), 0.25, 1e-9);
        EXPECT_NEAR(span(), expected, 1e-9) << low;
    }
}

}  // namespace
}  // namespace vmr::test
