// What a recorded frame holds, and what new bars and settings change in it.
#include <gtest/gtest.h>

#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

using FrameTest = ChartScene;

Candle bar(std::int64_t index, double open, double high, double low, double close) {
    return {firstBarTime + index * 60, open, high, low, close, 1.0};
}

TEST_F(FrameTest, WithoutBarsOrAreaOnlyClears) {
    EXPECT_FALSE(frame());
    EXPECT_EQ(recorded.draws.size(), 1U);
    renderer.setCandles(bars(50));
    for (const double nothing : {0.0, HUGE_VAL}) {
        width = nothing;
        EXPECT_FALSE(frame());
        EXPECT_EQ(recorded.draws.size(), 1U);
    }
}

TEST_F(FrameTest, CandlesLieWhereTheirPricesAreAlsoFarFromZero) {
    constexpr double far = 1'000'000;
    auto list = bars(5000);
    list[4997] = bar(4997, far + 100, far + 104, far + 98, far + 103);
    list[4998] = bar(4998, far + 103, far + 105, far + 101, far + 102);
    list[4999] = bar(4999, far + 102, far + 103, far + 99, far + 101);
    renderer.setCandles(list);
    renderer.zoom(0.0);  // ten bars
    renderer.mirrorPrice(far + 95, far + 110);
    frame();
    const double perBar = width / renderer.camera().visibleCount, first = renderer.camera().firstVisible;
    const auto y = [&](double price) { return height * (1 - ((price - 95) * 1.8 / 15 - 0.9)) * 0.5; };
    const struct {
        Box is;
        double bar, halfWidth, top, bottom;
    } boxes[] = {{body(candles(), 4997), 4997, 0.32, 103, 100},
                 {body(candles(), 4998), 4998, 0.32, 103, 102},
                 {body(forming()), 4999, 0.32, 102, 101},
                 {wick(candles(), 4997), 4997, 0.06, 104, 98},
                 {wick(forming()), 4999, 0.06, 103, 99}};
    for (const auto& [is, bar, halfWidth, top, bottom] : boxes) {
        EXPECT_NEAR(is.left, (bar - halfWidth - first) * perBar, 0.02);
        EXPECT_NEAR(is.right, (bar + halfWidth - first) * perBar, 0.02);
        EXPECT_NEAR(is.top, y(top), 0.02);
        EXPECT_NEAR(is.bottom, y(bottom), 0.02);
    }
}

TEST_F(FrameTest, AnArenaThatGrowsKeepsWhatTheFrameHas) {
    renderer.setCandles(bars(300));
    frame();
    for (const double w : {1400.0, 60000.0, 60000.0, 60000.0, 1400.0}) {
        width = w;
        frame();
        const Box eased = body(forming()), dash = flatBox(priceLine(), 16 * 2 + 1);
        EXPECT_NEAR(eased.right - eased.left, w * 0.64 / renderer.camera().visibleCount, w * 1e-5);
        EXPECT_NEAR(dash.left, 16 * 8 + 2, w * 2e-5) << "the ends of two dashes";
        EXPECT_NEAR(dash.right, 17 * 8 + 2, w * 2e-5);
        EXPECT_EQ(priceLine().count, std::min(w / 8, 6000.0) * 2);
    }
    EXPECT_EQ(gpu.arenasMade(), 6U) << "three, each replaced once";
    for (int i = 0; i < 9; ++i) frame();
    EXPECT_EQ(gpu.arenasMade(), 6U);
}

TEST_F(FrameTest, EasingIsTheSameAtAnyRate) {
    auto list = bars(50);
    renderer.setCandles(list);
    double now = 1000.0;
    const auto draw = [&](double seconds) { return renderer.drawFrame(1400, 900, 1, now += seconds); };
    draw(0);
    EXPECT_NEAR(renderer.alphaClose(), 0.3, 1e-12) << "the first frame counts as one of 60 Hz";
    for (const auto& [seconds, frames] : {std::pair{1.0 / 60, 1.0}, {1.0 / 120, 0.5}, {2.0, 4.0}, {0.0, 0.25}}) {
        draw(seconds);
        EXPECT_NEAR(renderer.alphaX(), 1 - std::pow(0.75, frames), 1e-6) << seconds;
        EXPECT_NEAR(renderer.alphaY(), 1 - std::pow(0.8, frames), 1e-6) << seconds;
        EXPECT_NEAR(renderer.alphaClose(), 1 - std::pow(0.7, frames), 1e-6) << seconds;
    }
    const double from = list.back().close;
    list.back().close = from + 10;
    renderer.setCandles(list);
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(draw(1.0 / 120));
    EXPECT_NEAR(renderer.dispClose(), from + 3.0, 1e-6);
    while (draw(1.0 / 60)) ASSERT_LT(now, 1010);
    EXPECT_EQ(renderer.dispClose(), from + 10);
    list.back().close = from - 10;
    renderer.setCandles(list);
    EXPECT_FALSE(renderer.drawFrame(1400, 900, 1, now += 0.001, true)) << "none has to follow";
    EXPECT_EQ(renderer.dispClose(), from - 10);
}

