// What a recorded frame holds: layers, places, easing.
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
    const auto onlyClears = [&] {
        EXPECT_FALSE(frame());
        ASSERT_EQ(gpu.draws.size(), 1U);
        const auto corners = gpu.vertices<ChartVertex>(gpu.draws[0]);
        EXPECT_THAT(gpu.draws[0].uniforms, testing::ElementsAre(1, 0, 1, 0, 0, 0, 0, 0));
        EXPECT_EQ(corners[0], (ChartVertex{{-1, 1, 0, 1}, {0.04F, 0.04F, 0.04F, 1}}));
        EXPECT_EQ(corners[2], (ChartVertex{{1, -1, 0, 1}, {0.04F, 0.04F, 0.04F, 1}}));
    };
    onlyClears();
    renderer.setCandles(bars(50));
    for (const auto& [w, h] : {std::pair{0.0, 900.0}, {1400.0, 0.0}, {-3.0, 5.0}, {inf, 5.0}}) {
        width = w;
        height = h;
        onlyClears();
    }
    width = 1400;
    height = 900;
    frame();
    EXPECT_GT(gpu.draws.size(), 1U);
    renderer.setCandles({});
    onlyClears();
}

TEST_F(FrameTest, ASingleBarIsTheFormingBarAlone) {
    renderer.setCandles(bars(1));
    EXPECT_EQ(redraws, 1);
    EXPECT_FALSE(frame());
    const Layers now = layers();
    EXPECT_TRUE(now.priceLine && now.forming && now.formingWicks);
    EXPECT_FALSE(now.bodies || now.wicks || now.borders);
    EXPECT_DOUBLE_EQ(renderer.camera().visibleCount, 1.0);
    EXPECT_DOUBLE_EQ(renderer.rightEdgeFirst(), 0.5);
}

TEST_F(FrameTest, LayersLieInTheirOrder) {
    auto list = bars(3);
    list[0] = bar(0, 102, 104, 98, 100);
    list[1] = bar(1, 100, 104, 98, 102);
    list[2] = bar(2, 102, 103, 99, 100);
    renderer.setCandles(list);
    frame();
    const auto line = [](const std::string& text) { return text.substr(0, text.find(" (")); };
    std::vector<std::string> lines;
    std::istringstream dump(gpu.dump());
    for (std::string text; std::getline(dump, text);) lines.push_back(line(text));
    EXPECT_THAT(lines,
                testing::ElementsAre("flat triangles 6 kept", "flat lines 350 frame", "flat triangles 12 kept",
                                     "flat triangles 6 frame", "flat triangles 24 kept", "flat triangles 12 frame",
                                     "ribbon triangles 24 kept", "ribbon triangles 24 frame"));
    EXPECT_EQ(gpu.draws.back().uniforms[4], 1400.0F);
    EXPECT_EQ(gpu.draws.back().uniforms[5], 900.0F);
    for (std::size_t i = 1; i < gpu.draws.size(); ++i) {
        for (std::size_t u = 0; u < 4; ++u) EXPECT_EQ(gpu.draws[i].uniforms[u], gpu.draws[1].uniforms[u]);
    }
}

TEST_F(FrameTest, CandlesLieWhereTheirPricesAre) {
    renderer.setCandles(std::vector{bar(0, 100, 104, 98, 103), bar(1, 103, 105, 101, 102), bar(2, 102, 103, 99, 101)});
    renderer.mirrorPrice(95, 110);
    frame();
    const auto x = [&](double index) {
        return width * (index - renderer.camera().firstVisible) / renderer.camera().visibleCount;
    };
    const auto y = [&](double price) { return height * (1 - ((price - 95) * 1.8 / 15 - 0.9)) * 0.5; };
    const Layers now = layers();
    const Box up = box(*now.bodies), down = box(*now.bodies, 6), forming = box(*now.forming);
    const Box upperWick = box(*now.wicks), lowerWick = box(*now.formingWicks, 6);
    const double near = 0.01;
    EXPECT_NEAR(up.left, x(-0.32), near);
    EXPECT_NEAR(up.right, x(0.32), near);
    EXPECT_NEAR(up.top, y(103), near);
    EXPECT_NEAR(up.bottom, y(100), near);
    EXPECT_NEAR(down.top, y(103), near);
    EXPECT_NEAR(forming.bottom, y(101), near);
    EXPECT_NEAR(upperWick.left, x(-0.06), near);
    EXPECT_NEAR(upperWick.top, y(104), near);
    EXPECT_NEAR(upperWick.bottom, y(103), near);
    EXPECT_NEAR(lowerWick.bottom, y(99), near);
    const auto outline = gpu.vertices<LineVertex>(*now.borders);
    EXPECT_EQ(outline[0].pos[2], 1.0F);
    EXPECT_EQ(outline[1].pos[2], -1.0F);
    EXPECT_EQ(outline[0].pos[3], 0.5F);
    EXPECT_NEAR(outline[0].dir[0], 0.64F, 1e-6);
}

