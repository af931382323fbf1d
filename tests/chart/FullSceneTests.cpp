// A frame with everything on: its layers, what each change rebuilds, and the labels that leave it.
#include <gmock/gmock.h>

#include "chart/AxisScale.h"
#include "perf/Perf.h"
#include "tests/chart/ChartScene.h"
#include "tests/chart/FullScene.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::FloatNear;

struct FullSceneTest : ChartScene {
    SceneData data{bars(300)};
    int redraws = 0;

    FullSceneTest() {
        renderer.onNeedsDisplay = [this] { ++redraws; };
    }
    void show() { data.give(renderer); }
    /// The one kept list of ribbons that lies under the price line.
    std::vector<Draw> walls() const {
        std::vector<Draw> list;
        for (const Draw& call : recorded.draws) {
            if (call.primitive == Primitive::lines) break;
            if (call.pipeline == Pipeline::ribbon && call.retained) list.push_back(call);
        }
        return list;
    }
    Draw markers() const { return calls(Pipeline::disc, true).at(0); }
};

TEST_F(FullSceneTest, LayersLieInTheirOrderUnderTheirUniforms) {
    data.candles.back() = data.candles[298];
    data.candles.back().time += 60;
    data.candles.back().close = data.candles.back().open - 4;  // outlined
    show();
    settle();
    const Uniforms overlays = renderer.camera().uniforms(data.overlays.origin);
    const Uniforms ofBars = renderer.camera().uniforms({299, data.candles.back().close});
    std::vector<std::string> layers;
    for (const Draw& call : recorded.draws) {
        const auto& u = call.uniforms;
        const Uniforms camera{u[0], u[1], u[2], u[3]};
        if (call.opaque) {
            layers.emplace_back("opaque");
            continue;
        }
        std::string layer = call.retained ? "kept " : "made ";
        layer += std::array{"flat",   "box",    "rounded", "candle",   "dense", "crowded",
                            "ribbon", "dashed", "disc",    "triangle", "text"}[static_cast<std::size_t>(call.pipeline)];
        if (call.primitive == Primitive::lines) layer += " lines";
        layer += camera == overlays ? " on overlays" : camera == ofBars ? " on bars" : " on the view";
        EXPECT_TRUE(!layer.ends_with("view") || camera == Uniforms{});
        if (call.withView()) {
            EXPECT_THAT(std::span(u).subspan(4, 3),
                        ElementsAre(1400.0F, 900.0F,
                                    call.pipeline == Pipeline::dashed ? FloatNear(0.92F, 0.01F)
                                    : call.pipeline == Pipeline::disc || call.pipeline == Pipeline::triangle ||
                                            camera == Uniforms{}
                                        ? FloatNear(1, 0)
                                        : FloatNear(0, 0)));
        }
        layers.push_back(layer);
    }
    std::vector<std::string> order{"opaque", "kept disc on bars", "kept triangle on bars"};  // ground, markers
    for (int wave = 0; wave < 4; ++wave)  // fill, stroke and dots of flow and open interest, of calls and puts
        order.insert(order.end(), {"made flat on the view", "made ribbon on the view", "made disc on the view"});
    order.insert(order.end(), {"made box on the view",  // strike bars
                               "kept ribbon on bars",
                               "made flat lines on bars",                             // walls, price line
                               "kept ribbon on overlays", "made ribbon on overlays",  // a series and its end
                               "kept ribbon on overlays", "made ribbon on overlays",  // another
                               "kept dashed on overlays",                             // session lines
                               "kept candle on overlays", "made candle on overlays",  // the paired instrument's
                               "kept candle on bars", "made candle on bars"});        // closed bars, the forming one
    EXPECT_EQ(layers, order);
    EXPECT_EQ(calls(Pipeline::candle, true).at(1).count, 299U * candleVertices);
}

TEST_F(FullSceneTest, WallsAndMarkersLieWhereTheirBarsAndPricesAre) {
    for (const std::size_t dropped : {0, 1, 40}) {  // the same bars' places also when the cap dropped some
        data.candles = bars(800, dropped);          // from 08:00; futures sessions open at 18:00
        show();
        renderer.mirrorView(0.37, 700);
        frame();
        const Viewport view = renderer.camera().viewport();
        const auto wall = recorded.vertices<LineVertex>(walls().at(0));
        ASSERT_EQ(wall.size(), 2 * segmentVertices) << "a level without a price is none";
        const double start = 600 - static_cast<double>(dropped);
        for (std::size_t i = 0; i < wall.size(); ++i) {
            const auto at = recorded.screen(walls()[0], wall[i].pos[0], wall[i].pos[1]);
            EXPECT_NEAR(at[0], AxisScale::xForIndex(view, i % 4 < 2 ? start : 801, width), 0.02);
            EXPECT_NEAR(at[1], AxisScale::yFor(view, data.levels[i / 4 * 2].price, height), 0.02);
        }
        const BubblePt& bubble = data.bubbles[40];
        const MarkerVertex marker = recorded.vertices<MarkerVertex>(markers()).at(40 * discVertices);
        const auto at = recorded.screen(markers(), marker.center[0], marker.center[1]);
        const auto bar = static_cast<double>((bubble.minuteTs - data.candles.front().time) / 60);
        EXPECT_NEAR(at[0], AxisScale::xForIndex(view, bar, width), 0.02);
        EXPECT_NEAR(at[1], AxisScale::yFor(view, bubble.strike * data.ratio, height), 0.02);
    }
}

