// What ticks, new bars, input and settings rebuild, move and publish.
#include <gmock/gmock.h>

#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

using FrameUpdateTest = ChartScene;

TEST_F(FrameUpdateTest, ATickRebuildsNothingRetained) {
    auto list = bars(300);
    renderer.setCandles(list);
    settle();
    const int made = gpu.buffersMade;
    const double before = box(*layers().forming).top;
    redraws = 0;
    renderer.setCandles(list);
    EXPECT_EQ(redraws, 0) << "unchanged bars ask for no frame";
    list.back().close += 6;
    list.back().high = std::max(list.back().high, list.back().close);
    renderer.setCandles(list);
    EXPECT_EQ(redraws, 1);
    EXPECT_TRUE(frame());
    settle();
    EXPECT_LT(box(*layers().forming).top, before - 1);
    EXPECT_EQ(renderer.dispClose(), list.back().close);
    list[100].close += 5;  // deep in the history: not noticed
    renderer.setCandles(list);
    list.back().volume += 1;
    renderer.setCandles(list);
    frame();
    EXPECT_EQ(gpu.buffersMade, made);
    list[298].close += 1;
    list.back().volume += 1;
    renderer.setCandles(list);
    frame();
    EXPECT_EQ(gpu.buffersMade, made + 3);
}

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
    for (const Case& c : {Case{"one more", bars(301), 300}, Case{"at the cap", bars(300, 1), 299},
                          Case{"several at the cap", bars(300, 7), 299}, Case{"shorter", bars(120, 180), 119},
                          Case{"only the last time moved", replaced, 299}}) {
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
    // A bar that was missing in the middle: the ends look unchanged but for the first time.
    auto list = bars(401);
    auto gap = list;
    gap.erase(gap.begin() + 300);
    renderer.setCandles({});
    renderer.setCandles(gap);
    frame();
    renderer.setCandles(std::span(list).subspan(1));
    frame();
    const auto& wicks = *layers().wicks;
    EXPECT_NEAR(gpu.vertices<ChartVertex>(wicks).at(inDraw(wicks, 298 * 12)).position[1] + list.back().close,
                list[299].high, 1e-3);
    // Far left the view stops at the first bar that is left; a list that shares no bar is no shift.
    renderer.pan(-1000);
    renderer.setCandles(bars(400, 50));
    EXPECT_EQ(renderer.camera().firstVisible, 0.0);
    renderer.pan(30);
    renderer.setCandles(bars(400, 9000));
    EXPECT_DOUBLE_EQ(renderer.camera().firstVisible, 30.0);
}

TEST_F(FrameUpdateTest, InputChangesUniformsAlone) {
    renderer.setCandles(bars(500));
    settle();
    const auto buffers = std::array{layers().bodies->buffer, layers().wicks->buffer, layers().borders->buffer};
    const int made = gpu.buffersMade;
    const std::vector<std::function<void()>> inputs = {[&] { renderer.pan(-20); },
                                                       [&] { renderer.zoom(1.3); },
                                                       [&] { renderer.zoomPrice(0.7); },
                                                       [&] { renderer.panByPrice(30, 900); },
                                                       [&] { renderer.setAutoY(true); },
                                                       [&] { renderer.setPriceLineFrac(0.3); },
                                                       [&] { renderer.mirrorView(10, 60); },
                                                       [&] {
                                                           width = 900;
                                                           renderer.onNeedsDisplay();
                                                       }};
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        SCOPED_TRACE(i);
        const auto before = layers().bodies->uniforms;
        redraws = 0;
        inputs[i]();
        EXPECT_EQ(redraws, 1);
        frame();
        EXPECT_EQ((std::array{layers().bodies->buffer, layers().wicks->buffer, layers().borders->buffer}), buffers);
        if (i != 4 && i + 1 < inputs.size()) {  // the range may be good as it is
            EXPECT_NE(layers().bodies->uniforms, before);
        }
    }
    EXPECT_EQ(layers().borders->uniforms[4], 900.0F);
    EXPECT_EQ(gpu.buffersMade, made);
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
    renderer.mirrorView(0, 5000);
    frame();
    EXPECT_EQ(layers().bodies->count, 4999U * 6);
}

TEST_F(FrameUpdateTest, ThemeChangesColoursOnce) {
    renderer.setCandles(bars(20));
    for (int i = 0; i < 3; ++i) frame();
    EXPECT_EQ(gpu.vertices<ChartVertex>(*layers().wicks)[0].color, (Rgba{1, 1, 1, 1}));
    const int made = gpu.buffersMade;
    const std::size_t alive = gpu.buffersAlive();
    RenderConfig config;
    config.candleTheme = "classic";
    redraws = 0;
    renderer.setRenderConfig(config);
    renderer.setRenderConfig(config);
    EXPECT_EQ(redraws, 1);
    frame();
    EXPECT_EQ(gpu.buffersMade, made + 2) << "no borders in this theme";
    EXPECT_EQ(gpu.buffersAlive(), alive - 1);
    EXPECT_FALSE(layers().borders || layers().formingBorder);
    const auto list = bars(20);
    for (std::size_t i = 0; i < 19; ++i) {
        const Rgba expected =
            list[i].open <= list[i].close ? Rgba{0.149F, 0.651F, 0.604F, 1} : Rgba{0.937F, 0.325F, 0.314F, 1};
        EXPECT_EQ(gpu.vertices<ChartVertex>(*layers().bodies)[i * 6].color, expected);
    }
    config.gexOpacity = 0.1F;
    renderer.setRenderConfig(config);
    frame();
    EXPECT_EQ(gpu.buffersMade, made + 2);
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
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0], renderer.camera().viewport());
    frame();
    time.runUntilIdle();
    EXPECT_EQ(seen.size(), 1U) << "a still camera";
    EXPECT_FALSE(renderer.camera().snapLerps);
    for (int i = 0; i < 2; ++i) {
        renderer.pan(-1);
        renderer.drawFrame(width, height, pixelRatio, time.monotonic());
        EXPECT_TRUE(renderer.camera().snapLerps);
    }
    time.runUntilIdle();
    ASSERT_EQ(seen.size(), 2U) << "two frames of one turn";
    EXPECT_EQ(seen[1], renderer.camera().viewport());
}

TEST_F(FrameUpdateTest, NothingIsDeliveredAfterTheRendererIsGone) {
    int seen = 0;
    {
        ChartRenderer other{gpu, time, [this](std::function<void()> task) { queue.post(std::move(task)); }};
        other.onViewport = [&](double, double, double, double) { ++seen; };
        other.setCandles(bars(30));
        other.drawFrame(1400, 900, 1, time.monotonic());
    }
    time.runUntilIdle();
    EXPECT_EQ(seen, 0);
    EXPECT_EQ(gpu.buffersAlive(), 1U) << "this scene's own background";
}

TEST_F(FrameUpdateTest, InputAgeIsThatOfTheOldestInput) {
    renderer.setCandles(bars(300));
    frame();
    EXPECT_FALSE(renderer.inputLagMs());
    renderer.pan(1);
    time.advance(0.004);
    renderer.zoom(1.1);
    frame(0.006);
    EXPECT_NEAR(renderer.inputLagMs().value_or(0), 10.0, 1e-6);
    frame();
    EXPECT_FALSE(renderer.inputLagMs());
}

TEST_F(FrameUpdateTest, InteractionEndsOnce) {
    int ends = 0;
    renderer.onInteractionEnd = [&] { ++ends; };
    for (const bool on : {false, true, true, false, false}) renderer.setInteracting(on);
    EXPECT_EQ(ends, 1);
}

}  // namespace
}  // namespace vmr::test
