// How bars and waves move, what they look like and which labels they get.
#include "chart/EdgeLayers.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <utility>

#include "chart/StrikeBars.h"
#include "chart/StrikeDisplay.h"
#include "tests/chart/AllocationCount.h"
#include "tests/chart/RecordingGpu.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

StrikeRow gex(double strike, double call, double put = 0) { return {.strike = strike, .callGex = call, .putGex = put}; }
StrikeRow flow(double strike, double call, double put) { return {.strike = strike, .callHf = call, .putHf = put}; }

/// A view of 1000 x 800 with price 100 in its middle. The axis is at 926, the widest bar has 128.
struct EdgeLayersTest : testing::Test {
    static constexpr double axisX = 926, maxW = 128;
    RecordingGpu gpu;
    FrameArena arena{gpu};
    EdgeLayers edges;
    RenderConfig config;
    std::vector<StrikeRow> strikes, second;
    std::optional<double> flip;
    double pointsPerPrice = 10, ratio = 1, width = 1000, height = 800;

    EdgeLayersTest() {
        gpu.beginFrame(width, height, 1);
        config.gexLabels = config.waveEnabled = false;
    }

    /// One frame that lasts `f` sixtieths of a second.
    EdgeFrame step(double f = 1, bool snap = false) {
        arena.beginFrame();
        const double yScale = pointsPerPrice * 2 / height;
        return edges.step({.strikes = strikes,
                           .etfRatio = ratio,
                           .flipStrike = flip,
                           .secStrikes = second,
                           .secRatio = 0.5,
                           .config = config,
                           .viewW = width,
                           .viewH = height,
                           .yScale = yScale,
                           .yOffset = -100 * yScale,
                           .snapLerps = snap,
                           .alphaX = 1 - std::pow(0.75, f),
                           .alphaY = 1 - std::pow(0.8, f)},
                          arena);
    }
    const EdgeDisplays& shown() const { return edges.displays(); }
    std::vector<ChartVertex> list(const std::optional<DynUpload>& upload) const {
        if (!upload) return {};
        RecordingGpu::DrawCall call;
        call.buffer = upload->buffer;
        call.offset = upload->offset;
        call.count = upload->count;
        return gpu.vertices<ChartVertex>(call);
    }
    static double x(const ChartVertex& v) { return (v.position[0] + 1.0) * 500; }
    static double y(const ChartVertex& v) { return (1.0 - v.position[1]) * 400; }
};

TEST_F(EdgeLayersTest, BarsOfAllSetsLieAtTheirEdgesInTheirOrder) {
    config.dexEnabled = true;
    strikes = {{.strike = 99, .callGex = 2, .putGex = 6, .callDex = 3, .putDex = -9}, gex(101, 1)};
    second = {gex(200, -5, 0)};
    const auto bars = list(step().edgeTris);
    struct Expected {
        double left, right, top, bottom;
        Rgba color;
    };
    const Expected expected[] = {{axisX - maxW, axisX, 390, 410, {0.588F, 0.196F, 0.863F, 0.62F * 1.3F}},
                                 {axisX - maxW / 4, axisX, 382, 398, {0.149F, 0.651F, 0.604F, 0.62F}},
                                 {axisX - maxW, axisX, 402, 418, {0.937F, 0.325F, 0.314F, 0.62F}},
                                 {0, maxW, 402, 418, {0.937F, 0.325F, 0.314F, 0.62F}}};
    ASSERT_EQ(bars.size(), std::size(expected) * barVertices) << "a bar without width is not drawn";
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        SCOPED_TRACE(i);
        const ChartVertex* corner = &bars[i * barVertices];
        const Expected& bar = expected[i];
        const double wanted[6][2] = {{bar.left, bar.top}, {bar.left, bar.bottom},  {bar.right, bar.bottom},
                                     {bar.left, bar.top}, {bar.right, bar.bottom}, {bar.right, bar.top}};
        for (std::size_t k = 0; k < 6; ++k) {
            EXPECT_NEAR(x(corner[k]), wanted[k][0], 1e-3);
            EXPECT_NEAR(y(corner[k]), wanted[k][1], 1e-3);
            EXPECT_EQ(corner[k].color, bar.color);
        }
    }
    second.clear();
    config.gexEnabled = config.dexEnabled = false;
    EXPECT_FALSE(step().edgeTris);
    EXPECT_EQ(shown().gexDisp.size() + shown().dexDisp.size() + shown().secDisp.size(), 0U);
}