TEST_F(FullSceneTest, EachChangeRebuildsWhatItTouchesAndAsksForOneFrame) {
    const struct {
        const char* name;
        std::function<void()> change;
        std::uint64_t buffersMade;
        bool asksForAFrame = true;
    } cases[] = {
        {"nothing", [] {}, 0, false},
        {"tick", [&] { data.candles.back().close += 0.25; }, 0},
        {"new bar: candles, walls and both markers", [&] { data.candles = bars(301); }, 4},
        {"theme: candles", [&] { data.config.candleTheme = "classic"; }, 1},
        {"wall moved", [&] { data.levels[0].price += 1; }, 1},
        {"strike row", [&] { data.strikes[3].callGex += 1; }, 0},
        {"ratio: markers", [&] { data.ratio = 41.5; }, 2},
        {"one more bubble", [&] { data.bubbles.push_back(data.bubbles.back()); }, 2},
        {"triangle opacity", [&] { data.config.triangleOpacity = 0.5F; }, 2},
        {"end of an overlay line", [&] { data.overlays.ribbons[0].vertices.back().pos[1] += 1; }, 0},
        {"its new revision", [&] { ++data.overlays.ribbons[0].revision; }, 1},
        {"session line under its old revision", [&] { data.overlays.sessionDashes[0].pos[1] += 1; }, 0, false},
        {"its new revision", [&] { ++data.overlays.sessionRevision; }, 1},
        {"walls off", [&] { data.config.wallsEnabled = false; }, 0},
    };
    show();
    settle();
    for (int i = 0; i < 3; ++i) frame();  // until each arena is there
    for (const auto& [name, change, buffersMade, asksForAFrame] : cases) {
        SCOPED_TRACE(name);
        const auto made = gpu.buffersMade();
        redraws = 0;
        change();
        show();
        EXPECT_EQ(redraws > 0, asksForAFrame);
        settle();
        EXPECT_EQ(gpu.buffersMade() - made, buffersMade);
        const auto kept = std::ranges::count(recorded.draws, true, &Draw::retained);
        EXPECT_EQ(gpu.buffersHeld(), 3 + static_cast<std::size_t>(kept)) << "three arenas, and nothing of the past";
        EXPECT_EQ(walls().size(), data.config.wallsEnabled ? 1U : 0U);
    }
}

TEST_F(FullSceneTest, AMovedCameraAndAnotherSizeChangeUniformsOnly) {
    show();
    settle();
    std::vector<std::string> reports;
    Perf perf(time, [&](const std::string& line) { reports.push_back(line); });
    renderer.perf = &perf;
    const std::size_t layers = recorded.draws.size();
    const auto made = gpu.buffersMade();
    const std::function<void()> inputs[] = {
        [&] { renderer.pan(-33.3); },
        [&] { renderer.zoom(1.3); },
        [&] { renderer.panByPrice(30, 900); },
        [&] { renderer.setPriceLineFrac(0.3); },
        [&] { width = 911, height = 507, renderer.redraw(); },
    };
    for (const auto& input : inputs) {
        const auto old = markers().uniforms;
        redraws = 0;
        input();
        EXPECT_EQ(redraws, 1);
        frame();
        EXPECT_EQ(recorded.draws.size(), layers);
        EXPECT_NE(markers().uniforms, old);
        EXPECT_NEAR(flatBox(recorded.draws[3], 0).left, (PlotArea{width, height}.right()), 0.01)
            << "waves hang on the axis";
    }
    EXPECT_EQ(gpu.buffersMade(), made);
    EXPECT_EQ(markers().uniforms[4], 911.0F);
    for (int i = 0; reports.empty(); ++i) frame(0.1);  // the camera rests, and the texts are made anew all the same
    EXPECT_THAT(reports[0], testing::HasSubstr("ChartOverlay 12"));
    data.candles = bars(5000);  // ends beyond the markers' full size
    data.srLines[0].startTime = data.candles.front().time;
    data.overlays = OverlayRibbons().make({&data.series, data.srLines, 1, data.style, data.candles});
    data.overlays.sessionRevision = 9;
    show();
    const auto gaps = [&] { return calls(Pipeline::dashed, true).back().uniforms; };
    renderer.mirrorView(3000, 200);
    frame();
    EXPECT_NEAR(gaps()[6], 0.92, 1e-6);
    EXPECT_EQ(gaps()[7], 0.5);
    renderer.mirrorView(0, 1600);
    frame();
    EXPECT_EQ(gaps()[6], 0) << "from afar as faint as their dashes";
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
    EXPECT_NEAR(recorded.vertices<MarkerVertex>(markers())[0].center[0], 200.0F - 299.0F, 1e-6);
}

}  // namespace
}  // namespace vmr::test
