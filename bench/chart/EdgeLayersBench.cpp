// CPU time of the chart's edge layers alone. `memcpyOfEdges` copies as many bytes as a step with everything on writes
// and is the baseline of the run; `allocs` counts calls of operator new for each iteration.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "bench/chart/Measure.h"
#include "chart/BarLabelLayer.h"
#include "chart/EdgeLayers.h"
#include "gpu/FrameRecorder.h"
#include "tests/chart/FakeGlyphs.h"

namespace vmr {
namespace {

std::vector<StrikeRow> rows(std::size_t n, double first, double step) {
    std::vector<StrikeRow> list(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double t = static_cast<double>(i);
        list[i] = {first + step * t,  1e9 * std::sin(t), 1e9 * std::cos(t * 0.7),
                   1e8 * t,           -9e7 * t,          1e6 * std::sin(t / 3),
                   1e6 * std::cos(t), 100 * t,           90 * t};
    }
    return list;
}

/// 250 strikes on two sources, all layers on, 15 points a strike, so that every bar has its label.
struct Edges {
    FrameRecorder gpu;
    FrameArena arena{gpu};
    EdgeLayers edges;
    RenderConfig config;
    std::vector<StrikeRow> strikes = rows(250, 20000, 5), second = rows(250, 20002, 5);
    EdgeFrame made;
    double yScale = 2.0 / 300;

    Edges() { config.dexEnabled = config.dexLabels = config.oiEnabled = true; }
    void step(bool snap, double middle) {
        arena.beginFrame();
        made = edges.step({.strikes = strikes,
                           .etfRatio = 1,
                           .flipStrike = 20600,
                           .secStrikes = second,
                           .secRatio = 1,
                           .config = config,
                           .viewW = 1400,
                           .viewH = 900,
                           .yScale = yScale,
                           .yOffset = -middle * yScale,
                           .snapLerps = snap,
                           .alphaX = 0.13,
                           .alphaY = 0.1},
                          arena);
        benchmark::DoNotOptimize(made);
    }
    std::size_t bytes() const {
        std::size_t sum = made.bars->count * sizeof(BoxVertex);
        for (const EdgeFrame::Wave& wave : made.waves) {
            if (!wave.fill) continue;
            sum += wave.fill->count * sizeof(ChartVertex) + wave.stroke->count * sizeof(LineVertex) +
                   wave.dots->count * sizeof(MarkerVertex);
        }
        return sum;
    }
};

/// Into three buffers in turn, as the frames write.
void memcpyOfEdges(benchmark::State& state) {
    Edges scene;
    scene.step(true, 20600);
    const std::size_t bytes = scene.bytes();
    std::vector<char> from(bytes, 1), to(bytes * 3);
    std::size_t i = 0;
    measure(state, [&] {
        std::memcpy(to.data() + bytes * (++i % 3), from.data(), bytes);
        benchmark::ClobberMemory();
    });
    state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(memcpyOfEdges)->Unit(benchmark::kMicrosecond);

void edgesWhileTheCameraMoves(benchmark::State& state) {
    Edges scene;
    int i = 0;
    measure(state, [&] { scene.step(true, 20600 + ++i % 50); });
    state.counters["bytes"] = static_cast<double>(scene.bytes());
}
BENCHMARK(edgesWhileTheCameraMoves)->Unit(benchmark::kMicrosecond);

/// Every width and place on its way, to values that change each frame.
void edgesWhileAllEases(benchmark::State& state) {
    Edges scene;
    scene.config.waveMode = state.range(0) == 0 ? "separated" : "net";
    int i = 0;
    measure(state, [&] {
        scene.strikes[100].callGex = ++i % 2 == 0 ? 4e9 : -4e9;
        scene.strikes[100].callHf = i % 2 == 0 ? 4e6 : -4e6;
        scene.step(false, 20600 + i % 50);
    });
}
BENCHMARK(edgesWhileAllEases)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

/// The texts beside the bars that are in view.
void barLabels(benchmark::State& state) {
    Edges scene;
    scene.step(true, 20600);
    test::FakeGlyphs glyphs;
    BarLabelLayer layer(glyphs);
    ScreenFrame frame{{scene.gpu, scene.arena, 1400, 900, 2}, {}, {}};
    frame.barLabels = scene.edges.labels();
    measure(state, [&] {
        scene.arena.beginFrame();
        scene.gpu.beginFrame(1400, 900, 2);
        layer.drawAbove(frame);
        scene.gpu.endFrame();
    });
    RecordedFrame shown;
    scene.gpu.swapFrame(shown);
    state.counters["labels"] = static_cast<double>(frame.barLabels.size());
    state.counters["glyphs"] = shown.draws.empty() ? 0 : static_cast<double>(shown.draws[0].vertexCount) / 4;
}
BENCHMARK(barLabels)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