TEST_F(FrameTest, TheFormingBarTurnsWhenItsEasedCloseCrossesTheOpen) {
    auto list = bars(30);
    list[29] = bar(29, 21000, 21010, 20990, 21008);
    renderer.setCandles(list);
    settle();
    list[29].close = 20992;
    renderer.setCandles(list);
    int frames[2] = {};
    while (frame()) {
        const bool down = renderer.dispClose() < 21000;
        ++frames[down];
        EXPECT_EQ(vertexOf(forming(), 0).halfStroke, down ? 0.5F : 0.0F);
    }
    EXPECT_TRUE(frames[false] > 0 && frames[true] > 0);
}

TEST_F(FrameTest, ANewBarJumpsToItsCloseAndJoinsTheOthers) {
    auto replaced = bars(300);
    replaced.back().time += 60;
    replaced.back().close += 8;
    // one more, several at the cap, shorter, only the last time moved
    for (const auto& next : {bars(301), bars(300, 7), bars(120, 180), replaced}) {
        SCOPED_TRACE(next.size());
        renderer.setCandles({});
        renderer.setCandles(bars(300));
        settle();
        renderer.setCandles(next);
        EXPECT_EQ(renderer.dispClose(), next.back().close);
        EXPECT_FALSE(frame()) << "nothing eases from the bar before";
        EXPECT_EQ(candles().count, (next.size() - 1) * candleVertices);
        EXPECT_NEAR(renderer.camera().firstVisible, renderer.rightEdgeFirst(), 1e-9);
        EXPECT_NEAR(body(forming()).left - body(candles(), next.size() - 2).left,
                    width / renderer.camera().visibleCount, 0.02);
    }
}

TEST_F(FrameTest, BarsThatComeOrGoBeforeThoseInViewDoNotMoveThePicture) {
    // the cap dropped one, or four; a longer history came; a gap of ten was filled
    auto gap = bars(400, 100);
    gap.erase(gap.begin() + 50, gap.begin() + 60);
    for (const auto& [old, next] :
         {std::pair(bars(400, 100), bars(400, 101)), std::pair(bars(400, 100), bars(400, 104)),
          std::pair(bars(400, 100), bars(500)), std::pair(gap, bars(400, 100)), std::pair(bars(9, 300), bars(309))}) {
        SCOPED_TRACE(next.size());
        renderer.setCandles({});
        renderer.setCandles(old);
        frame();
        renderer.panByPrice(40, height);  // a hand has taken the chart
        if (old.size() > 10) renderer.pan(-120.25);
        frame();
        const std::size_t looked = old.size() > 10 ? 200 : 5;
        const auto shift = std::ranges::find(next, old[looked].time, &Candle::time) - next.begin();
        const Box before = body(candles(), looked);
        renderer.setCandles(next);
        frame();
        const Box after = body(candles(), static_cast<std::size_t>(shift));
        EXPECT_NEAR(before.left, after.left, 0.02);
        EXPECT_NEAR(before.top, after.top, 0.02);
    }
    renderer.setCandles({});
    renderer.setCandles(bars(400, 4));
    renderer.pan(-120.25);
    // Far left the view stops at the first bar that is left; a list that shares no bar is no shift.
    renderer.pan(-1000);
    renderer.setCandles(bars(400, 50));
    EXPECT_EQ(renderer.camera().firstVisible, 0.0);
    renderer.pan(30);
    renderer.setCandles(bars(400, 9000));
    EXPECT_DOUBLE_EQ(renderer.camera().firstVisible, 30.0);
}

TEST_F(FrameTest, OfALongHistoryOnlyWhatIsInViewIsDrawn) {
    renderer.setCandles(bars(5000));
    renderer.mirrorView(1234.5, 300);
    frame();
    const auto from = static_cast<double>(candles().offset / sizeof(CandleVertex) / candleVertices);
    const auto count = static_cast<double>(candles().count / candleVertices);
    EXPECT_TRUE(from <= 1234 && from + count >= 1535 && count <= 300 + 2 * 288) << from << " and " << count;
}

}  // namespace
}  // namespace vmr::test
