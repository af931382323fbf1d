// A frame with everything on: its layers, what each change rebuilds, and the labels that leave it.
#include <gmock/gmock.h>

#include "tests/chart/ChartScene.h"
#include "tests/chart/FullScene.h"

namespace vmr::test {
namespace {

using Retained = std::vector<GpuBuffer>;

struct FullSceneTest : ChartScene {
    SceneData data{bars(300)};

    void show() { data.give(renderer); }
    /// The draw calls of a pipeline and shape, without the background.
    std::vector<RecordingGpu::DrawCall> calls(Pipeline pipeline, Primitive primitive = Primitive::triangles) const {
        std::vector<RecordingGpu::DrawCall> list;
        for (std::size_t i = 1; i < gpu.draws.size(); ++i) {
            const auto& call = gpu.draws[i];
            if (call.pipeline == pipeline && call.primitive == primitive) list.push_back(call);
        }
        return list;
    }
    RecordingGpu::DrawCall walls() const { return calls(Pipeline::flat, Primitive::lines).at(0); }
    RecordingGpu::DrawCall markers() const { return calls(Pipeline::marker).at(0); }
    Retained kept() const {
        Retained list;
        for (const auto& call : gpu.draws) {
            if (call.retained) list.push_back(call.buffer);
        }
        return list;
    }
    double xOf(double bar) const {
        return width * (bar - renderer.camera().firstVisible) / renderer.camera().visibleCount;
    }
    double yOf(double price) const {
        const Camera& camera = renderer.camera();
        return height * 0.5 * (1 - (camera.yOffset() + camera.yScale() * price));
    }
};

TEST_F(FullSceneTest, LayersLieInTheirOrderUnderTheirUniforms) {
    data.candles.back() = data.candles[298];
    data.candles.back().time += 60;
    data.candles.back().close = data.candles.back().open - 4;  // outlined
    show();
    settle();
    struct Layer {
        const char* name;
        Pipeline pipeline;
        Primitive primitive;
        bool retained;
        char uniforms;  // of the Bars, of the Overlays, the Identity
    };
    using enum Pipeline;
    constexpr auto triangles = Primitive::triangles, lines = Primitive::lines;
    const std::vector<Layer> order = {{"background", flat, triangles, true, 'I'},
                                      {"markers", marker, triangles, true, 'B'},
                                      {"waves", flat, triangles, false, 'I'},
                                      {"strike bars", flat, triangles, false, 'I'},
                                      {"walls", flat, lines, true, 'B'},
                                      {"price line", flat, lines, false, 'B'},
                                      {"ribbons", ribbon, triangles, true, 'O'},
                                      {"session lines", ribbon, triangles, true, 'O'},
                                      {"second candles", flat, triangles, true, 'O'},
                                      {"second borders", ribbon, triangles, true, 'O'},
                                      {"bodies", flat, triangles, true, 'B'},
                                      {"forming body", flat, triangles, false, 'B'},
                                      {"wicks", flat, triangles, true, 'B'},
                                      {"forming wicks", flat, triangles, false, 'B'},
                                      {"borders", ribbon, triangles, true, 'B'},
                                      {"forming border", ribbon, triangles, false, 'B'}};
    ASSERT_EQ(gpu.draws.size(), order.size());
    const auto ofBars = gpu.draws[10].uniforms;
    const Uniforms overlays = renderer.camera().uniforms(data.overlays.origin);
    for (std::size_t i = 0; i < order.size(); ++i) {
        SCOPED_TRACE(order[i].name);
        const auto& call = gpu.draws[i];
        EXPECT_EQ(call.pipeline, order[i].pipeline);
        EXPECT_EQ(call.primitive, order[i].primitive);
        EXPECT_EQ(call.retained, order[i].retained);
        std::array<float, 4> expected{1, 0, 1, 0};
        if (order[i].uniforms == 'B') std::copy_n(ofBars.begin(), 4, expected.begin());
        if (order[i].uniforms == 'O') expected = std::bit_cast<std::array<float, 4>>(overlays);
        for (std::size_t u = 0; u < 4; ++u) EXPECT_EQ(call.uniforms[u], expected[u]);
        if (call.uniformCount == 8) {
            EXPECT_THAT(std::span(call.uniforms).subspan(4, 3),
                        testing::ElementsAre(1400.0F, 900.0F, call.pipeline == marker ? 1.0F : 0.0F));
        }
    }
    EXPECT_EQ(gpu.draws[10].count, 299U * 6U);
}

TEST_F(FullSceneTest, WallsAndMarkersLieWhereTheirBarsAndPricesAre) {
    for (const std::size_t dropped : {0, 1, 40}) {  // the same bars' places also when the cap dropped some
        data.candles = bars(300, dropped);
        show();
        renderer.pan(-0.37);
        frame();
        const auto wall = gpu.vertices<ChartVertex>(walls());
        ASSERT_EQ(wall.size(), 4U) << "a level without a price is none";
        const double start = static_cast<double>(renderer.currentSessionStartIndex());
        for (std::size_t i = 0; i < 4; ++i) {
            const auto at = gpu.screen(walls(), wall[i].position[0], wall[i].position[1]);
            EXPECT_NEAR(at[0], xOf(i % 2 == 0 ? start : 301), 0.02);
            EXPECT_NEAR(at[1], yOf(data.levels[i / 2 * 2].price), 0.02);
            EXPECT_EQ(wall[i].color, (Rgba{0.667F, 0.667F, 0.667F, 0.85F}));
        }
        const auto vertices = gpu.vertices<MarkerVertex>(markers());
        const BubblePt& bubble = data.bubbles[40];
        const auto& center = vertices[40 * 36].center;
        const auto at = gpu.screen(markers(), center[0], center[1]);
        const double bar = static_cast<double>((bubble.minuteTs - data.candles.front().time) / 60);
        EXPECT_NEAR(at[0], xOf(bar), 0.02);
        EXPECT_NEAR(at[1], yOf(bubble.strike * data.ratio), 0.02);
    }
}

TEST_F(FullSceneTest, EachChangeRebuildsWhatItTouchesAndAsksForOneFrame) {
    constexpr int none = 0, candles = 1, walls = 2, markers = 4, overlay = 8;
    struct Case {
        const char* name;
        std::function<void()> change;
        int rebuilt;
        int redraws = 1;
    };
    auto& rows = data.strikes;
    auto& lists = data.overlays;
    const std::vector<Case> cases = {
        {"nothing", [] {}, none, 0},
        {"tick", [&] { data.candles.back().close += 0.25; }, none},
        {"new bar", [&] { data.candles = bars(301); }, candles | walls | markers},
        {"theme", [&] { data.config.candleTheme = "classic"; }, candles},
        {"wall moved", [&] { data.levels[0].price += 1; }, walls},
        {"walls off", [&] { data.config.wallsEnabled = false; }, walls},
        {"strike row", [&] { rows[3].callGex += 1; }, none},
        {"ratio", [&] { data.ratio = 41.5; }, markers},
        {"second source", [&] { data.secStrikes[0].putGex += 1; }, none},
        {"useless second ratio", [&] { data.secRatio = 0; }, none, 0},
        {"one more bubble", [&] { data.bubbles.push_back(data.bubbles.back()); }, markers},
        {"last triangle", [&] { data.triangles.back().net += 1; }, markers},
        {"triangle opacity", [&] { data.config.triangleOpacity = 0.5F; }, markers},
        {"another revision of the same overlays", [&] { ++lists.sessionRevision; }, none, 0},
        {"overlay line", [&] { lists.lines.back().pos[1] += 1; }, overlay},
        {"session line under its old revision", [&] { lists.sessionLines.back().pos[1] += 1; }, none, 0},
        {"its new revision", [&] { ++lists.sessionRevision; }, overlay},
        {"the overlays' origin", [&] { lists.origin.bar += 1; }, none},
        {"bubbles off", [&] { data.config.bubblesEnabled = false; }, markers},
    };
    show();
    settle();
    int made = gpu.buffersMade;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        redraws = 0;
        c.change();
        data.give(renderer);
        EXPECT_EQ(redraws > 0 ? 1 : 0, c.redraws);
        frame();
        const bool bordered = data.config.candleTheme == "mono";
        const int expected = (c.rebuilt & candles ? (bordered ? 3 : 2) : 0) +
                             (c.rebuilt & walls && data.config.wallsEnabled ? 1 : 0) + (c.rebuilt & markers ? 1 : 0) +
                             (c.rebuilt & overlay ? 1 : 0);
        EXPECT_EQ(gpu.buffersMade - made, expected);
        made = gpu.buffersMade;
        EXPECT_EQ(calls(Pipeline::flat, Primitive::lines).size(), data.config.wallsEnabled ? 2U : 1U);
        settle();
    }
}

TEST_F(FullSceneTest, AMovedCameraAndAnotherSizeChangeUniformsOnly) {
    show();
    settle();
    const Retained before = kept();
    const int made = gpu.buffersMade;
    const std::vector<std::function<void()>> inputs = {[&] { renderer.pan(-33.3); },
                                                       [&] { renderer.zoom(1.3); },
                                                       [&] { renderer.zoomPrice(0.7); },
                                                       [&] { renderer.panByPrice(30, 900); },
                                                       [&] { renderer.setPriceLineFrac(0.3); },
                                                       [&] { renderer.mirrorView(150, 120); },
                                                       [&] {
                                                           width = 911, height = 507;
                                                           renderer.redraw();
                                                       }};
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        SCOPED_TRACE(i);
        const auto old = markers().uniforms;
        redraws = 0;
        inputs[i]();
        EXPECT_EQ(redraws, 1);
        frame();
        EXPECT_EQ(kept(), before);
        EXPECT_NE(markers().uniforms, old);
        const auto wave = gpu.vertices<ChartVertex>(gpu.draws[2]).front();
        EXPECT_NEAR(gpu.screen(gpu.draws[2], wave.position[0], 0)[0], width - Camera::priceAxisPadPx, 0.01);
    }
    EXPECT_EQ(gpu.buffersMade, made);
    EXPECT_EQ(markers().uniforms[4], 911.0F);
    data.candles = bars(5000);  // ends beyond the markers' full size
    show();
    renderer.mirrorView(0, 1600);
    frame();
    EXPECT_NEAR(markers().uniforms[6], 0.0625, 1e-6);
    EXPECT_NEAR(markers().uniforms[7], 0.5, 1e-6);
}