TEST_F(FrameTest, BigPricesAndManyBarsStayCrisp) {
    auto list = bars(5000);
    for (Candle& c : list) {
        for (double* price : {&c.open, &c.high, &c.low, &c.close}) *price += 978000.25;
    }
    renderer.setCandles(list);
    renderer.zoom(0.0);  // ten bars
    renderer.pan(-3);
    const double mid = list.back().close;
    renderer.mirrorPrice(mid - 1, mid + 1);
    frame();
    const auto& camera = renderer.camera();
    const std::size_t index = 4995;
    const Box body = box(*layers().bodies, index * 6);
    EXPECT_NEAR(body.left, width * (4995 - 0.32 - camera.firstVisible) / camera.visibleCount, 0.02);
    const double top = std::max(list[index].open, list[index].close);
    EXPECT_NEAR(body.top, height * (1 - ((top - mid + 1) * 0.9 - 0.9)) * 0.5, 0.02);
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
    for (const Case& c :
         {Case{1.0 / 60, 1}, {1.0 / 120, 0.5}, {2.0, 4}, {1.0 / 1000, 0.25}, {0.0, 0.25}, {1.0 / 15, 4}}) {
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
}

TEST_F(FrameTest, ASmallStepOfTheCloseJumpsAndRests) {
    auto list = bars(50);
    renderer.setCandles(list);
    settle();
    list.back().close += 0.02;  // under a millionth of the price
    renderer.setCandles(list);
    EXPECT_FALSE(frame());
    EXPECT_EQ(renderer.dispClose(), list.back().close);
    list.back().close += 0.25;
    renderer.setCandles(list);
    EXPECT_TRUE(frame());
    EXPECT_LT(settle(), 20);
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
    EXPECT_FALSE(layers().formingBorder);
    list[29].close = 20992;
    renderer.setCandles(list);
    int outlined = 0, solid = 0;
    while (frame()) {
        const bool down = renderer.dispClose() < 21000;
        (down ? outlined : solid) += 1;
        EXPECT_EQ(layers().formingBorder != nullptr, down);
        EXPECT_EQ(gpu.vertices<ChartVertex>(*layers().forming)[0].color, (Rgba{1, 1, 1, down ? 0.4F : 1.0F}));
    }
    EXPECT_GT(solid, 0);
    EXPECT_GT(outlined, 0);
}

TEST_F(FrameTest, ThePriceLineIsDashedAndBounded) {
    renderer.setCandles(bars(400));
    frame();
    const auto& call = *layers().priceLine;
    const auto dashes = gpu.vertices<ChartVertex>(call);
    for (const std::size_t i : {0U, 17U, 174U}) {
        const double start = gpu.screen(call, dashes[i * 2].position[0], 0)[0];
        const double end = gpu.screen(call, dashes[i * 2 + 1].position[0], 0)[0];
        EXPECT_NEAR(start, static_cast<double>(i) * 8, 0.02);
        EXPECT_NEAR(end - start, 2, 0.02);
    }
    EXPECT_EQ(dashes[0].color, (Rgba{1, 1, 1, 0.38F}));
    for (const auto& [w, count] : {std::pair{1401.0, 352U}, {48000.0, 12000U}, {60000.0, 12000U}}) {
        width = w;
        frame();
        EXPECT_EQ(layers().priceLine->count, count);
    }
}

TEST_F(FrameTest, TheSessionStartsAtTheFirstBarAfterItsOpen) {
    EXPECT_EQ(renderer.currentSessionStartIndex(), 0U);
    renderer.setCandles(bars(800));  // 08:00 to 21:19 New York; futures sessions open at 18:00
    EXPECT_EQ(renderer.currentSessionStartIndex(), 600U);
    renderer.sessionHHMM = 930;
    EXPECT_EQ(renderer.currentSessionStartIndex(), 90U);
    renderer.setCandles(bars(40));
    EXPECT_EQ(renderer.currentSessionStartIndex(), 0U);
}

}  // namespace
}  // namespace vmr::test
