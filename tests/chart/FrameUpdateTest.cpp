// What new bars and settings change in a frame, and what the renderer publishes.
#include <gmock/gmock.h>

#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

using FrameUpdateTest = ChartScene;

TEST_F(FrameUpdateTest, ANewBarJumpsToItsCloseAndJoinsTheOthers) {
    struct Case {
        const char* name;
        std::vector<Candle> next;
        std::size_t bodies;
    };
    const auto old = bars(300);
    auto replaced = old;
    replaced.back().time += 60;
    replaced.back().close += 8;
    for (const Case& c : {Case{"one more", bars(301), 300}, Case{"several at the cap", bars(300, 7), 299},
                          Case{"shorter", bars(120, 180), 119}, Case{"only the last time moved", replaced, 299}}) {
        SCOPED_TRACE(c.name);
        renderer.setCandles({});
        renderer.setCandles(old);
        settle();
        renderer.setCandles(c.next);
        EXPECT_EQ(renderer.dispClose(), c.next.back().close);
        EXPECT_FALSE(frame()) << "nothing eases from the bar before";
        EXPECT_EQ(layers().bodies->count, c.bodies * 6);
        EXPECT_NEAR(renderer.camera().firstVisible, renderer.rightEdgeFirst(), 1e-9);
        const Box forming = box(*layers().forming), last = box(*layers().bodies, (c.bodies - 1) * 6);
        EXPECT_NEAR(forming.left - last.left, width / renderer.camera().visibleCount, 0.02);
    }
}

TEST_F(FrameUpdateTest, BarsThatTheCapDropsDoNotMoveThePicture) {
    for (const std::size_t dropped : {1, 4}) {
        renderer.setCandles({});
        renderer.setCandles(bars(400));
        renderer.pan(-120.25);
        ASSERT_FALSE(renderer.camera().followLive);
        frame();
        const Box before = box(*layers().bodies, 200 * 6);
        renderer.setCandles(bars(400, dropped));
        frame();
        const Box after = box(*layers().bodies, (200 - dropped) * 6);
        EXPECT_NEAR(before.left, after.left, 0.02);
        EXPECT_NEAR(before.top, after.top, 0.02);
    }
    // Far left the view stops at the first bar that is left; a list that shares no bar is no shift.
    renderer.pan(-1000);
    renderer.setCandles(bars(400, 50));
    EXPECT_EQ(renderer.camera().firstVisible, 0.0);
    renderer.pan(30);
    renderer.setCandles(bars(400, 9000));
    EXPECT_DOUBLE_EQ(renderer.camera().firstVisible, 30.0);
}

TEST_F(FrameUpdateTest, OfALongHistoryOnlyWhatIsInViewIsDrawn) {
    renderer.setCandles(bars(5000));
    for (const double first : {0.0, 1234.5, 3000.0}) {
        renderer.mirrorView(first, 300);
        frame();
        const auto& call = *layers().bodies;
        const double from = static_cast<double>(call.offset / 32 / 6), to = from + static_cast<double>(call.count / 6);
        EXPECT_LE(from, std::max(first - 0.5, 0.0));
        EXPECT_GE(to, first + 300.5);
        EXPECT_LE(call.count / 6, 300U + 2 * 192);
    }
}

TEST_F(FrameUpdateTest, TheClassicThemeHasItsOwnColoursAndNoBorders) {
    const auto list = bars(20);
    renderer.setCandles(list);
    for (int i = 0; i < 3; ++i) frame();
    EXPECT_EQ(gpu.vertices<ChartVertex>(*layers().wicks)[0].color, (Rgba{1, 1, 1, 1}));
    const std::size_t alive = gpu.buffersAlive();
    RenderConfig config;
    config.candleTheme = "classic";
    renderer.setRenderConfig(config);
    frame();
    EXPECT_EQ(gpu.buffersAlive(), alive - 1);
    EXPECT_FALSE(layers().borders || layers().formingBorder);
    for (std::size_t i = 0; i < 19; ++i) {
        const bool up = list[i].open <= list[i].close;
        EXPECT_EQ(gpu.vertices<ChartVertex>(*layers().bodies)[i * 6].color,
                  up ? (Rgba{0.149F, 0.651F, 0.604F, 1}) : (Rgba{0.937F, 0.325F, 0.314F, 1}));
    }
}

TEST_F(FrameUpdateTest, TheViewportIsPostedWhenTheCameraMoved) {
    std::vector<Viewport> seen;
    renderer.onViewport = [&](double first, double count, double lo, double hi) {
        seen.push_back({first, count, lo, hi});
    };
    renderer.setCandles(bars(300));
    frame();
    EXPECT_TRUE(seen.empty()) << "never inside the frame";
    time.runUntilIdle();
    EXPECT_THAT(seen, testing::ElementsAre(renderer.camera().viewport()));
    frame();
    time.runUntilIdle();
    EXPECT_EQ(seen.size(), 1U) << "a still camera";
    for (int i = 0; i < 2; ++i) {
        renderer.pan(-1);
        renderer.drawFrame(width, height, pixelRatio, time.monotonic());
    }
    time.runUntilIdle();
    ASSERT_EQ(seen.size(), 2U) << "two frames of one turn";
    EXPECT_EQ(seen[1], renderer.camera().viewport());
}

}  // namespace
}  // namespace vmr::test
