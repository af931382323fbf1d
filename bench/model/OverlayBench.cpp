// All overlay series over a full history, made anew and after a tick, beside a copy of the bars' bytes; and their
// geometry.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>

#include "base/Clock.h"
#include "chart/OverlayRibbons.h"
#include "market/SessionLines.h"
#include "model/OverlayBuilder.h"

namespace vmr {
namespace {

constexpr std::int64_t lastMinute = 1'781'103'600;  // 2026-06-10 11:00 New York, in the stock session
constexpr int count = 5000;

std::vector<Candle> fullSeries(double price) {
    std::vector<Candle> bars;
    for (int i = 0; i < count; ++i) {
        const double p = price + (i * 37 % 400) * 0.25;
        bars.push_back({lastMinute - (count - 1 - i) * 60, p, p + 2.75, p - 1.5, p + 0.25, 900.0 + i % 7});
    }
    return bars;
}

// A pane with every series on.
struct Pane {
    Pane() {
        for (const Candle& bar : bars) hf[bar.time].c = static_cast<double>(bar.time / 60 % 401 - 200) * 1e6;
        for (int d = 0; d < 5; ++d) {
            const std::int64_t open = SessionLines::sessionOpenSec(lastMinute - d * 86400, settings.sessionHHMM);
            levels[open] = {
                open, 21000, {{1, "", 21100, 0}, {2, "", 21200, 0}}, {{1, "", 20900, 0}, {2, "", 20800, 0}}};
        }
        settings.vwapEnabled = settings.vwapNyEnabled = settings.showSecondary = settings.hfEnabled = true;
        settings.vixEnabled = settings.ema1Enabled = settings.ema2Enabled = true;
        settings.ema1Period = 9;
        settings.ema2Period = 200;
        settings.hfFallbackScale = 2e-7;
        settings.vixScale = 0.08;
        settings.vixSmooth = 5;
    }
    OverlayInput input() const { return {bars, second, vix, hf, levels, sideRevision, settings}; }
    bool complete() const {
        const OverlaySet& s = builder.series();
        return s.vwapMain.size() > 900 && s.vwapNY.size() > 80 && s.ema1.size() == count && s.ema2.size() == count &&
               s.hfLine.size() > 3000 && s.vixLine.size() > 2000 && s.secondCandles.size() > 900;
    }

    std::vector<Candle> bars = fullSeries(21000), second = fullSeries(6000), vix = fullSeries(1800);
    HfByMin hf;
    SRSessions levels;
    std::uint64_t sideRevision = 0;
    OverlaySettings settings;
    SessionTime session;
    OverlayBuilder builder{session};
};

// Times `work` against a copy of the bars; reports the least of each.
template <class Prepare, class Work>
void besideCopy(benchmark::State& state, const Pane& pane, Prepare&& prepare, Work&& work) {
    const SystemClock clock;
    std::vector<Candle> copy(pane.bars.size());
    double copying = 1, ours = 1;
    for (auto _ : state) {
        const double t0 = clock.monotonic();
        std::memcpy(static_cast<void*>(copy.data()), pane.bars.data(), copy.size() * sizeof(Candle));
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
        const double t1 = clock.monotonic();
        prepare();
        const double t2 = clock.monotonic();
        work();
        benchmark::ClobberMemory();
        const double t3 = clock.monotonic();
        copying = std::min(copying, t1 - t0);
        ours = std::min(ours, t3 - t2);
        state.SetIterationTime(t3 - t2);
    }
    state.counters["copy_us"] = copying * 1e6;
    state.counters["best_us"] = ours * 1e6;
    state.counters["to_copy"] = ours / copying;
}

enum Change { fresh, tick, newBar, slide, side };

void overlays(benchmark::State& state) {
    Pane pane;
    pane.builder.update(pane.input());
    const auto change = [&] {
        switch (state.range(0)) {
            case fresh:
                pane.builder.clear();
                break;
            case tick:
                pane.bars.back().close += 0.25;
                break;
            case newBar:  // the last bar comes back
                pane.bars.pop_back();
                pane.builder.update(pane.input());
                pane.bars.push_back(pane.second.back());
                break;
            case slide:
                for (Candle& bar : pane.bars) bar.time -= 60;
                break;
            default:
                ++pane.sideRevision;
                break;
        }
    };
    besideCopy(state, pane, change, [&] { pane.builder.update(pane.input()); });
    if (!pane.complete() && state.range(0) != slide) state.SkipWithError("a series is missing");
}
BENCHMARK(overlays)
    ->ArgName("fresh_tick_newBar_slide_side")
    ->DenseRange(fresh, side)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

// The ribbons and candles of all series, as the pane hands them to its renderer: all of them, or after a trade.
void overlayGeometry(benchmark::State& state) {
    const bool all = state.range(0) == fresh;
    Pane pane;
    pane.builder.update(pane.input());
    const auto levels = SessionLines::build(pane.bars, pane.levels, pane.settings.sessionHHMM);
    OverlayRibbons ribbons;
    const OverlayStyle style;
    std::uint64_t levelsRevision = 0;
    const auto make = [&] {
        return &ribbons.make({&pane.builder.series(), levels, levelsRevision, style, pane.bars, 1});
    };
    const OverlayLists* lists = make();
    int i = 0;
    besideCopy(
        state, pane,
        [&] {
            pane.bars.back().close += ++i % 2 == 0 ? 1 : -1;
            pane.builder.update(pane.input());
            if (all) ++levelsRevision;
        },
        [&] { benchmark::DoNotOptimize(lists = make()); });
    std::size_t vertices = 0, ends = 0;
    for (const auto& ribbon : lists->ribbons) {
        vertices += ribbon.vertices.size();
        ends += ribbon.vertices.size() - ribbon.settled;
    }
    state.counters["line_bytes"] = static_cast<double>(vertices * sizeof(LineVertex));
    state.counters["end_bytes"] = static_cast<double>(ends * sizeof(LineVertex));
}
BENCHMARK(overlayGeometry)->Arg(fresh)->Arg(tick)->UseManualTime()->Unit(benchmark::kMicrosecond);

// Beside the calendar asked for every bar.
void sessionLines(benchmark::State& state) {
    const Pane pane;
    const SystemClock clock;
    double calendar = 1, ours = 1;
    for (auto _ : state) {
        const double t0 = clock.monotonic();
        for (const Candle& bar : pane.bars) benchmark::DoNotOptimize(SessionLines::sessionOpenSec(bar.time, 1800));
        const double t1 = clock.monotonic();
        benchmark::DoNotOptimize(SessionLines::build(pane.bars, pane.levels, 1800));
        const double t2 = clock.monotonic();
        calendar = std::min(calendar, t1 - t0);
        ours = std::min(ours, t2 - t1);
        state.SetIterationTime(t2 - t1);
    }
    state.counters["calendar_us"] = calendar * 1e6;
    state.counters["best_us"] = ours * 1e6;
}
BENCHMARK(sessionLines)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
