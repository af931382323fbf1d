// One tick beside a bare hash-map store and beside a bare pass over as many records; statistics; a save.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <unordered_map>

#include "base/FileReplace.h"
#include "sim/SimAccountText.h"
#include "sim/SimEngine.h"

namespace vmr {
namespace {

namespace fs = std::filesystem;
constexpr const char* roots[] = {"ES", "RTY", "YM", "NQ"};  // the ticked one comes last

struct FixedClock final : Clock {
    double now() const override { return 1781100000.0; }
    double monotonic() const override { return 0; }
    double speed() const override { return 1; }
};

struct Account {
    FixedClock clock;
    SessionTime session;
    SimEngine engine{{.clock = clock, .session = session, .ids = UuidSource(1)}};

    // Orders of the ticked root that rest far off the market.
    explicit Account(std::int64_t orders) {
        for (const char* root : roots) {
            engine.onTrade(root, 100);
            engine.onQuote(root, 99.75, 100);
        }
        for (std::int64_t i = 0; i < orders; ++i) {
            const bool stop = i % 2 == 0;
            engine.place("NQ", sim::Side::buy, stop ? sim::OrderType::stop : sim::OrderType::limit, 1,
                         stop ? std::nullopt : std::optional(10.0 + 0.25 * static_cast<double>(i)),
                         stop ? std::optional(1000.0 + static_cast<double>(i)) : std::nullopt);
        }
    }
    void trade(int times) {
        for (int i = 0; i < times; ++i) {
            engine.onQuote("NQ", 100 + i % 7, 100.25 + i % 7);
            engine.place("NQ", sim::Side::buy, sim::OrderType::market, 1);
            engine.place("NQ", sim::Side::sell, sim::OrderType::market, 1);
        }
    }
};

void tick(benchmark::State& state) {
    Account account(state.range(0));
    const std::string root = "NQ";
    double price = 100;
    for (auto _ : state) {
        account.engine.onTrade(root, price);
        price = 200 - price + 0.25;
    }
    if (account.engine.fills().size() > 0) state.SkipWithError("an order filled");
}
BENCHMARK(tick)->Arg(0)->Arg(20)->Arg(200);

void quoteTick(benchmark::State& state) {
    Account account(state.range(0));
    const std::string root = "NQ";
    double bid = 99;
    for (auto _ : state) {
        account.engine.onQuote(root, bid, bid + 0.25);
        bid = 198.25 - bid;
    }
}
BENCHMARK(quoteTick)->Arg(0)->Arg(200);

void hashMapStore(benchmark::State& state) {
    std::unordered_map<std::string, double> lasts;
    for (const char* root : roots) lasts[root] = 100;
    const std::string root = "NQ";
    double price = 100;
    for (auto _ : state) {
        lasts[root] = price;
        benchmark::DoNotOptimize(lasts);
        price = 200 - price + 0.25;
    }
}
BENCHMARK(hashMapStore);

// As many records of an order's size, of which each gives its root's first letter and one price.
void barePass(benchmark::State& state) {
    struct Record {
        char root;
        double price;
        char rest[sizeof(sim::Order) - 2 * sizeof(double)];
    };
    std::vector<Record> records(static_cast<std::size_t>(state.range(0)), Record{'N', 1000, {}});
    double price = 100;
    for (auto _ : state) {
        benchmark::DoNotOptimize(records.data());
        int hits = 0;
        for (const Record& record : records) hits += record.root == 'N' && record.price <= price ? 1 : 0;
        benchmark::DoNotOptimize(hits);
        price = 200 - price + 0.25;
    }
}
BENCHMARK(barePass)->Arg(20)->Arg(200);

void marketRoundTrip(benchmark::State& state) {
    Account account(0);
    account.trade(600);
    for (auto _ : state) account.trade(1);
}
BENCHMARK(marketRoundTrip);

void statsOf500(benchmark::State& state) {
    Account account(0);
    account.trade(600);
    for (auto _ : state) benchmark::DoNotOptimize(SimEngine::stats(account.engine.trades()));
}
BENCHMARK(statsOf500)->Unit(benchmark::kMicrosecond);

// A save of a full account: what the main thread pays, the text, and the file with its flushes.
void saveCopy(benchmark::State& state) {
    Account account(20);
    account.trade(600);
    for (auto _ : state) benchmark::DoNotOptimize(account.engine.snapshot());
}
BENCHMARK(saveCopy)->Unit(benchmark::kMicrosecond);

void saveText(benchmark::State& state) {
    Account account(20);
    account.trade(600);
    const sim::Snapshot full = account.engine.snapshot();
    std::size_t bytes = 0;
    for (auto _ : state) bytes = sim::accountText(full)->size();
    state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(saveText)->Unit(benchmark::kMicrosecond);

void saveFile(benchmark::State& state) {
    Account account(20);
    account.trade(600);
    const std::string text = *sim::accountText(account.engine.snapshot());
    const fs::path folder = fs::temp_directory_path() / ("velmora-bench-" + std::to_string(::getpid()));
    for (auto _ : state)
        if (const auto problem = replaceFile(folder / "sim-account.json", text)) state.SkipWithError(problem->c_str());
    fs::remove_all(folder);
}
BENCHMARK(saveFile)->Unit(benchmark::kMicrosecond);

void loadText(benchmark::State& state) {
    Account account(20);
    account.trade(600);
    const std::string text = *sim::accountText(account.engine.snapshot());
    for (auto _ : state) benchmark::DoNotOptimize(sim::readAccount(text));
}
BENCHMARK(loadText)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vmr