TEST_F(EdgeLayersTest, EasingTakesTheSameTimeAtEveryRateAndEnds) {
    config.waveEnabled = true;
    for (const double f : {1.0, 0.5, 4.0}) {
        SCOPED_TRACE(f);
        strikes = {{.strike = 99, .callGex = 8, .callHf = 8}, {.strike = 101, .callGex = 4, .callHf = 4}};
        step(f, true);
        strikes[1].callGex = strikes[1].callHf = 8;
        pointsPerPrice = 40;
        for (double passed = f; passed <= 8; passed += f) {
            EXPECT_TRUE(step(f).animating);
            EXPECT_NEAR(shown().gexDisp.find(101)->w, 128 - 64 * std::pow(0.75, passed), 1e-9);
            EXPECT_NEAR(shown().gexDisp.find(101)->py, 360 + 30 * std::pow(0.8, passed), 1e-9);
            EXPECT_NEAR(shown().hfCallDisp.find(101)->x, axisX - 128 + 64 * std::pow(0.75, passed), 1e-9);
            EXPECT_NEAR(shown().hfCallDisp.find(99)->py, 440 - 30 * std::pow(0.8, passed), 1e-9);
        }
        int frames = 0;
        while (step(f).animating) ASSERT_LT(++frames, 100);
        EXPECT_EQ(shown().gexDisp.find(101)->w, 128) << "what is near snaps";
        EXPECT_NEAR(shown().hfCallDisp.find(99)->py, 440, 1e-9);
        pointsPerPrice = 10;
        EXPECT_FALSE(step(f, true).animating);
        EXPECT_NEAR(shown().gexDisp.find(99)->py, 410, 1e-9) << "nothing trails behind a camera that moves";
    }
}

TEST_F(EdgeLayersTest, StrikesComeAtOnceAndShrinkAway) {
    config.waveEnabled = true;
    const auto come = [&] {
        strikes.clear();
        step(1, true);
        strikes = {{.strike = 99, .callGex = 8, .callHf = 8}, {.strike = 100, .callGex = -4, .callHf = 4}};
        step();
        EXPECT_EQ(shown().gexDisp.find(100)->w, 64);
        EXPECT_EQ(shown().hfCallDisp.find(100)->x, axisX - 64);
    };
    const auto shrink = [&](const char* why, const std::vector<StrikeRow>& rest) {
        SCOPED_TRACE(why);
        come();
        strikes = rest;
        for (int i = 1; i <= 17; ++i) {  // 64 * 0.75^17 is 0.48
            const bool animating = step().animating;
            const BarDisp* bar = shown().gexDisp.find(100);
            ASSERT_EQ(bar != nullptr, i < 17) << i;
            if (bar == nullptr) continue;
            EXPECT_TRUE(animating);
            EXPECT_NEAR(bar->w, 64 * std::pow(0.75, i), 1e-9);
            EXPECT_EQ(bar->py, 400);
            EXPECT_EQ(bar->net, -4);
            EXPECT_NEAR(shown().hfCallDisp.find(100)->x, axisX - 64 * std::pow(0.75, i), 1e-9);
        }
    };
    shrink("one strike went away", {{.strike = 99, .callGex = 8, .callHf = 8}});
    step();  // a wave's point arrives within half a point of the axis, and goes one frame later
    EXPECT_FALSE(step().animating);
    EXPECT_EQ(shown().hfCallDisp.size(), 1U);
    shrink("no rows", {});
    shrink("all 0", {gex(99, 0), gex(100, 0)});
    for (int i = 0; i < 4; ++i) step();
    EXPECT_FALSE(step().animating);
    EXPECT_EQ(shown().gexDisp.size() + shown().hfCallDisp.size(), 0U);
    come();
    strikes.pop_back();
    EXPECT_FALSE(step(1, true).animating);
    EXPECT_EQ(shown().gexDisp.size() + shown().hfCallDisp.size(), 2U) << "gone at once while the camera moves";
}