TEST_F(FullSceneTest, BarsMayComeAloneBeforeTheirHistory) {
    data.candles = bars(1, 299);
    show();
    frame();
    data.candles = bars(300);
    show();
    settle();
    EXPECT_TRUE(renderer.camera().followLive);
    EXPECT_GT(renderer.camera().visibleCount, 200) << "the history is in view as if it had come first";
    EXPECT_NEAR(gpu.vertices<MarkerVertex>(markers())[0].center[0], 200.0F - 299.0F, 1e-6);
}

TEST_F(FullSceneTest, LabelsLeaveOutsideTheFrameWhenTheyDiffer) {
    std::vector<std::vector<BarLabel>> seen;
    renderer.onBarLabels = [&](const std::vector<BarLabel>& labels) { seen.push_back(labels); };
    data.config.gexLabels = true;
    show();
    frame();
    EXPECT_TRUE(seen.empty()) << "never inside the frame";
    time.runUntilIdle();
    ASSERT_EQ(seen.size(), 1U);
    ASSERT_FALSE(seen[0].empty());
    for (int i = 0; i < 3; ++i) frame();
    time.runUntilIdle();
    EXPECT_EQ(seen.size(), 1U) << "the same labels";

    // Easing at 240 Hz: every second frame passes the gate, and where it comes to rest is told at once.
    data.strikes[20].callGex *= 9;
    show();
    const std::size_t before = seen.size();
    int frames = 0;
    for (bool moving = true; moving; ++frames) {
        moving = frame(1.0 / 240);
        time.runUntilIdle();
    }
    EXPECT_GT(frames, 10);
    EXPECT_GE(static_cast<int>(seen.size() - before), frames / 3);
    EXPECT_LE(static_cast<int>(seen.size() - before), frames / 2 + 2);
}

}  // namespace
}  // namespace vmr::test
