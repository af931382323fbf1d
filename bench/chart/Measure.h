// Runs a benchmark's step and reports its memory and its spread; and bars to draw.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <vector>

#include "market/Records.h"
#include "tests/chart/AllocationCount.h"

namespace vmr {

/// `n` minute bars in a wave around 21,000.
inline std::vector<Candle> waveBars(std::size_t n) {
    std::vector<Candle> list;
    for (std::size_t i = 0; i < n; ++i) {
        const double open = 21000 + 60 * std::sin(static_cast<double>(i) * 0.03);
        const double close = 21000 + 60 * std::sin(static_cast<double>(i + 1) * 0.03);
        list.push_back({1781092800 + static_cast<std::int64_t>(i) * 60, open, std::max(open, close) + 2,
                        std::min(open, close) - 2, close, 1});
    }
    return list;
}

/// Runs `step` as the benchmark's body and reports its calls of operator new.
template <class Step>
void measure(benchmark::State& state, Step&& step) {
    for (int i = 0; i < 200; ++i) step();
    const long before = test::allocationCount();
    for (auto _ : state) step();
    state.counters["allocs"] =
        benchmark::Counter(static_cast<double>(test::allocationCount() - before), benchmark::Counter::kAvgIterations);
}

/// Reports the median and the 99th percentile of a step in microseconds, too. CPU time, since on a busy machine the
/// 99th percentile of the passing time is another program's turn.
template <class Step>
void measureSpread(benchmark::State& state, Step&& step) {
    constexpr double microsecond = CLOCKS_PER_SEC / 1e6;
    std::vector<double> took;
    took.reserve(state.max_iterations + 200);
    measure(state, [&] {
        const std::clock_t start = std::clock();
        step();
        took.push_back(static_cast<double>(std::clock() - start) / microsecond);
    });
    const auto at = [&](double share) {
        const auto nth = took.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(took.size() - 1));
        std::nth_element(took.begin(), nth, took.end());
        return *nth;
    };
    state.counters["median_us"] = at(0.5);
    state.counters["p99_us"] = at(0.99);
}

}  // namespace vmr
