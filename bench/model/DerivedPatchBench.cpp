// A patch of the options source, 250 strikes and 15 expirations: its decoding on the relay's queue, and what the main
// thread does with it, beside the JSON library's bare parse of the same bytes.
#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <algorithm>

#include "bench/model/DerivedText.h"
#include "bench/model/HandPane.h"

namespace vmr {
namespace {

void derivedPatch(benchmark::State& state) {
    bench::HandPane pane;
    int turn = 0;
    const auto send = [&](std::string frame) {
        pane.events.onFrame(std::move(frame), false);
        return pane.clock.monotonic();
    };
    send(bench::derivedFrame(250, 15, 0));
    pane.settle();
    simdjson::dom::parser parser;
    double bare = 1, decoding = 1, mainShare = 1, freeing = 1;
    const auto& clock = pane.clock;
    for (auto _ : state) {
        const std::string text = bench::derivedFrame(250, 15, ++turn);
        const simdjson::padded_string padded(text);
        const double t0 = clock.monotonic();
        benchmark::DoNotOptimize(parser.parse(padded).error());
        const double t1 = clock.monotonic();
        const double t2 = send(text);
        pane.main.run();
        const double t3 = clock.monotonic();
        pane.queue.run();
        const double t4 = clock.monotonic();
        bare = std::min(bare, t1 - t0);
        decoding = std::min(decoding, t2 - t1);
        mainShare = std::min(mainShare, t3 - t2);
        freeing = std::min(freeing, t4 - t3);
        state.SetIterationTime(t3 - t2);
    }
    // the first expiration is shown
    if (pane.model->options.strikes->size() != 250 ||
        pane.model->options.strikes->front().callHf != bench::flowOf(1, turn))
        state.SkipWithError("the patch did not arrive");
    state.counters["bare_us"] = bare * 1e6;
    state.counters["decode_us"] = decoding * 1e6;
    state.counters["main_us"] = mainShare * 1e6;
    state.counters["main_to_bare"] = mainShare / bare;
    state.counters["free_us"] = freeing * 1e6;
}
BENCHMARK(derivedPatch)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
