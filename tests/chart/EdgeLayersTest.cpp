// How bars and waves move, what they look like and which labels they get.
#include "chart/EdgeLayers.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <utility>

#include "chart/StrikeBars.h"
#include "chart/StrikeDisplay.h"
#include "tests/chart/RecordingGpu.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
constexpr double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();

StrikeRow gex(double strike, double call, double put = 0) { return {.strike = strike, .callGex = call, .putGex = put}; }
StrikeRow flow(double strike, double call, double put) { return {.strike = strike, .callHf = call, .putHf = put}; }

/// A view of 1000 x 800 with price 100 in its middle. The axis is at 926, the widest bar has 128.
struct EdgeLayersTest : testing::Test {
    static constexpr double axisX = 926;
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
        const double yScale = pointsPerPrice * 2 / height, alphaX = 1 - std::pow(0.75, f),
                     alphaY = 1 - std::pow(0.8, f);
        const EdgeInput input{strikes, ratio,  flip,          second, 0.5,    config, width,
                              height,  yScale, -100 * yScale, snap,   alphaX, alphaY};
        return edges.step(input, arena);
    }
    const EdgeDisplays& shown() const { return edges.displays(); }
    std::vector<ChartVertex> list(const std::optional<DynUpload>& upload) const {
        if (!upload) return {};
        return gpu.vertices<ChartVertex>({{}, {}, upload->buffer, upload->offset, upload->count, {}, 0, false});
    }
    static double x(const ChartVertex& v) { return (v.position[0] + 1.0) * 500; }
    static double y(const ChartVertex& v) { return (1.0 - v.position[1]) * 400; }
};

TEST_F(EdgeLayersTest, BarsOfAllSetsLieAtTheirEdgesInTheirOrder) {
    config.dexEnabled = true;
    strikes = {{.strike = 99, .callGex = 2, .putGex = 6, .callDex = 3, .putDex = -9}, gex(101, 1)};
    second = {gex(200, -5)};
    const auto bars = list(step().edgeTris);
    struct {
        double left, right, row, thickness;
        Rgba color;
    } const expected[] = {{axisX - 128, axisX, 400, 20, {0.588F, 0.196F, 0.863F, 0.62F * 1.3F}},
                          {axisX - 32, axisX, 390, 16, {0.149F, 0.651F, 0.604F, 0.62F}},
                          {axisX - 128, axisX, 410, 16, {0.937F, 0.325F, 0.314F, 0.62F}},
                          {0, 128, 410, 16, {0.937F, 0.325F, 0.314F, 0.62F}}};
    ASSERT_EQ(bars.size(), std::size(expected) * barVertices) << "a bar without width is not drawn";
    for (std::size_t i = 0; i < bars.size(); ++i) {
        SCOPED_TRACE(i);
        const auto& bar = expected[i / barVertices];
        EXPECT_NEAR(x(bars[i]), "LLRLRR"[i % barVertices] == 'L' ? bar.left : bar.right, 1e-3);
        EXPECT_NEAR(y(bars[i]), bar.row + bar.thickness * ("TBBTBT"[i % barVertices] == 'T' ? -0.5 : 0.5), 1e-3);
        EXPECT_EQ(bars[i].color, bar.color);
    }
    config.gexEnabled = config.dexEnabled = false;
    EXPECT_FALSE(step().edgeTris);
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
        pointsPerPrice = 10;
        EXPECT_FALSE(step(f, true).animating);
        EXPECT_NEAR(shown().gexDisp.find(99)->py, 410, 1e-9) << "nothing trails behind a camera that moves";
    }
}

TEST_F(EdgeLayersTest, StrikesComeAtOnceAndShrinkAway) {
    config.waveEnabled = true;
    const StrikeRow left{.strike = 99, .callGex = 8, .callHf = 8}, gone{.strike = 100, .callGex = -4, .callHf = 4};
    for (const bool oneStays : {true, false}) {
        SCOPED_TRACE(oneStays);
        strikes.clear();
        step(1, true);
        strikes = {left, gone};
        step();
        strikes = oneStays ? std::vector{left} : std::vector{gex(99, 0), gex(100, 0)};
        for (int i = 0; i < 17; ++i) {  // 64 * 0.75^17 is 0.48
            ASSERT_NE(shown().gexDisp.find(100), nullptr) << i;
            const BarDisp bar = *shown().gexDisp.find(100);
            EXPECT_NEAR(bar.w, 64 * std::pow(0.75, i), 1e-9) << "at once in full, then less";
            EXPECT_TRUE(bar.py == 400 && bar.net == -4) << "as it was last";
            EXPECT_NEAR(shown().hfCallDisp.find(100)->x, axisX - 64 * std::pow(0.75, i), 1e-9);
            EXPECT_TRUE(step().animating);
        }
        for (int i = 0; i < 4; ++i) step();
        EXPECT_FALSE(step().animating);
        EXPECT_EQ(shown().gexDisp.size() + shown().hfCallDisp.size(), oneStays ? 2U : 0U);
    }
    strikes = {left, gone};
    step();
    strikes = {left};
    EXPECT_FALSE(step(1, true).animating);
    EXPECT_EQ(shown().gexDisp.size() + shown().hfCallDisp.size(), 2U) << "gone at once while the camera moves";
}

