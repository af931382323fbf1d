// How bars and waves move, what they look like and which labels they get.
#include "chart/EdgeLayers.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>

#include "chart/StrikeBars.h"
#include "chart/StrikeDisplay.h"
#include "gpu/FrameRecorder.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
constexpr double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();

StrikeRow gex(double strike, double call, double put = 0) { return {.strike = strike, .callGex = call, .putGex = put}; }
StrikeRow flow(double strike, double call, double put) { return {.strike = strike, .callHf = call, .putHf = put}; }
/// With a bar and a point of the wave.
StrikeRow both(double strike, double value) {
    return {.strike = strike, .callGex = value, .callHf = value, .putHf = value / 2};
}

/// A view of 1000 x 800 with price 100 in its middle. The axis is at 926, the widest bar has 128.
struct EdgeLayersTest : testing::Test {
    static constexpr double axisX = 926;
    FrameRecorder gpu;
    FrameArena arena{gpu};
    EdgeLayers edges;
    RenderConfig config;
    std::vector<StrikeRow> strikes, second;
    std::optional<double> flip;
    double pointsPerPrice = 10;

    EdgeLayersTest() {
        gpu.beginFrame(1000, 800, 1);
        config.gexLabels = config.waveEnabled = false;
    }
    /// One frame that lasts `f` sixtieths of a second.
    EdgeFrame step(double f = 1, bool snap = false) {
        arena.beginFrame();
        const double yScale = pointsPerPrice * 2 / 800;
        const double alphaX = 1 - std::pow(0.75, f), alphaY = 1 - std::pow(0.8, f);
        const EdgeInput input{strikes, 1,      flip,          second, 0.5,    config, 1000,
                              800,     yScale, -100 * yScale, snap,   alphaX, alphaY};
        return edges.step(input, arena);
    }
    const BarDisp* bar(double strike) const { return edges.displays().gexDisp.find(strike); }
    const WaveDisp* point(double strike) const { return edges.displays().hfCallDisp.find(strike); }
    std::size_t shown() const { return edges.displays().gexDisp.size() + edges.displays().hfCallDisp.size(); }
    template <class Vertex>
    std::vector<Vertex> list(const std::optional<DynUpload>& upload) {
        if (!upload) return {};
        std::vector<Vertex> out(upload->count);
        const auto bytes = gpu.arenaBytes(upload->buffer).subspan(upload->offset, out.size() * sizeof(Vertex));
        std::memcpy(out.data(), bytes.data(), bytes.size());
        return out;
    }
    std::vector<BoxVertex> bars(const EdgeFrame& frame) { return list<BoxVertex>(frame.bars); }
    struct Wave {
        std::vector<ChartVertex> fill;
        std::vector<LineVertex> stroke;
        std::vector<MarkerVertex> dots;
        bool operator==(const Wave&) const = default;
    };
    Wave wave(const EdgeFrame::Wave& made) {
        return {list<ChartVertex>(made.fill), list<LineVertex>(made.stroke), list<MarkerVertex>(made.dots)};
    }
    static double x(const float* place) { return (place[0] + 1.0) * 500; }
    static double y(const float* place) { return (1.0 - place[1]) * 400; }
};

TEST_F(EdgeLayersTest, BarsOfAllSetsLieAtTheirEdgesInTheirOrder) {
    config.dexEnabled = true;
    strikes = {{.strike = 99, .callGex = 2, .putGex = 6, .callDex = 3, .putDex = -9}, gex(101, 1)};
    second = {gex(200, -5)};
    const auto drawn = bars(step());
    const struct {
        double places[4];  // left, right, top, bottom
        Rgba color;
    } expected[] = {{{axisX - 128, axisX, 390, 410}, {0.588F, 0.196F, 0.863F, 0.62F * 1.3F}},
                    {{axisX - 32, axisX, 382, 398}, {0.149F, 0.651F, 0.604F, 0.62F}},
                    {{axisX - 128, axisX, 402, 418}, {0.937F, 0.325F, 0.314F, 0.62F}},
                    {{0, 128, 402, 418}, {0.937F, 0.325F, 0.314F, 0.62F}}};
    ASSERT_EQ(drawn.size(), std::size(expected) * barVertices) << "a bar without width is not drawn";
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const BoxVertex& box = drawn[i * barVertices];
        const double is[] = {x(box.corner), x(box.opposite), y(box.corner), y(box.opposite)};
        EXPECT_THAT(is, testing::Pointwise(testing::DoubleNear(1e-3), expected[i].places));
        EXPECT_EQ(box.color, Rgba8(expected[i].color));
    }
    strikes[1] = gex(101, 0);
    EXPECT_EQ(bars(step())[barVertices].color, Rgba8(expected[1].color)) << "a net of 0 shrinks as a positive one";
}

