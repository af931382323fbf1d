// A trade's way from the model to the recorded frame, as the window takes it: the bars, the overlay series, the chart's
// content, and the frame. In virtual time, so that the throttles let each tick through.
#include <benchmark/benchmark.h>

#include <utility>
#include <vector>

#include "bench/chart/Measure.h"
#include "bench/model/DerivedText.h"
#include "bench/model/FullMarket.h"
#include "chart/ChartView.h"
#include "gpu/FrameRecorder.h"
#include "model/SimTrading.h"
#include "sim/SimEngine.h"
#include "support/pane/TestPane.h"
#include "tests/chart/FakeGlyphs.h"

namespace vmr {
namespace {

struct ShownPane {
    static constexpr std::int64_t minute = 1781100000;  // 2026-06-10 10:00 New York

    explicit ShownPane(bool everything) {
        at.sim = &sim;
        AppModel& m = at.openSymbol("NQ");
        GexConfig on = m.config;
        for (bool* field : {&on.showSecondary, &on.vixEnabled, &on.hfEnabled, &on.vwapEnabled, &on.vwapNyEnabled,
                            &on.ema1Enabled, &on.ema2Enabled, &on.dexEnabled, &on.oiEnabled})
            *field = *field || everything;
        m.setConfig(on);
        bench::fillMarket(m, minute);
        view.setSource(&m);
        m.setChartPort(&view);
        at.frame(bench::derivedFrame(250, 15, 0));
        for (int i = 0; i < 300; ++i) tick();
    }
    ~ShownPane() {
        at.model->setChartPort(nullptr);
        view.setSource(nullptr);
    }

    /// One frame of 60 Hz, with `trades` evenly in it.
    void tick(int trades = 1) {
        for (int i = 0; i < trades; ++i) {
            at.model->applyTrade(21000 + (++ticks % 40) * 0.25, minute * 1000.0);
            at.time.advance(1.0 / 60 / trades);
        }
        view.record(1400, 900, 1, at.time.monotonic());
        gpu.swapFrame(shown);
    }

    test::TestPane at;
    SessionTime session;
    SimEngine sim{SimSetup{at.time, session, UuidSource(), nullptr, &at.main, &at.main, {}, {}}};
    SimTrading trading{sim};
    FrameRecorder gpu;
    RecordedFrame shown;
    test::FakeGlyphs glyphs;
    ChartView view{{gpu, glyphs, session, at.time, at.main, nullptr, &trading}};
    int ticks = 0;
};

/// With the default settings (0) or everything on (1), and trades a frame: of two, each rebuilds bars and series, and
/// the chart takes them once.
void tickToFrame(benchmark::State& state) {
    ShownPane pane(state.range(0) == 1);
    measureSpread(state, [&] { pane.tick(static_cast<int>(state.range(1))); });
    if (pane.shown.stream.empty() || pane.view.renderer().candles().size() != 5000)
        state.SkipWithError("nothing shown");
    state.counters["bytes"] = static_cast<double>(pane.shown.stream.size());
}
BENCHMARK(tickToFrame)->ArgsProduct({{0, 1}, {1, 2}})->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