TEST_F(EdgeLayersTest, ThicknessFollowsTheNearerNeighbourAndGatesLabels) {
    config.gexLabels = true;
    const double rows[][3] = {{1, 2, 0}, {12.4, 9.92, 0}, {12.5, 10, 9}, {20, 16, 12}, {24, 19.2, 13}, {90, 20, 13}};
    for (const auto& [gap, thickness, fontSize] : rows) {
        SCOPED_TRACE(gap);
        pointsPerPrice = gap;
        strikes = {gex(90, 6), gex(99, -8), gex(100, 7)};
        const auto bars = list(step(1, true).edgeTris);
        EXPECT_NEAR(y(bars[7]) - y(bars[6]), thickness, 1e-3);
        const auto labels = edges.labels();
        ASSERT_EQ(labels.size(), fontSize > 0 ? 4U : gap > 1 ? 1U : 0U) << "three strikes and KGS";
        EXPECT_EQ(fontSize > 0 ? labels[1].fontSize : 0, fontSize);
    }
}

TEST_F(EdgeLayersTest, LabelsNameStrikesAndMarkKgsAndFlip) {
    config.gexLabels = config.dexEnabled = config.dexLabels = true;
    pointsPerPrice = 20;  // bars are 16 thick, texts 12 high
    strikes = {{.strike = 98, .callGex = 5, .callDex = 4}, gex(99, 0), gex(99.5, 0), gex(100.5, 5, 15)};
    const auto label = [](const char* text, double x, double y, bool right, double grey, std::optional<double> value) {
        return BarLabel{x, y, text, 12, right, grey, grey, grey, value};
    };
    const auto top = label("100.5 ", axisX - 131, 390, true, 0.53, -10);
    const auto kgs = label("KGS", axisX - 131, 378, true, 1, {});
    const auto below = label("98 ", axisX - 67, 440, true, 0.53, 5), dex = label("98 ", 131, 440, false, 0.53, 4);
    const auto flipAt = [](double x, double y) { return BarLabel{x, y, "Gamma Flip", 12, true, 1, 0.843, 0, {}}; };
    const auto labels = [&](std::optional<double> at) {
        flip = at;
        step(1, true);
        std::vector<BarLabel> made(edges.labels().begin(), edges.labels().end());
        for (BarLabel& one : made) one.y = std::round(one.y * 1e6) / 1e6;
        return made;
    };
    EXPECT_THAT(labels({}), ElementsAre(top, kgs, below, dex));
    EXPECT_THAT(labels(7), ElementsAre(top, kgs, below, flipAt(axisX - 67, 428), dex));
    EXPECT_THAT(labels(1e5), ElementsAre(top, kgs, flipAt(axisX - 131, 378 - 14), below, dex));
    EXPECT_THAT(labels(99.2), ElementsAre(top, kgs, below, dex)) << "the flip's strike has no bar";
    EXPECT_EQ(keyGammaStrike(std::vector{gex(1, 0, 3), gex(2, 3), gex(nan, 9)}), 1) << "the first of equals";
    EXPECT_EQ(nearestStrike(std::vector{gex(nan, 1), gex(3, 1), gex(1, 1)}, 2), 3);
}