TEST_F(EdgeLayersTest, EasingTakesTheSameTimeAtEveryRateAndEnds) {
    config.waveEnabled = true;
    for (const double f : {1.0, 0.5, 4.0}) {
        SCOPED_TRACE(f);
        strikes = {both(99, 8), both(101, 4)};
        step(f, true);
        strikes[1] = both(101, 8);
        pointsPerPrice = 40;
        for (double passed = f; passed <= 8; passed += f) {
            EXPECT_TRUE(step(f).animating);
            EXPECT_NEAR(bar(101)->w, 128 - 64 * std::pow(0.75, passed), 1e-9);
            EXPECT_NEAR(bar(101)->py, 360 + 30 * std::pow(0.8, passed), 1e-9);
            EXPECT_NEAR(point(101)->x, axisX - 128 + 64 * std::pow(0.75, passed), 1e-9);
            EXPECT_NEAR(point(99)->py, 440 - 30 * std::pow(0.8, passed), 1e-9);
        }
        for (int frames = 0; step(f).animating; ++frames) ASSERT_LT(frames, 100);
        EXPECT_EQ(bar(101)->w, 128) << "what is near snaps";
        pointsPerPrice = 10;
        EXPECT_FALSE(step(f, true).animating);
        EXPECT_NEAR(bar(99)->py, 410, 1e-9) << "nothing trails behind a camera that moves";
    }
}

TEST_F(EdgeLayersTest, StrikesComeAtOnceAndShrinkAway) {
    config.waveEnabled = true;
    const StrikeRow left = both(99, 8), gone{.strike = 100, .callGex = -4, .callHf = 4};
    for (const bool oneStays : {true, false}) {
        SCOPED_TRACE(oneStays);
        strikes.clear();
        step(1, true);
        strikes = {left, gone};
        step();
        strikes = oneStays ? std::vector{left} : std::vector{gex(99, 0), gex(100, 0)};
        for (int i = 0; i < 17; ++i) {  // 64 * 0.75^17 is 0.48
            ASSERT_NE(bar(100), nullptr) << i;
            EXPECT_NEAR(bar(100)->w, 64 * std::pow(0.75, i), 1e-9) << "at once in full, then less";
            EXPECT_TRUE(bar(100)->py == 400 && bar(100)->net == -4) << "as it was last";
            EXPECT_NEAR(point(100)->x, axisX - 64 * std::pow(0.75, i), 1e-9);
            EXPECT_TRUE(step().animating);
        }
        for (int i = 0; i < 4; ++i) step();
        EXPECT_FALSE(step().animating);
        EXPECT_EQ(shown(), oneStays ? 2U : 0U);
    }
    strikes = {left, gone};
    step();
    strikes = {left};
    EXPECT_FALSE(step(1, true).animating);
    EXPECT_EQ(shown(), 2U) << "gone at once while the camera moves";
}

TEST_F(EdgeLayersTest, ThicknessFollowsTheNearerNeighbourAndGatesLabels) {
    config.gexLabels = true;
    const double rows[][3] = {{1, 2, 0}, {12.4, 9.92, 0}, {12.5, 10, 9}, {20, 16, 12}, {24, 19.2, 13}, {90, 20, 13}};
    for (const auto& [gap, thickness, fontSize] : rows) {
        SCOPED_TRACE(gap);
        pointsPerPrice = gap;
        strikes = {gex(90, 6), gex(99, -8), gex(100, 7)};
        const BoxVertex box = bars(step(1, true)).at(barVertices);
        EXPECT_NEAR(y(box.opposite) - y(box.corner), thickness, 1e-3);
        const auto labels = edges.labels();
        ASSERT_EQ(labels.size(), fontSize > 0 ? 4U : gap > 1 ? 1U : 0U) << "three strikes and KGS";
        EXPECT_EQ(fontSize > 0 ? labels[1].fontSize : 0, fontSize);
    }
}

TEST_F(EdgeLayersTest, LabelsNameStrikesAndMarkKgsAndFlip) {
    config.gexLabels = config.dexEnabled = config.dexLabels = true;
    pointsPerPrice = 20;  // bars are 16 thick, texts 12 high
    strikes = {{.strike = 98, .callGex = 5, .callDex = 4}, gex(99, 0), gex(99.5, 0), gex(100.5, 5, 15)};
    const auto labels = [&](std::optional<double> at) {
        flip = at;
        step(1, true);
        std::vector<std::string> told;
        for (const BarLabel& label : edges.labels()) {
            std::ostringstream text;
            text << label.text << " at " << label.anchorX << " " << label.y
                 << (label.alignRight ? "" : ", from the left");
            if (label.value) text << ", worth " << *label.value;
            told.push_back(text.str());
        }
        return told;
    };
    const auto top = "100.5  at 795 390, worth -10", kgs = "KGS at 795 378", below = "98  at 859 440, worth 5",
               dex = "98  at 131 440, from the left, worth 4";
    for (const double flipAt : {7.0, 98.5})  // of equally near strikes the first
        EXPECT_THAT(labels(flipAt), ElementsAre(top, kgs, below, "Gamma Flip at 859 428", dex));
    EXPECT_THAT(labels(1e5), ElementsAre(top, kgs, "Gamma Flip at 795 364", below, dex));
    EXPECT_THAT(labels(99.2), ElementsAre(top, kgs, below, dex)) << "the flip's strike has no bar";
    EXPECT_EQ(keyGammaStrike(std::vector{gex(1, 0, 3), gex(2, 3), gex(nan, 9)}), 1) << "the first of equals";
}

