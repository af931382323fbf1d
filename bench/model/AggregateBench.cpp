// A full series at five minutes a bar, beside a copy of the same bytes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>

#include "base/Clock.h"
#include "market/Bars.h"

namespace vmr {
namespace {

void aggregateFullSeries(benchmark::State& state) {
    std::vector<Candle> bars;
    for (int i = 0; i < 5000; ++i) {
        const double p = 21'000 + (i * 37 % 400) * 0.25;
        bars.push_back({1'781'100'000 + i * 60, p, p + 2.75, p - 1.5, p + 0.25, 900});
    }
    std::vector<Candle> out, copy(bars.size());
    const SystemClock clock;
    double copying = 1, ours = 1;  // the least of each
    for (auto _ : state) {
        const double t0 = clock.monotonic();
        std::memcpy(static_cast<void*>(copy.data()), bars.data(), bars.size() * sizeof(Candle));
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
        const double t1 = clock.monotonic();
        aggregate(bars, static_cast<int>(state.range(0)), out);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
        const double t2 = clock.monotonic();
        copying = std::min(copying, t1 - t0);
        ours = std::min(ours, t2 - t1);
        state.SetIterationTime(t2 - t1);
    }
    state.counters["to_memcpy"] = ours / copying;
    state.counters["memcpy_us"] = copying * 1e6;
    state.counters["aggregate_us"] = ours * 1e6;
}
BENCHMARK(aggregateFullSeries)->Arg(1)->Arg(5)->Arg(60)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