TEST_F(EdgeLayersTest, WavesAreFilledStrokedAndDotted) {
    config.waveEnabled = true;
    config.waveOpacity = 0.5F;
    strikes = {flow(99, -8, 0), flow(101, 4, 0)};
    const auto wave = list(step().waveFill);
    ASSERT_EQ(wave.size(), 2 * (12U + 48)) << "calls, then puts";
    // From the top down: half a swing at 390, a whole one at 410. Puts are 0 and lie along the axis.
    const float fill = 0.5F * 0.3F, stroke = 0.5F * 0.75F;
    const std::tuple<std::size_t, double, double, double, float> rows[] = {
        {0, 0, 390, 0, fill * 0.1F}, {1, 64, 390, 0, fill * 0.65F}, {2, 128, 410, 0, fill * 1.2F},
        {6, 64, 390, 0.7, stroke},   {8, 128, 410, 0.7, stroke},    {13, 64, 390, 2.5, stroke},
        {36, 128, 410, 0, stroke},   {61, 0, 390, 0, fill * 0.1F}};
    for (const auto& [i, swing, row, distance, alpha] : rows) {
        SCOPED_TRACE(i);
        EXPECT_NEAR(std::hypot(x(wave[i]) - (axisX - swing), y(wave[i]) - row), distance, 1e-3);
        EXPECT_EQ(wave[i].color[0], (i < 60 ? config.hfCall : config.hfPut)[0]);
        EXPECT_NEAR(wave[i].color[3], alpha, 1e-6);
    }

    strikes = {flow(99, 4, 8), flow(101, 4, 8)};
    step(1, true);
    EXPECT_NEAR(shown().hfCallDisp.find(99)->x, axisX - 64, 1e-9) << "calls and puts share a scale";

    config.waveEnabled = false;
    config.oiEnabled = true;
    strikes = {{.strike = 99, .callOI = 2, .putOI = 8}, {.strike = 101, .callOI = 4, .putOI = 8}};
    const auto oi = list(step().waveFill);
    EXPECT_EQ(oi.at(6).color, (Rgba{0.149F, 0.651F, 0.604F, 0.4F * 0.75F}));
    EXPECT_EQ(oi.at(66).color, (Rgba{0.937F, 0.325F, 0.314F, 0.4F * 0.75F}));
}

TEST_F(EdgeLayersTest, TheNetWaveEasesThroughCameraMovesAndIsPaintedBySign) {
    config.waveEnabled = true;
    config.waveMode = "net";
    strikes = {flow(99, 3, 5), flow(101, 2, -6), flow(103, 2, 0)};
    const auto wave = list(step().waveFill);
    ASSERT_EQ(wave.size(), 2U * 12 + 3 * 24);
    std::string colors;
    for (const std::size_t i : {0U, 12U, 6U, 18U, 24U, 48U, 72U})
        colors += wave[i].color[0] == config.hfPut[0] ? 'p' : 'c';
    EXPECT_EQ(colors, "cccpcpc") << "fill, segments by first point, dots";
    EXPECT_EQ(shown().hfPutDisp.size(), 0U);
    pointsPerPrice = 20;
    EXPECT_TRUE(step(1, true).animating);
    EXPECT_NEAR(shown().hfCallDisp.find(99)->py, 412, 1e-9);
    strikes.pop_back();
    EXPECT_EQ(list(step(1, true).waveFill).size(), wave.size())
        << "what went away falls back to the axis also while the camera moves";
    config.waveMode = "separated";
    step();
    EXPECT_NEAR(shown().hfPutDisp.find(99)->py, 420, 1e-9) << "a wave that begins does not ease";
}

TEST_F(EdgeLayersTest, BadRowsAreLeftOutAndBadViewsLeaveAllAsItIs) {
    config.waveEnabled = config.gexLabels = true;
    const auto row = [](double strike, double value) {
        return StrikeRow{.strike = strike, .callGex = value, .callHf = value, .putHf = value / 2};
    };
    const std::vector<StrikeRow> clean = {row(98, 6), row(99, 8), row(102, 4)};
    strikes = clean;
    const auto wanted = list(step(1, true).edgeTris), wantedWave = list(step(1, true).waveFill);
    const auto same = [&](const char* why, const std::vector<StrikeRow>& rows) {
        SCOPED_TRACE(why);
        strikes = rows;
        for (int i = 0; i < 3; ++i) {
            const EdgeFrame frame = step();
            EXPECT_FALSE(frame.animating);
            EXPECT_TRUE(list(frame.edgeTris) == wanted && list(frame.waveFill) == wantedWave);
        }
    };
    same("unsorted", {clean[2], clean[0], clean[1]});
    same("not numbers", {row(nan, 5), clean[0], row(inf, 8), clean[1], row(100, nan), clean[2], row(-inf, 2)});
    same("twice", {row(99, 1), row(102, 3), clean[1], clean[0], clean[2]});

    for (const auto& [field, value] : {std::pair{&ratio, 0.0}, {&ratio, nan}, {&width, 0.0}, {&height, nan}}) {
        const double was = std::exchange(*field, value);
        const EdgeFrame frame = step();
        EXPECT_FALSE(frame.edgeTris || frame.waveFill || frame.waveStroke || frame.animating);
        EXPECT_TRUE(edges.labels().empty());
        *field = was;
    }
    strikes.push_back(row(103, inf));
    step(1, true);
    EXPECT_EQ(shown().gexDisp.size() + shown().hfCallDisp.size(), 0U) << "an endless value scales nothing";
}

}  // namespace
}  // namespace vmr::test
