// What a recorded frame holds: places and easing.
#include <gmock/gmock.h>

#include "tests/chart/ChartScene.h"

namespace vmr::test {
namespace {

using FrameTest = ChartScene;
constexpr double inf = std::numeric_limits<double>::infinity();

Candle bar(std::int64_t index, double open, double high, double low, double close) {
    return {firstBarTime + index * 60, open, high, low, close, 1.0};
}

TEST_F(FrameTest, WithoutBarsOrAreaOnlyClears) {
    EXPECT_FALSE(frame());
    EXPECT_EQ(gpu.draws.size(), 1U);
    renderer.setCandles(bars(50));
    for (const auto& [w, h] : {std::pair{0.0, 900.0}, {1400.0, 0.0}, {-3.0, 5.0}, {inf, 5.0}}) {
        width = w;
        height = h;
        EXPECT_FALSE(frame());
        EXPECT_EQ(gpu.draws.size(), 1U);
    }
}

TEST_F(FrameTest, CandlesLieWhereTheirPricesAreAlsoFarFromZero) {
    constexpr double far = 1'000'000;
    auto list = bars(5000);
    const auto last = [&](std::int64_t index, double open, double high, double low, double close) {
        list[static_cast<std::size_t>(index)] = bar(index, far + open, far + high, far + low, far + close);
    };
    last(4997, 100, 104, 98, 103);
    last(4998, 103, 105, 101, 102);
    last(4999, 102, 103, 99, 101);
    renderer.setCandles(list);
    renderer.zoom(0.0);  // ten bars
    renderer.mirrorPrice(far + 95, far + 110);
    frame();
    const auto x = [&](double index) {
        return width * (index + 4997 - renderer.camera().firstVisible) / renderer.camera().visibleCount;
    };
    const auto y = [&](double price) { return height * (1 - ((price - 95) * 1.8 / 15 - 0.9)) * 0.5; };
    const Layers now = layers();
    const auto expectBox = [&](const Box& is, double bar, double halfWidth, double top, double bottom) {
        EXPECT_NEAR(is.left, x(bar - halfWidth), 0.02);
        EXPECT_NEAR(is.right, x(bar + halfWidth), 0.02);
        EXPECT_NEAR(is.top, y(top), 0.02);
        EXPECT_NEAR(is.bottom, y(bottom), 0.02);
    };
    expectBox(box(*now.bodies, 4997 * 6), 0, 0.32, 103, 100);
    expectBox(box(*now.bodies, 4998 * 6), 1, 0.32, 103, 102);
    expectBox(box(*now.forming), 2, 0.32, 102, 101);
    expectBox(box(*now.wicks, 4997 * 12), 0, 0.06, 104, 103);
    expectBox(box(*now.formingWicks, 6), 2, 0.06, 101, 99);
    const auto outline = gpu.vertices<LineVertex>(*now.borders);
    EXPECT_EQ(outline[0].pos[2], 1.0F);
    EXPECT_EQ(outline[1].pos[2], -1.0F);
    EXPECT_EQ(outline[0].pos[3], 0.5F);
    EXPECT_NEAR(outline[0].dir[0], 0.64F, 1e-6);
}

TEST_F(FrameTest, AnArenaThatGrowsKeepsWhatTheFrameHas) {
    renderer.setCandles(bars(300));
    frame();
    for (const double w : {1400.0, 40000.0, 40000.0, 40000.0, 1400.0}) {
        width = w;
        frame();
        const Box forming = box(*layers().forming);
        EXPECT_NEAR(forming.right - forming.left, w * 0.64 / renderer.camera().visibleCount, w * 1e-5);
        EXPECT_EQ(layers().priceLine->count, std::min(w / 8, 6000.0) * 2);
    }
    const int arenas = gpu.arenasMade;
    for (int i = 0; i < 9; ++i) frame();
    EXPECT_EQ(gpu.arenasMade, arenas);
    EXPECT_EQ(arenas, 6) << "three, each replaced once";
}

TEST_F(FrameTest, EasingIsTheSameAtAnyRate) {
    auto list = bars(50);
    struct Case {
        double dt, frames;
    };
    renderer.setCandles(list);
    renderer.drawFrame(1400, 900, 1, 1000.0);
    EXPECT_NEAR(renderer.alphaClose(), 0.3, 1e-12) << "the first frame counts as one of 60 Hz";
    double now = 1000.0;
    for (const Case& c : {Case{1.0 / 60, 1}, {1.0 / 120, 0.5}, {2.0, 4}, {1.0 / 1000, 0.25}, {0.0, 0.25}}) {
        now += c.dt;
        renderer.drawFrame(1400, 900, 1, now);
        EXPECT_NEAR(renderer.alphaX(), 1 - std::pow(0.75, c.frames), 1e-6) << c.dt;
        EXPECT_NEAR(renderer.alphaY(), 1 - std::pow(0.8, c.frames), 1e-6) << c.dt;
        EXPECT_NEAR(renderer.alphaClose(), 1 - std::pow(0.7, c.frames), 1e-6) << c.dt;
    }
    const double from = list.back().close;
    list.back().close = from + 10;
    renderer.setCandles(list);
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(renderer.drawFrame(1400, 900, 1, now += 1.0 / 120));
    EXPECT_NEAR(renderer.dispClose(), from + 3.0, 1e-6);
    while (renderer.drawFrame(1400, 900, 1, now += 1.0 / 60)) ASSERT_LT(now, 1010);
    EXPECT_EQ(renderer.dispClose(), from + 10);
    list.back().close += 0.02;  // under a millionth of the price
    renderer.setCandles(list);
    EXPECT_FALSE(renderer.drawFrame(1400, 900, 1, now += 1.0 / 60));
    EXPECT_EQ(renderer.dispClose(), list.back().close);
}

TEST_F(FrameTest, OnlyTheFormingBarHasALeastHeight) {
    auto list = bars(30);
    list[28] = bar(28, 21000, 21003, 20998, 21000);
    list[29] = bar(29, 21000, 21003, 20998, 21000);
    renderer.setCandles(list);
    frame();
    const Box closed = box(*layers().bodies, 28 * 6), forming = box(*layers().forming);
    EXPECT_NEAR(closed.bottom - closed.top, 0.0, 1e-6);
    EXPECT_NEAR(forming.bottom - forming.top, 1.5 * 0.9, 0.01);  // the price range has 90 % of the height
    EXPECT_NEAR((forming.bottom + forming.top) * 0.5, closed.top, 0.01);
}

TEST_F(FrameTest, TheFormingBarTurnsWhenItsEasedCloseCrossesTheOpen) {
    auto list = bars(30);
    list[29] = bar(29, 21000, 21010, 20990, 21008);
    renderer.setCandles(list);
    settle();
    list[29].close = 20992;
    renderer.setCandles(list);
    int outlined = 0, solid = 0;
    while (frame()) {
        const bool down = renderer.dispClose() < 21000;
        (down ? outlined : solid) += 1;
        EXPECT_EQ(layers().formingBorder != nullptr, down);
        EXPECT_EQ(gpu.vertices<ChartVertex>(*layers().forming)[0].color, (Rgba{1, 1, 1, down ? 0.4F : 1.0F}));
    }
    EXPECT_TRUE(solid > 0 && outlined > 0);
}

TEST_F(FrameTest, ThePriceLineIsDashedAndBounded) {
    renderer.setCandles(bars(400));
    for (const auto& [w, count] : {std::pair{1401.0, 352U}, {60000.0, 12000U}}) {
        width = w;
        frame();
        const auto& call = *layers().priceLine;
        EXPECT_EQ(call.count, count);
        const auto dashes = gpu.vertices<ChartVertex>(call);
        const double start = gpu.screen(call, dashes[34].position[0], 0)[0];
        const double end = gpu.screen(call, dashes[35].position[0], 0)[0];
        EXPECT_NEAR(start, 17 * 8, w * 2e-5);
        EXPECT_NEAR(end - start, 2, w * 2e-5);
    }
}

TEST_F(FrameTest, TheSessionStartsAtTheFirstBarAfterItsOpen) {
    EXPECT_EQ(renderer.currentSessionStartIndex(), 0U);
    renderer.setCandles(bars(800));  // 08:00 to 21:19 New York; futures sessions open at 18:00
    EXPECT_EQ(renderer.currentSessionStartIndex(), 600U);
    renderer.sessionHHMM = 930;
    EXPECT_EQ(renderer.currentSessionStartIndex(), 90U);
}

}  // namespace
}  // namespace vmr::test
