// The rows of a derived message, beside the JSON library's bare parse of the same bytes.
#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <algorithm>

#include "base/Clock.h"
#include "market/StrikesParser.h"

namespace vmr {
namespace {

std::string rowsText(int count) {
    std::string text = R"({"gexByStrike":[)";
    for (int i = 0; i < count; ++i) {
        text += std::string(i ? "," : "") + R"({"strike":)" + std::to_string(400 + i);
        for (const char* key : {"callGex", "putGex", "callDex", "putDex", "callHf", "putHf", "callOI", "putOI"})
            text += std::string(",\"") + key + "\":" + std::to_string(i * 1234.5 + text.size() % 1000);
        text += "}";
    }
    return text + "]}";
}

void strikes(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const std::string text = rowsText(count);
    const Json message = Json::parse(text).value();
    const DerivedFields fields{{"gexByStrike", message.at(message["gexByStrike"])}};
    const simdjson::padded_string padded(text);
    simdjson::dom::parser parser;
    const SystemClock clock;
    double bare = 1, ours = 1;  // the least of each
    for (auto _ : state) {
        const double t0 = clock.monotonic();
        benchmark::DoNotOptimize(parser.parse(padded).error());
        const double t1 = clock.monotonic();
        const auto rows = StrikesParser::parse(fields);
        benchmark::DoNotOptimize(rows.data());
        const double t2 = clock.monotonic();
        if (rows.size() != static_cast<std::size_t>(count)) state.SkipWithError("rows are missing");
        bare = std::min(bare, t1 - t0);
        ours = std::min(ours, t2 - t1);
        state.SetIterationTime(t2 - t1);
    }
    state.counters["bare_parse_us"] = bare * 1e6;
    state.counters["best_us"] = ours * 1e6;
    state.counters["to_bare_parse"] = ours / bare;
}
BENCHMARK(strikes)->Arg(250)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