TEST_F(EdgeLayersTest, ThicknessFollowsTheNearerNeighbourAndGatesLabels) {
    config.gexLabels = true;
    struct Row {
        double gap, thickness, fontSize;
    };
    for (const Row& row : {Row{1, 2, 0}, {12.4, 9.92, 0}, {12.5, 10, 9}, {20, 16, 12}, {24, 19.2, 13}, {90, 20, 13}}) {
        SCOPED_TRACE(row.gap);
        pointsPerPrice = row.gap;
        strikes = {gex(97, 6), gex(99, -8), gex(100, 7)};
        const auto bars = list(step(1, true).edgeTris);
        EXPECT_NEAR(y(bars[7]) - y(bars[6]), row.thickness, 1e-3);
        const bool wideApart = row.gap * 2 * barFillFactor >= barLabelMinHeightPx;
        const std::size_t thin = wideApart ? 1 : 0;
        EXPECT_EQ(edges.labels().size(), row.fontSize > 0 ? 4U : thin) << "three strikes and KGS";
        if (row.fontSize > 0) {
            EXPECT_EQ(edges.labels()[1].fontSize, row.fontSize);
        }
    }
    strikes = {gex(100, 7)};
    const auto one = list(step(1, true).edgeTris);
    EXPECT_NEAR(y(one[1]) - y(one[0]), 20, 1e-3);
}

TEST_F(EdgeLayersTest, LabelsNameStrikesAndMarkKgsAndFlip) {
    config.gexLabels = config.dexEnabled = config.dexLabels = true;
    pointsPerPrice = 20;  // bars are 16 thick, texts 12 high
    strikes = {{.strike = 98, .callGex = 5, .callDex = 4}, gex(99, 0), gex(99.5, 0), gex(100.5, 5, 15)};
    const auto label = [](const char* text, double x, double y, bool right, double grey, std::optional<double> value) {
        return BarLabel{x, y, text, 12, right, grey, grey, grey, value};
    };
    const BarLabel top = label("100.5 ", axisX - 131, 390, true, 0.53, -10),
                   kgs = label("KGS", axisX - 131, 378, true, 1, {});
    const BarLabel below = label("98 ", axisX - 67, 440, true, 0.53, 5), dex = label("98 ", 131, 440, false, 0.53, 4);
    const auto flipAt = [](double x, double y) { return BarLabel{x, y, "Gamma Flip", 12, true, 1, 0.843, 0, {}}; };
    const auto labels = [&](std::optional<double> at) {
        flip = at;
        step(1, true);
        std::vector<BarLabel> made(edges.labels().begin(), edges.labels().end());
        for (BarLabel& one : made) one.y = std::round(one.y * 1e6) / 1e6;
        return made;
    };
    EXPECT_THAT(labels({}), ElementsAre(top, kgs, below, dex));
    EXPECT_THAT(labels(nan), ElementsAre(top, kgs, below, dex));
    EXPECT_THAT(labels(7), ElementsAre(top, kgs, below, flipAt(axisX - 67, 428), dex));
    EXPECT_THAT(labels(1e5), ElementsAre(top, kgs, flipAt(axisX - 131, 378 - 14), below, dex));
    EXPECT_THAT(labels(99.2), ElementsAre(top, kgs, below, dex)) << "the flip's strike has no bar";
    config.gexLabels = false;
    EXPECT_THAT(labels(98), ElementsAre(dex));

    EXPECT_EQ(keyGammaStrike(std::vector{gex(1, 0, 3), gex(2, 3), gex(nan, 9)}), 1) << "the first of equals";
    EXPECT_EQ(keyGammaStrike(std::vector{gex(1, 2, 2)}), std::nullopt);
    EXPECT_EQ(nearestStrike(std::vector{gex(nan, 1), gex(3, 1), gex(1, 1)}, 2), 3);
}

