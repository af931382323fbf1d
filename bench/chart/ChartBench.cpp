// CPU time of a frame, of a tick and of a new bar, as it is recorded. `memcpy` copies as many bytes as a still
// frame writes and is the baseline of the run; `allocs` counts calls of operator new for each iteration.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "base/Clock.h"
#include "bench/chart/Measure.h"
#include "chart/AxisLayer.h"
#include "chart/ChartRenderer.h"
#include "gpu/FrameRecorder.h"
#include "tests/chart/FakeGlyphs.h"

namespace vmr {
namespace {

struct Scene {
    SystemClock clock;
    FrameRecorder gpu;
    RecordedFrame shown;
    test::FakeGlyphs glyphs;
    SessionTime session;
    AxisLayer axes{glyphs, session};
    ChartRenderer renderer{gpu, clock};
    std::vector<Candle> list;
    double now = 1000;

    explicit Scene(std::size_t n) : list(waveBars(n)) {
        renderer.addScreenLayer(axes);
        renderer.setCandles(list);
        for (int i = 0; i < 10; ++i) frame();
    }
    void frame() {
        renderer.drawFrame(1400, 900, 2, now += 1.0 / 120);
        gpu.swapFrame(shown);
    }
};

void memcpyOfStillFrame(benchmark::State& state) {
    Scene scene(5000);
    const std::size_t bytes = scene.shown.stream.size();
    std::vector<char> from(bytes, 1), to(bytes);
    measure(state, [&] {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    });
    state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(memcpyOfStillFrame);

void stillFrame(benchmark::State& state) {
    Scene scene(5000);
    measure(state, [&] { scene.frame(); });
}
BENCHMARK(stillFrame);

/// Pan by a bar and draw; the same bars in view whatever the history's length.
void panFrame(benchmark::State& state) {
    Scene scene(static_cast<std::size_t>(state.range(0)));
    scene.renderer.mirrorView(100, 300);
    int i = 0;
    measure(state, [&] {
        scene.renderer.pan(++i % 200 < 100 ? 1 : -1);
        scene.frame();
    });
}
BENCHMARK(panFrame)->Arg(500)->Arg(5000)->Arg(50000);

void panInputAlone(benchmark::State& state) {
    Scene scene(static_cast<std::size_t>(state.range(0)));
    scene.renderer.mirrorView(100, 300);
    int i = 0;
    measure(state, [&] { scene.renderer.pan(++i % 200 < 100 ? 1 : -1); });
}
BENCHMARK(panInputAlone)->Arg(500)->Arg(5000)->Arg(50000);

void zoomFrameAllBarsInView(benchmark::State& state) {
    Scene scene(5000);
    scene.renderer.mirrorView(0, 4900);
    int i = 0;
    measure(state, [&] {
        scene.renderer.zoom(++i % 2 == 0 ? 1.01 : 1 / 1.01);
        scene.frame();
    });
}
BENCHMARK(zoomFrameAllBarsInView);

void tickAndFrame(benchmark::State& state) {
    Scene scene(static_cast<std::size_t>(state.range(0)));
    int i = 0;
    measure(state, [&] {
        scene.list.back().close += ++i % 2 == 0 ? 1 : -1;
        scene.renderer.setCandles(scene.list);
        scene.frame();
    });
}
BENCHMARK(tickAndFrame)->Arg(500)->Arg(5000);

/// The rare heavy frame: a bar closed and all retained geometry is made anew.
void newBarAtTheCapAndFrame(benchmark::State& state) {
    Scene scene(5000);
    const auto longer = waveBars(5001);
    int i = 0;
    measure(state, [&] {
        scene.renderer.setCandles(std::span(longer).subspan(++i % 2 == 0 ? 1 : 0, 5000));
        scene.frame();
    });
}
BENCHMARK(newBarAtTheCapAndFrame)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
