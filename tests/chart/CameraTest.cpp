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

TEST(CameraTest, TheMarginFollowsTheWidth) {
    struct Case {
        double width, count;
        std::size_t n;
        double gap;
    };
    for (const Case& c : {Case{1400, 120, 5000, 120 * 652.0 / 1400},
                          {200, 120, 5000, 60},
                          {4000, 120, 5000, 120 * 1172.0 / 4000},
                          {1400, 16, 5000, 8},
                          {8000, 30, 5000, 12},
                          {1400, 1, 1, 0.5}}) {
        Camera camera;
        camera.lastViewW = c.width;
        camera.visibleCount = c.count;
        EXPECT_NEAR(camera.rightEdgeFirst(c.n), static_cast<double>(c.n) - c.count + c.gap, 1e-9) << c.width;
    }
    Camera camera;
    EXPECT_EQ(camera.rightEdgeFirst(3), 0.0);
}

TEST(CameraTest, FirstDataShowsTheBarsAskedForLeftOfTheMargin) {
    struct Case {
        double width, initial;
        std::size_t n;
        double count;
    };
    const double keep = 1 - 652.0 / 1400;
    for (const Case& c : {Case{1400, 150, 5000, 150 / keep},
                          {200, 150, 5000, 300},
                          {1400, 150, 40, 40},
                          {1400, 10, 5000, 10 / keep},
                          {200, 10, 5000, 20},
                          {200, 10, 7, 7},
                          {1400, nan, 5000, 10 / keep}}) {
        Camera camera;
        camera.lastViewW = c.width;
        camera.followLive = camera.autoY = false;
        camera.showFirstData(c.n, c.initial);
        EXPECT_NEAR(camera.visibleCount, c.count, 1e-9);
        EXPECT_EQ(camera.firstVisible, camera.rightEdgeFirst(c.n));
        EXPECT_TRUE(camera.followLive && camera.autoY);
    }
}

TEST(CameraTest, LaterDataMovesOnlyAViewThatFollows) {
    Camera camera;
    camera.showFirstData(500, 150);
    const double right = camera.firstVisible;
    camera.followData(501, 0, true);
    EXPECT_NEAR(camera.firstVisible, right + 1, 1e-9);
    camera.pan(-50, 501);
    const double held = camera.firstVisible;
    camera.followData(502, 0, true);
    EXPECT_EQ(camera.firstVisible, held);
    camera.followData(502, 3, true);
    EXPECT_EQ(camera.firstVisible, held - 3);
    camera.followData(60, 0, true);
    EXPECT_EQ(camera.visibleCount, 60);
    EXPECT_LE(camera.firstVisible, camera.rightEdgeFirst(60));
    camera.visibleCount = 0;
    camera.followData(400, 0, false);
    EXPECT_EQ(camera.visibleCount, 120);
}

TEST(CameraTest, PanStopsAtBothEndsAndFollowsNearTheRightOne) {
    Camera camera;
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
    for (const double bad : {nan, inf, -inf}) EXPECT_FALSE(camera.pan(bad, 500));
    EXPECT_EQ(camera.firstVisible, right);
}

TEST(CameraTest, ZoomHoldsTheRightEdgeWithinItsBounds) {
    Camera camera;
    camera.showFirstData(2000, 150);
    camera.pan(-400, 2000);
    const double right = camera.firstVisible + camera.visibleCount;
    camera.zoom(0.5, 2000);
    EXPECT_NEAR(camera.firstVisible + camera.visibleCount, right, 1e-9);
    camera.zoom(0.0001, 2000);
    EXPECT_EQ(camera.visibleCount, 10);
    camera.zoom(1e9, 2000);
    EXPECT_EQ(camera.visibleCount, 2000);
    EXPECT_GE(camera.firstVisible, 0);
    EXPECT_FALSE(camera.zoom(nan, 2000));
    camera.zoom(0.1, 4);
    EXPECT_EQ(camera.visibleCount, 4) << "fewer than ten bars are all shown";
}

TEST(CameraTest, PriceInputTakesTheRangeOrMovesThePin) {
    Camera camera;
    camera.mirrorPrice(100, 200);
    camera.autoY = true;
    EXPECT_TRUE(camera.zoomPrice(2));
    EXPECT_FALSE(camera.autoY);
    EXPECT_EQ(camera.yMinManual, 50);
    EXPECT_EQ(camera.yMaxManual, 250);
    EXPECT_TRUE(camera.panByPrice(90, 900));
    EXPECT_EQ(camera.yMinManual, 70);
    EXPECT_EQ(camera.yMaxManual, 270);
    for (const double bad : {0.0, -1.0, nan, inf, 1e-300}) EXPECT_FALSE(camera.zoomPrice(bad)) << bad;
    EXPECT_FALSE(camera.panByPrice(1e300, 1));
    EXPECT_EQ(camera.yMinManual, 70);

    camera.setPriceLineFrac(0.5);
    EXPECT_TRUE(camera.autoY);
    EXPECT_FALSE(camera.zoomPrice(2));
    EXPECT_TRUE(camera.panByPrice(90, 900));
    EXPECT_DOUBLE_EQ(camera.priceLineFrac, 0.4);
    camera.panByPrice(900, 900);
    EXPECT_EQ(camera.priceLineFrac, 0.05);
    camera.panByPrice(-9000, 900);
    EXPECT_EQ(camera.priceLineFrac, 0.95);
    EXPECT_EQ(camera.yMinManual, 70);
}

