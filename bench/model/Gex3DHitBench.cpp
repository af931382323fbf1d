// What is under the pointer in a full 3D view: 30 strikes, 12 expirations, no bar hidden.
#include <benchmark/benchmark.h>

#include <algorithm>

#include "base/Clock.h"
#include "model/Gex3DView.h"

namespace vmr {
namespace {

void gex3DHover(benchmark::State& state) {
    Gex3DData data{5000, {}, {}, {}, {}};
    for (int s = 0; s < 30; ++s) data.strikes.push_back(4925 + 5 * s);
    for (int e = 0; e < 12; ++e) {
        data.expirations.push_back("2026-06-" + std::to_string(10 + e));
        data.expLabels.push_back("6/" + std::to_string(10 + e) + " (" + std::to_string(e) + "DTE)");
        auto& row = data.net.emplace_back();
        for (int s = 0; s < 30; ++s) row.push_back(((e * 31 + s * 17) % 40 - 19.5) * 1e6);
    }
    Gex3DView view;
    view.area = {0, 0, 1200, 800};
    view.take(data);
    const SystemClock clock;
    double worst = 0;
    int at = 0, hits = 0;
    for (auto _ : state) {
        at = (at + 37) % 9600;
        const std::array<double, 2> place{300.0 + at % 600, 250.0 + at / 40.0};
        const double t0 = clock.monotonic();
        view.setPointer(place);
        const double t1 = clock.monotonic();
        hits += view.barOver().has_value();
        worst = std::max(worst, t1 - t0);
        state.SetIterationTime(t1 - t0);
    }
    if (hits == 0) state.SkipWithError("no bar was hit");
    state.counters["worst_us"] = worst * 1e6;
}
BENCHMARK(gex3DHover)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
