// A batch of trades from the socket's frame to the pane's bars, beside the JSON library's bare parse of the same bytes.
#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <algorithm>

#include "bench/model/HandPane.h"

namespace vmr {
namespace {

std::string batchText(const std::string& channel, int count) {
    std::string text = R"({"type":"batch","channel":")" + channel + R"(","events":[)";
    for (int i = 0; i < count; ++i)
        text += std::string(i ? "," : "") + R"({"price":)" + std::to_string(21'000 + (i * 7 % 40) * 0.25) +
                R"(,"size":)" + std::to_string(1 + i % 9) + R"(,"ts":)" +
                std::to_string(bench::HandPane::minute * 1000 + i * 10) + "}";
    return text + "]}";
}

void tradeBatch(benchmark::State& state) {
    bench::HandPane pane;
    const std::string text = batchText("futures:NQM6:trades", 100);
    const simdjson::padded_string padded(text);
    simdjson::dom::parser parser;
    const SystemClock clock;
    double bare = 1, decoding = 1, mainShare = 1,
           freeing = 1;  // the least of each, what another process disturbs least
    for (auto _ : state) {
        std::string frame = text;  // the socket's own buffer
        const double t0 = clock.monotonic();
        benchmark::DoNotOptimize(parser.parse(padded).error());
        const double t1 = clock.monotonic();
        pane.events.onFrame(std::move(frame), false);
        const double t2 = clock.monotonic();
        pane.main.run();
        const double t3 = clock.monotonic();
        pane.queue.run();
        const double t4 = clock.monotonic();
        bare = std::min(bare, t1 - t0);
        decoding = std::min(decoding, t2 - t1);
        mainShare = std::min(mainShare, t3 - t2);
        freeing = std::min(freeing, t4 - t3);
        state.SetIterationTime(t4 - t1);
    }
    if (pane.model->bars.candles.back().close != 21'000 + (99 * 7 % 40) * 0.25)
        state.SkipWithError("the trades did not arrive");
    state.counters["to_bare_parse"] = (decoding + mainShare + freeing) / bare;
    state.counters["bare_us"] = bare * 1e6;
    state.counters["decode_us"] = decoding * 1e6;
    state.counters["main_us"] = mainShare * 1e6;
    state.counters["free_us"] = freeing * 1e6;
}
BENCHMARK(tradeBatch)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
