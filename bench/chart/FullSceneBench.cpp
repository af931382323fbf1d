// CPU time of a frame with every layer on, as the window records it: 250 strikes of two sources with DEX, open interest
// and waves, ten hours of markers, all overlays, the account's lines. `memcpyOfFullFrame` copies as many bytes as such
// a frame streams and is the baseline of the run.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "base/Clock.h"
#include "bench/chart/Measure.h"
#include "chart/ChartView.h"
#include "chart/OscillatorPane.h"
#include "gpu/FrameRecorder.h"
#include "tests/chart/FakeGlyphs.h"
#include "tests/chart/FullScene.h"
#include "tests/support/StillAccount.h"
#include "tests/support/time/TestTime.h"

namespace vmr {
namespace {

constexpr test::SceneSize everything{.strikes = 250, .minutes = 600, .bubbles = 3, .triangles = 5, .ribbons = 5};

struct FullScene {
    test::TestTime time;
    test::TestQueue queue{time};
    SystemClock clock;
    FrameRecorder gpu;
    RecordedFrame shown;
    test::FakeGlyphs glyphs;
    SessionTime session;
    test::SceneData data;
    test::StillAccount account{data.candles.back().close};
    ChartView view{{gpu, glyphs, session, clock, queue, nullptr, &account}};
    ChartContent content;
    Connection following = view.viewportState()->changed.connect([this] {
        double first = view.viewportState()->get()->first;
        benchmark::DoNotOptimize(first);
    });
    double now = 1000;

    explicit FullScene(std::size_t bars = 5000) : data(waveBars(bars), everything), content(data.content()) {
        view.setContent(content);
        for (int i = 0; i < 100; ++i) frame();
    }
    /// Everything but the overlays is handed over as if it had changed.
    void give() {
        const auto revision = data.content().revisions.candles;
        auto& all = content.revisions;
        all = {revision, revision, revision, revision, revision, revision, all.overlays, all.srLines};
        view.setContent(content);
    }
    void frame() {
        view.record(1400, 900, 2, now += 1.0 / 120);
        gpu.swapFrame(shown);
    }
};

void memcpyOfFullFrame(benchmark::State& state) {
    FullScene scene;
    std::vector<std::byte> to(scene.shown.stream.size());
    measureSpread(state, [&] {
        std::memcpy(to.data(), scene.shown.stream.data(), to.size());
        benchmark::ClobberMemory();
    });
    state.counters["bytes"] = static_cast<double>(to.size());
}
BENCHMARK(memcpyOfFullFrame)->Unit(benchmark::kMicrosecond);

void fullStillFrame(benchmark::State& state) {
    FullScene scene;
    measureSpread(state, [&] { scene.frame(); });
}
BENCHMARK(fullStillFrame)->Unit(benchmark::kMicrosecond);

/// Pan by a bar and draw, with the same bars in view whatever the history's length.
void fullPanFrame(benchmark::State& state) {
    FullScene scene(static_cast<std::size_t>(state.range(0)));
    scene.view.renderer().mirrorView(100, 300);
    int i = 0;
    measureSpread(state, [&] {
        scene.view.renderer().pan(++i % 200 < 100 ? 1 : -1);
        scene.frame();
    });
}
BENCHMARK(fullPanFrame)->Arg(500)->Arg(5000)->Arg(50000)->Unit(benchmark::kMicrosecond);

/// The same with the oscillator below, whose six series have 14,000 minutes each; the second number is that of the bars
/// in view.
void fullPanFrameWithOscillator(benchmark::State& state) {
    FullScene scene(static_cast<std::size_t>(state.range(0)));
    constexpr std::int64_t minutes = 14000;
    OscLines lines;
    const std::int64_t last = scene.data.candles.back().time;
    for (std::size_t k = 0; k < oscSeries.size(); ++k)
        for (std::int64_t i = 0; i < minutes; ++i)
            (lines.*oscSeries[k].points)
                .push_back({last - (minutes - 1 - i) * 60, 140 * std::sin(static_cast<double>(i + 40 * k) * 0.11)});
    FrameRecorder gpu;
    RecordedFrame shown;
    OscillatorPane pane(gpu, scene.glyphs);
    scene.view.renderer().mirrorView(100, static_cast<double>(state.range(1)));
    int i = 0;
    measureSpread(state, [&] {
        scene.view.renderer().pan(++i % 200 < 100 ? 1 : -1);
        scene.frame();
        pane.record(OscInput{{.lines = &lines}, scene.data.candles, 1, *scene.view.viewportState()->get()}, 1400, 200,
                    2);
        gpu.swapFrame(shown);
    });
    state.counters["bytes"] = static_cast<double>(shown.stream.size());
}
BENCHMARK(fullPanFrameWithOscillator)->Args({5000, 300})->Args({5000, 5000})->Unit(benchmark::kMicrosecond);

/// Rows that change before what is shown has arrived.
void fullEasingFrame(benchmark::State& state) {
    FullScene scene;
    auto& data = scene.data;
    int i = 0;
    measureSpread(state, [&] {
        for (std::size_t row = 0; row < data.strikes.size(); row += 2) {
            const double factor = i % 2 == 0 ? 3.0 : 1.0 / 3.0;
            StrikeRow& at = data.strikes[row];
            for (double* value : {&at.callGex, &at.callDex, &at.callHf, &at.callOI}) *value *= factor;
        }
        ++i;
        ++scene.content.revisions.strikes;
        scene.view.setContent(scene.content);
        scene.frame();
    });
}
BENCHMARK(fullEasingFrame)->Unit(benchmark::kMicrosecond);

/// A trade: everything is handed over as a pane does, and only the forming bar differs.
void fullTick(benchmark::State& state) {
    FullScene scene;
    int i = 0;
    measureSpread(state, [&] {
        scene.data.candles.back().close += ++i % 2 == 0 ? 1 : -1;
        scene.give();
        scene.frame();
    });
}
BENCHMARK(fullTick)->Unit(benchmark::kMicrosecond);

/// Frames that build one kept layer anew, in a chart that shows nothing else beside its bars.
template <class Change>
void rebuild(benchmark::State& state, Change&& change) {
    FullScene scene;
    scene.content.strikes = scene.content.secStrikes = {};
    scene.give();
    for (int i = 0; i < 100; ++i) scene.frame();
    int i = 0;
    measureSpread(state, [&] {
        change(scene.data, ++i % 2 == 0);
        scene.give();
        scene.frame();
    });
}
void rebuildNothing(benchmark::State& state) {
    rebuild(state, [](test::SceneData&, bool) {});
}
BENCHMARK(rebuildNothing)->Unit(benchmark::kMicrosecond);
void rebuildCandles(benchmark::State& state) {
    rebuild(state, [](test::SceneData& data, bool other) { data.config.candleTheme = other ? "other" : "mono"; });
}
BENCHMARK(rebuildCandles)->Unit(benchmark::kMicrosecond);
void rebuildMarkers(benchmark::State& state) {
    rebuild(state, [](test::SceneData& data, bool other) { data.config.bubbleOpacity = other ? 0.5F : 1.0F; });
}
BENCHMARK(rebuildMarkers)->Unit(benchmark::kMicrosecond);
void rebuildWalls(benchmark::State& state) {
    rebuild(state, [](test::SceneData& data, bool other) { data.levels[0].price += other ? 1 : -1; });
}
BENCHMARK(rebuildWalls)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
