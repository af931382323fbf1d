// A busy open: what one pane with everything on takes of a core, its overlay geometry and its chart's frames included.
// Runs in real time, for the throttles pace themselves by it; the baseline is one decoding of the same frames.
#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <algorithm>
#include <ctime>
#include <thread>

#include "bench/model/DerivedText.h"
#include "bench/model/FullMarket.h"
#include "bench/model/HandPane.h"
#include "chart/ChartView.h"
#include "gpu/FrameRecorder.h"
#include "tests/chart/FakeGlyphs.h"
#include "tests/support/StillAccount.h"

namespace vmr {
namespace {

constexpr int tradesASecond = 2000, quotesASecond = 50, batchesASecond = 20, framesASecond = 60;
constexpr std::int64_t minute = bench::HandPane::minute;

struct BusyPane : bench::HandPane {
    BusyPane() {
        auto& m = *model;
        GexConfig on = m.config;
        on.showSecondary = on.vixEnabled = on.hfEnabled = on.vwapEnabled = on.vwapNyEnabled = on.ema1Enabled = true;
        on.ema2Enabled = on.sessionEnabled = on.levelsEnabled = on.showOpen = on.showPrev = true;
        on.gexEnabled = on.gexLabels = on.dexEnabled = on.dexLabels = on.hfLateralEnabled = on.oiEnabled =
            on.gexBubbles = on.hfBubbles = true;
        m.setConfig(on);
        bench::fillMarket(m, minute);
        // the second source's bars are drawn too
        strikesChanged = m.options.strikes.changed.connect([&m] { m.options.secStrikes = m.options.strikes.get(); });
        view.onNeedsFrame = [this](ChartView::Need) { due = true; };
        view.setSource(&m);
        m.setChartPort(&view);
        receive(bench::derivedFrame(250, 15, 0));
    }
    ~BusyPane() {
        model->setChartPort(nullptr);
        view.setSource(nullptr);
    }

    void frame() {
        settle();
        if (!std::exchange(due, false)) return;
        due = view.record(1400, 900, 1, clock.monotonic());
        gpu.swapFrame(shown);
        ++frames;
    }

    FrameRecorder gpu;
    RecordedFrame shown;
    test::FakeGlyphs glyphs;
    test::StillAccount account{21050};
    ChartView view{{gpu, glyphs, session, clock, main, nullptr, &account}};
    Connection strikesChanged;
    bool due = true;
    int frames = 0;
};

// The frames of one second; each `slice` of them is sent at its time.
struct Traffic {
    std::vector<std::string> trades, quotes;
    std::string derived;

    explicit Traffic(int second) {
        for (int b = 0; b < batchesASecond; ++b) {
            std::string text = R"({"type":"batch","channel":"futures:NQM6:trades","events":[)";
            for (int i = 0; i < tradesASecond / batchesASecond; ++i) {
                const int n = (second * batchesASecond + b) * 100 + i;
                text += std::string(i ? "," : "") + R"({"price":)" + std::to_string(21'000 + (n * 7 % 40) * 0.25) +
                        R"(,"size":)" + std::to_string(1 + n % 9) + R"(,"ts":)" +
                        std::to_string(minute * 1000 + second * 1000 + b * 50) + "}";
            }
            trades.push_back(text + "]}");
        }
        for (int q = 0; q < quotesASecond; ++q)
            quotes.push_back(
                R"({"type":"event","channel":"futures:NQM6:quote","payload":{"bid":21000.25,"ask":21000.5}})");
        derived = bench::derivedFrame(250, 15, second + 1);
    }
};

double cpuSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double bareParse(const Traffic& traffic) {
    simdjson::dom::parser parser;
    double least = 1;
    for (int round = 0; round < 5; ++round) {
        const double start = cpuSeconds();
        for (const auto& text : traffic.trades) benchmark::DoNotOptimize(parser.parse(text).error());
        for (const auto& text : traffic.quotes) benchmark::DoNotOptimize(parser.parse(text).error());
        benchmark::DoNotOptimize(parser.parse(traffic.derived).error());
        least = std::min(least, cpuSeconds() - start);
    }
    return least;
}

void busyOpen(benchmark::State& state) {
    BusyPane pane;
    const double bare = bareParse(Traffic(0));
    int second = 0;
    double used = 0;
    for (auto _ : state) {
        const Traffic traffic(second++);  // made outside the account
        const double begin = pane.clock.monotonic();
        std::size_t trade = 0, quote = 0;
        for (int step = 1; step <= framesASecond; ++step) {
            const double t0 = cpuSeconds();
            const auto until = [&](std::size_t of) { return of * static_cast<std::size_t>(step) / framesASecond; };
            while (trade < until(traffic.trades.size())) pane.receive(traffic.trades[trade++]);
            while (quote < until(traffic.quotes.size())) pane.receive(traffic.quotes[quote++]);
            if (step == framesASecond / 2) pane.receive(traffic.derived);
            pane.main.runTimers();
            pane.settle();
            pane.frame();
            used += cpuSeconds() - t0;
            const double rest = begin + static_cast<double>(step) / framesASecond - pane.clock.monotonic();
            if (rest > 0) std::this_thread::sleep_for(std::chrono::duration<double>(rest));
        }
    }
    const bool marked = std::ranges::any_of(
        pane.shown.draws, [](const auto& call) { return call.pipeline == Pipeline::triangle && call.vertexCount > 0; });
    if (pane.model->overlays.series().hfLine.size() < 3000 || pane.frames == 0 || !marked ||
        pane.model->options.strikes->size() != 250)
        state.SkipWithError("something is missing");
    state.counters["core_share"] = used / second;
    state.counters["to_bare_parse"] = used / second / bare;
    state.counters["frames_a_second"] = static_cast<double>(pane.frames) / second;
}
BENCHMARK(busyOpen)->Iterations(5)->UseRealTime()->Unit(benchmark::kSecond);

}  // namespace
}  // namespace vmr