TEST_F(EdgeLayersTest, WavesAreFilledStrokedAndDotted) {
    config.waveEnabled = true;
    config.waveOpacity = 0.5F;
    strikes = {flow(99, -8, 0), flow(101, 4, 0)};
    const auto wave = list(step().waveFill);
    ASSERT_EQ(wave.size(), 2 * (12U + 48)) << "calls, then puts";
    const auto expect = [&](std::size_t i, double px, double py, const Rgba& color, float alpha) {
        SCOPED_TRACE(i);
        EXPECT_NEAR(x(wave[i]), px, 1e-3);
        EXPECT_NEAR(y(wave[i]), py, 1e-3);
        EXPECT_THAT((std::array{wave[i].color[0], wave[i].color[1], wave[i].color[2]}),
                    ElementsAre(color[0], color[1], color[2]));
        EXPECT_NEAR(wave[i].color[3], alpha, 1e-6);
    };
    // From the top down: half a swing at 390, a whole one at 410.
    const float fill = 0.5F * 0.3F, stroke = 0.5F * 0.75F;
    expect(0, axisX, 390, config.hfCall, fill * 0.1F);
    expect(1, axisX - 64, 390, config.hfCall, fill * 0.65F);
    expect(2, axisX - 128, 410, config.hfCall, fill * 1.2F);
    expect(5, axisX, 410, config.hfCall, fill * 0.1F);
    for (const auto& [i, px, py] : {std::tuple{6U, -64, 390}, {7U, -64, 390}, {8U, -128, 410}, {10U, -128, 410}}) {
        EXPECT_NEAR(std::hypot(x(wave[i]) - (axisX + px), y(wave[i]) - py), 0.7, 1e-3) << i;
        EXPECT_NEAR(wave[i].color[3], stroke, 1e-6);
    }
    EXPECT_NEAR(std::hypot(x(wave[6]) - x(wave[7]), y(wave[6]) - y(wave[7])), 1.4, 1e-3);
    for (std::size_t i = 12; i < 60; i += 3) {
        expect(i, axisX - (i < 36 ? 64 : 128), i < 36 ? 390 : 410, config.hfCall, stroke);
        EXPECT_NEAR(std::hypot(x(wave[i + 1]) - x(wave[i]), y(wave[i + 1]) - y(wave[i])), 2.5, 1e-3);
        EXPECT_EQ(wave[i + 2], wave[i < 33 || (i >= 36 && i < 57) ? i + 4 : i - 20]) << "the fan is closed";
    }
    expect(61, axisX, 390, config.hfPut, fill * 0.1F);  // puts are 0 and lie along the axis

    config.waveEnabled = false;
    config.oiEnabled = true;
    strikes = {{.strike = 99, .callOI = 2, .putOI = 8}, {.strike = 101, .callOI = 4, .putOI = 8}};
    const auto oi = list(step().waveFill);
    ASSERT_EQ(oi.size(), 120U);
    EXPECT_NEAR(x(oi[1]), axisX - 64, 1e-3);
    EXPECT_EQ(oi[6].color, (Rgba{0.149F, 0.651F, 0.604F, 0.4F * 0.75F}));
    EXPECT_EQ(oi[66].color, (Rgba{0.937F, 0.325F, 0.314F, 0.4F * 0.75F}));
    EXPECT_EQ(shown().hfCallDisp.size(), 0U);
    strikes.pop_back();
    EXPECT_FALSE(step(1, true).waveFill) << "one point is no wave";
    EXPECT_EQ(shown().oiPutDisp.size(), 1U);
}

TEST_F(EdgeLayersTest, TheNetWaveEasesThroughCameraMovesAndIsPaintedBySign) {
    config.waveEnabled = true;
    config.waveMode = "net";
    strikes = {flow(99, 3, 5), flow(101, 2, -6), flow(103, 2, 0)};
    auto wave = list(step().waveFill);
    ASSERT_EQ(wave.size(), 2U * 12 + 3 * 24);
    const auto colors = [&](std::initializer_list<std::size_t> at) {
        std::string text;
        for (const std::size_t i : at) text += wave[i].color[0] == config.hfPut[0] ? 'p' : 'c';
        return text;
    };
    EXPECT_EQ(colors({0, 12, 6, 18, 24, 48, 72}), "cccpcpc") << "fill, segments by first point, dots";
    EXPECT_NEAR(wave[24].color[3], config.waveOpacity * 0.9, 1e-6);
    EXPECT_EQ(shown().hfPutDisp.size(), 0U);
    strikes[1].putHf = -7;
    strikes[0].putHf = 0;
    pointsPerPrice = 20;
    EXPECT_TRUE(step(1, true).animating);
    EXPECT_NEAR(shown().hfCallDisp.find(99)->py, 412, 1e-9);
    strikes.pop_back();
    wave = list(step(1, true).waveFill);
    EXPECT_EQ(wave.size(), 2U * 12 + 3 * 24) << "what went away falls back to the axis also while the camera moves";
    EXPECT_EQ(colors({0}), "p");
    config.waveMode = "separated";
    step();
    EXPECT_NEAR(shown().hfPutDisp.find(99)->py, 420, 1e-9) << "a wave that begins does not ease";
    EXPECT_LT(shown().hfCallDisp.find(99)->py, 419);
}

