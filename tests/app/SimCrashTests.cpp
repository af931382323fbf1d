// The account's file after the process was killed while it traded: whole, and at most about a second old.
#include <random>

#include "tests/app/RunningProgram.h"

namespace vmr {
namespace {

// What the account was after each order, as the program told, and when.
struct Told {
    double when, balance;
};

// Trades one contract to and fro until `seconds` after the first fill, then kills the process.
std::vector<Told> tradeAndKill(RunningProgram& process, double seconds, double& killed) {
    const SystemClock clock;
    std::vector<Told> told;
    double end = clock.monotonic() + 30;
    while (clock.monotonic() < end) {
        const auto answer = process.ask(told.size() % 2 ? "order NQ sell market 1" : "order NQ buy market 1", 5);
        if (!answer) return {};
        if (const auto at = answer->find("balance "); at != std::string::npos) {
            if (told.empty()) end = clock.monotonic() + seconds;
            told.push_back({clock.monotonic(), std::stod(answer->substr(at + 8))});
        }
        process.line(told.empty() ? 0.1 : 0.01);  // a breath
    }
    process.end(SIGKILL);
    killed = clock.monotonic();
    return told;
}

TEST(SimCrash, KilledWhileTradingLeavesAWholeFileOfTheLastSecond) {
    const char* wanted = std::getenv("VELMORA_CRASH_RUNS");
    const int runs = wanted ? std::atoi(wanted) : 10;
    std::mt19937 random(std::random_device{}());
    int files = 0;
    for (int run = 0; run < runs; ++run) {
        const double seconds = std::uniform_real_distribution(0.2, 3.0)(random);
        SCOPED_TRACE(seconds);
        const std::string market = run % 2 ? "2" : "1";  // each seed's market has an account of its own
        RunningProgram process({"--headless", "--practice", "--seed", market, "--clock", "2026-06-10T10:00@10"});
        double killed = 0;
        const auto told = tradeAndKill(process, seconds, killed);
        ASSERT_FALSE(told.empty());
        const std::string folder = ".local/share/Velmora/practice/";
        const std::string name = folder + (run % 2 ? "sim-account-seed-2.json" : "sim-account.json");
        constexpr double delay = 1.8;  // a second until a change is written, and what a busy machine takes
        if (!std::filesystem::exists(process.home / name)) {
            EXPECT_GE(told.front().when, killed - delay);
            continue;
        }
        ++files;
        const auto account = process.file(name);
        ASSERT_TRUE(account.is_object());
        const std::size_t fills = account["fills"].size();
        ASSERT_GE(fills, 1u);
        // the last one may have been carried out and saved without its answer having been read
        EXPECT_LE(fills, told.size() + 1);
        if (fills > told.size()) continue;
        EXPECT_EQ(account["balance"].get<double>(), told[fills - 1].balance);
        EXPECT_GT(fills < told.size() ? told[fills].when : killed, killed - delay);
    }
    std::printf("%d of %d killed runs left a file\n", files, runs);
    EXPECT_GT(files, runs / 4);
}

}  // namespace
}  // namespace vmr