TEST_F(EdgeLayersTest, WavesShareAScaleAndTheNetOneEasesThroughCameraMovesPaintedBySign) {
    config.waveEnabled = true;
    strikes = {flow(99, -8, 0), flow(101, 4, 16)};
    const EdgeFrame frame = step();
    const struct {
        Wave is;
        double swings[2];
        Rgba8 color;
    } waves[] = {{wave(frame.waves[0]), {32, 64}, config.hfCall}, {wave(frame.waves[1]), {128, 0}, config.hfPut}};
    for (const auto& [is, swings, color] : waves) {
        ASSERT_TRUE(is.fill.size() == 3 * 4 && is.stroke.size() == segmentVertices &&
                    is.dots.size() == 2 * discVertices);
        for (std::size_t i = 0; i < 2; ++i) {
            for (const float* at : {is.stroke[i * 2].pos, is.dots[i * discVertices].center}) {
                EXPECT_NEAR(x(at), axisX - swings[i], 1e-3);
                EXPECT_NEAR(y(at), i == 0 ? 390 : 410, 1e-3);
            }
        }
        // the area fades in over the pixel around its first row, and out over that around its last
        for (const auto& [vertex, place, swing] :
             {std::tuple(1, 389.5, swings[0]), {2, 390.5, swings[0]}, {6, 409.5, swings[1]}, {10, 410.5, swings[1]}}) {
            EXPECT_NEAR(x(is.fill[vertex].position), axisX - swing, 1e-3);
            EXPECT_NEAR(y(is.fill[vertex].position), place, 1e-3);
            EXPECT_EQ(is.fill[vertex].color.a == 0, vertex == 1 || vertex == 10) << vertex;
        }
        EXPECT_TRUE(is.fill[1].color.r == color.r && is.stroke[0].color.r == color.r && is.dots[0].color.r == color.r);
    }
    config.waveMode = "net";
    strikes = {flow(99, 3, 5), flow(101, 2, -6), flow(103, 2, 0)};
    const Wave net = wave(step(1, true).waves[0]);
    ASSERT_TRUE(net.fill.size() == 4 * 4 && net.stroke.size() == 2 * segmentVertices &&
                net.dots.size() == 3 * discVertices);
    std::string colors;  // fill, segments by first point, dots
    for (const Rgba8& color : {net.fill[0].color, net.fill[6].color, net.stroke[0].color, net.stroke[4].color,
                               net.dots[0].color, net.dots[4].color, net.dots[8].color})
        colors += color.r == Rgba8(config.hfPut).r ? 'p' : 'c';
    EXPECT_EQ(colors, "cccpcpc");
    EXPECT_EQ(net.stroke[3].joined[1], net.stroke[4].dir[1]) << "the stroke is one line";
    for (int i = 0; i < 60; ++i) step();
    pointsPerPrice = 20;
    EXPECT_TRUE(step(1, true).animating);
    EXPECT_NEAR(point(99)->py, 412, 1e-9);
    strikes.pop_back();
    EXPECT_EQ(wave(step(1, true).waves[0]).dots.size(), net.dots.size())
        << "what went away falls back to the axis also while the camera moves";
}

TEST_F(EdgeLayersTest, BadRowsAreLeftOut) {
    config.waveEnabled = config.gexLabels = true;
    const std::vector<StrikeRow> clean = {both(98, 6), both(99, 8), both(102, 4)};
    strikes = clean;
    const EdgeFrame first = step(1, true);
    const auto wanted = bars(first);
    const Wave wantedWave = wave(first.waves[0]);
    ASSERT_FALSE(wantedWave.fill.empty());
    for (const auto& rows : {std::vector{clean[2], clean[0], clean[1]},
                             {both(nan, 5), clean[0], both(inf, 8), clean[1], both(100, nan), clean[2], both(-inf, 2)},
                             {both(99, 1), both(102, 3), clean[1], clean[0], clean[2]}}) {
        strikes = rows;
        const EdgeFrame frame = step();
        EXPECT_FALSE(frame.animating);
        EXPECT_TRUE(bars(frame) == wanted && wave(frame.waves[0]) == wantedWave);
    }
}

}  // namespace
}  // namespace vmr::test