TEST_F(EdgeLayersTest, BadRowsAreLeftOutAndBadViewsLeaveAllAsItIs) {
    config.waveEnabled = config.gexLabels = true;
    const auto row = [](double strike, double value) {
        return StrikeRow{.strike = strike, .callGex = value, .callHf = value, .putHf = value / 2};
    };
    const std::vector<StrikeRow> clean = {row(98, 6), row(99, 8), row(102, 4)};
    strikes = clean;
    const auto wanted = list(step(1, true).edgeTris), wantedWave = list(step(1, true).waveFill);
    const auto same = [&](const char* why, const std::vector<StrikeRow>& rows, bool keepsScale = true) {
        SCOPED_TRACE(why);
        strikes = rows;
        for (int i = 0; i < 3; ++i) {
            const EdgeFrame frame = step();
            EXPECT_FALSE(frame.animating);
            if (!keepsScale) continue;
            EXPECT_TRUE(list(frame.edgeTris) == wanted);
            EXPECT_TRUE(list(frame.waveFill) == wantedWave);
        }
    };
    same("unsorted", {clean[2], clean[0], clean[1]});
    same("not numbers",
         {row(nan, 5), clean[0], row(inf, 8), clean[1], row(100, nan), clean[2], row(nan, 1), row(-inf, 2)});
    same("too far", {row(-1e300, 1), clean[0], clean[1], clean[2], row(1.7e308, 1)});
    same("twice", {row(99, 1), row(102, 3), clean[1], clean[0], clean[2]});

    const auto labels = edges.labels().size();
    for (const auto& [field, value] :
         {std::pair{&ratio, 0.0}, {&ratio, -1.0}, {&ratio, nan}, {&ratio, inf}, {&width, 0.0}, {&height, nan}}) {
        const double was = std::exchange(*field, value);
        const EdgeFrame frame = step();
        EXPECT_FALSE(frame.edgeTris || frame.waveFill || frame.waveStroke || frame.animating);
        EXPECT_TRUE(edges.labels().empty());
        *field = was;
    }
    same("as if nothing had been", clean);
    EXPECT_EQ(edges.labels().size(), labels);
    strikes.push_back(row(103, inf));
    step(1, true);
    EXPECT_EQ(shown().gexDisp.size() + shown().hfCallDisp.size(), 0U) << "an endless value scales nothing";
}

TEST(FlowTextTest, AmountsAreShort) {
    for (const auto& [value, text] : {std::pair{-2.5e9, "-2.5B"},
                                      {999.0, "1k"},
                                      {0.0, "0k"},
                                      {999'999.0, "1000k"},
                                      {1e6, "1.0M"},
                                      {-1.26e6, "-1.3M"},
                                      {1e9, "1.0B"},
                                      {123'456.0, "123k"}})
        EXPECT_EQ(EdgeLayers::fmtFlow(value), text);
    EXPECT_EQ(EdgeLayers::fmtFlow(-1e308).size(), 304U);
}

TEST_F(EdgeLayersTest, AStepAsksForNoMemory) {
    config.gexLabels = config.dexEnabled = config.dexLabels = config.waveEnabled = config.oiEnabled = true;
    for (int i = 0; i < 250; ++i) {
        const double t = i;
        strikes.push_back({20000.25 + t, std::sin(t), std::cos(t), t, -t / 2, std::sin(t / 2), std::cos(t / 2), t, t});
        second.push_back({40001 + 2 * t, std::cos(t), std::sin(t)});
    }
    const auto play = [&](int frames) {
        for (int i = 0; i < frames; ++i) {
            config.waveMode = i % 3 == 0 ? "net" : "separated";
            strikes[7].strike = i % 2 == 0 ? 20007.25 : 19000;  // unsorted, and away again
            strikes[50].callGex = i % 5;
            pointsPerPrice = 15 + i % 10;
            flip = 20000 + i;
            step(0.5, i % 4 == 0);
        }
    };
    play(60);
    const long before = allocationCount();
    play(60);
    EXPECT_EQ(allocationCount() - before, 0);
    EXPECT_GT(edges.labels().size(), 400U);
}

}  // namespace
}  // namespace vmr::test