TEST(CameraTest, MirrorsIgnoreWhatIsNotFinite) {
    Camera camera;
    camera.showFirstData(500, 150);
    EXPECT_TRUE(camera.mirrorView(100, 80, 500));
    EXPECT_EQ(camera.viewport(), (Viewport{100, 80, 0, 1}));
    EXPECT_FALSE(camera.followLive);
    EXPECT_FALSE(camera.mirrorView(nan, inf, 500));
    EXPECT_TRUE(camera.mirrorView(nan, 4, 500));
    EXPECT_EQ(camera.visibleCount, 10);
    EXPECT_TRUE(camera.mirrorView(1e9, 0.5, 500));
    EXPECT_EQ(camera.firstVisible, camera.rightEdgeFirst(500));
    EXPECT_TRUE(camera.followLive);
    camera.mirrorView(0, 80, 5);
    EXPECT_EQ(camera.visibleCount, 10) << "never under ten, even with fewer bars";
    camera.mirrorViewRel(30, 100, 500);
    EXPECT_EQ(camera.firstVisible, 370);
    EXPECT_FALSE(camera.mirrorViewRel(nan, nan, 500));
    EXPECT_EQ(camera.firstVisible, 370);
    for (const auto& [lo, hi] : {std::pair{2.0, 2.0}, {3.0, 2.0}, {nan, 2.0}, {1.0, inf}})
        EXPECT_FALSE(camera.mirrorPrice(lo, hi));
    EXPECT_TRUE(camera.mirrorPrice(10, 20));
    EXPECT_FALSE(camera.autoY);
}

TEST(CameraTest, TheAutomaticRangeBreathesRarely) {
    Camera camera;
    camera.showFirstData(200, 150);
    struct Case {
        double low, high;
        bool resets;
    };
    // A reset leaves three times the range seen; it holds until the range leaves it or falls under 1/2.2 of it.
    for (const Case& c : {Case{100, 110, true},
                          {98, 112, false},
                          {89.9, 112, false},
                          {89.7, 112, true},
                          {90, 112, true},
                          {88, 119, false},
                          {100, 110, true},
                          {100, 100, true},
                          {100, 102.4, true},
                          {100, 105.2, true}}) {
        const double before = camera.yMaxManual - camera.yMinManual;
        ASSERT_TRUE(camera.settle(flatBars(200, c.low, c.high, (c.low + c.high) / 2)));
        EXPECT_EQ(camera.snapLerps, c.resets) << c.low << " " << c.high;
        const double high = std::max(c.high, c.low + (c.high > c.low ? 0.0 : 1.0));
        if (c.resets) {
            EXPECT_NEAR(camera.yMaxManual - camera.yMinManual, (high - c.low) * 3.04, 1e-9);
        } else {
            EXPECT_EQ(camera.yMaxManual - camera.yMinManual, before);
        }
    }
    camera.mirrorPrice(1, 2);
    camera.settle(flatBars(200, 100, 110, 105));
    EXPECT_EQ(camera.yMaxManual, 2) << "a manual range stays";
}

TEST(CameraTest, OnlyBarsInViewCount) {
    Camera camera;
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
    EXPECT_FALSE(camera.settle({}));
    camera.firstVisible = 400;
    EXPECT_FALSE(camera.settle(list));
}

TEST(CameraTest, ThePinIsExactAndItsScaleLazy) {
    Camera camera;
    camera.showFirstData(200, 150);
    camera.setPriceLineFrac(0.25);
    const auto settle = [&](double low, double high, double close) {
        camera.settle(flatBars(200, low, high, close));
        const double span = camera.yMaxManual - camera.yMinManual;
        EXPECT_NEAR((close - camera.yMinManual) / span, 0.25, 1e-9);
        return span;
    };
    const double span = settle(100, 110, 104);
    EXPECT_NEAR(span, std::max(4 / 0.25, 6 / 0.75) * 1.02, 1e-9);
    EXPECT_NEAR(settle(100, 110, 104.1), span, 1e-9) << "need within 1.05 of the span";
    EXPECT_NEAR(settle(102, 110, 104), span, 1e-9) << "need above 0.45 of the span";
    EXPECT_NEAR(settle(103.5, 106, 104), 2 / 0.75 * 1.02, 1e-9);
    EXPECT_NEAR(settle(95, 110, 104), 9 / 0.25 * 1.02, 1e-9);
    camera.setPriceLineFrac(nan);
    EXPECT_TRUE(camera.autoY);
}

}  // namespace
}  // namespace vmr::test
