// What a changed setting costs the main thread: set by name and stored, beside making the record's text.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "base/AsioLoop.h"
#include "base/Uuid.h"
#include "store/ConfigIO.h"
#include "store/SettingTable.h"

namespace vmr {
namespace {

namespace fs = std::filesystem;

void setAndSave(benchmark::State& state) {
    const fs::path folder = fs::temp_directory_path() / ("velmora-bench-" + UuidSource().next().text());
    {
        AsioThread thread("bench.writer");
        FilePreferences preferences(folder / "preferences.json", thread.loop());
        GexConfig config = ConfigIO::load(preferences);
        int height = 0;
        for (auto _ : state) {
            height = (height + 1) % 300;
            config.set("oscHeight", std::to_string(100 + height));
            ConfigIO::save(preferences, config);
        }
        preferences.flush();
        state.counters["writes"] = preferences.writes();
    }
    fs::remove_all(folder);
}
BENCHMARK(setAndSave)->Iterations(300)->Unit(benchmark::kMicrosecond);

void recordText(benchmark::State& state) {
    const GexConfig config;
    for (auto _ : state) benchmark::DoNotOptimize(config.toJson());
}
BENCHMARK(recordText)->Unit(benchmark::kMicrosecond);

void changedSettings(benchmark::State& state) {
    GexConfig before, after;
    after.oscHeight = 150;
    for (auto _ : state) {
        benchmark::DoNotOptimize(before);
        benchmark::DoNotOptimize(changedEffects(before, after));
    }
}
BENCHMARK(changedSettings)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
