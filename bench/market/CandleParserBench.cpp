// A full snapshot from decoded JSON into a series, beside the JSON library's bare parse of the same bytes.
#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <algorithm>

#include "base/Clock.h"
#include "market/CandleParser.h"

namespace vmr {
namespace {

constexpr int barCount = 5000;
constexpr std::int64_t start = 1'781'100'000;

std::string snapshotText() {
    std::string text = R"({"candles":[)";
    for (int i = 0; i < barCount; ++i) {
        const double open = 21'000 + (i * 37 % 400) * 0.25;
        text += std::string(i ? "," : "") + R"({"ts":)" + std::to_string((start + i * 60) * 1000) + R"(,"o":)" +
                std::to_string(open) + R"(,"h":)" + std::to_string(open + 2.75) + R"(,"l":)" +
                std::to_string(open - 1.5) + R"(,"c":)" + std::to_string(open + 0.25) + R"(,"v":)" +
                std::to_string(900 + i % 700) + "}";
    }
    return text + "]}";
}

void bareParse(benchmark::State& state) {
    const simdjson::padded_string text(snapshotText());
    simdjson::dom::parser parser;
    for (auto _ : state) benchmark::DoNotOptimize(parser.parse(text).error());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(bareParse)->Unit(benchmark::kMicrosecond);

// Decoded already: what the relay's queue adds to decoding, and the merge into a full series.
void parseAndMerge(benchmark::State& state) {
    const std::string text = snapshotText();
    const simdjson::padded_string padded(text);
    simdjson::dom::parser parser;
    const SystemClock clock;
    const auto json = Json::parse(text);
    auto series = CandleParser::parse(*json);
    for (Candle& bar : series) bar.time -= 60 * 60;
    double bare = 1, ours = 1;  // the least of each
    for (auto _ : state) {
        const double t0 = clock.monotonic();
        benchmark::DoNotOptimize(parser.parse(padded).error());
        const double t1 = clock.monotonic();
        auto merged = CandleParser::merge(series, CandleParser::parse(*json), CandleParser::seriesCap);
        benchmark::DoNotOptimize(merged.data());
        const double t2 = clock.monotonic();
        bare = std::min(bare, t1 - t0);
        ours = std::min(ours, t2 - t1);
        state.SetIterationTime(t2 - t1);
    }
    state.counters["to_bare_parse"] = ours / bare;
    state.counters["bare_us"] = bare * 1e6;
    state.counters["ours_us"] = ours * 1e6;
}
BENCHMARK(parseAndMerge)->UseManualTime()->Unit(benchmark::kMicrosecond);

// One new bar into a full series, as each minute brings it.
void mergeOneBar(benchmark::State& state) {
    const auto series = CandleParser::parse(*Json::parse(snapshotText()));
    const std::vector<Candle> bar{{start + barCount * 60, 1, 1, 1, 1, 1}};
    for (auto _ : state) {
        auto merged = CandleParser::merge(series, bar, CandleParser::seriesCap);
        benchmark::DoNotOptimize(merged.data());
    }
}
BENCHMARK(mergeOneBar)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
