// The account's file after the process was killed while it traded: whole, and at most about a second old.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

#include "base/Uuid.h"
#include "tests/app/RunningProgram.h"

namespace vmr {
namespace {

namespace fs = std::filesystem;

// What the account was after each order, as the program told, and when.
struct Told {
    double when, balance;
};

std::optional<double> balanceIn(const std::string& answer) {
    const auto at = answer.find("balance ");
    return at == std::string::npos ? std::nullopt : std::optional(std::stod(answer.substr(at + 8)));
}

// Trades one contract to and fro until `seconds` after the first fill, then kills the process. False when it never
// came to trade.
bool tradeAndKill(const fs::path& home, double seconds, std::vector<Told>& told, double& killed) {
    const SystemClock clock;
    RunningProgram process(home, {"--headless", "--practice", "--clock", "2026-06-10T10:00@10"});
    const double patience = clock.monotonic() + 30;
    double end = 0;
    for (int i = 0; clock.monotonic() < (told.empty() ? patience : end); ++i) {
        process.say(told.size() % 2 ? "order NQ sell market 1\n" : "order NQ buy market 1\n");
        std::optional<std::string> answer;
        while ((answer = process.line(5)) && !answer->starts_with("[cmd] ok filled") &&
               !answer->starts_with("[cmd] ok nothing")) {
        }
        if (!answer) return false;
        if (const auto balance = balanceIn(*answer)) {
            if (told.empty()) end = clock.monotonic() + seconds;
            told.push_back({clock.monotonic(), *balance});
        }
        process.line(told.empty() ? 0.1 : 0.01);  // a breath
    }
    process.kill();
    killed = clock.monotonic();
    return !told.empty();
}

TEST(SimCrash, KilledWhileTradingLeavesAWholeFileOfTheLastSecond) {
    const char* wanted = std::getenv("VELMORA_CRASH_RUNS");
    const int runs = wanted ? std::atoi(wanted) : 10;
    std::mt19937 random(std::random_device{}());
    int files = 0;
    for (int run = 0; run < runs; ++run) {
        const fs::path home = fs::temp_directory_path() / ("velmora-crash-" + UuidSource().next().text());
        const double seconds = std::uniform_real_distribution(0.2, 3.0)(random);
        SCOPED_TRACE(seconds);
        std::vector<Told> told;
        double killed = 0;
        ASSERT_TRUE(tradeAndKill(home, seconds, told, killed));
        const fs::path file = home / ".local/share/Velmora/practice/sim-account.json";
        constexpr double delay = 1.8;  // a second until a change is written, and what a busy machine takes
        const bool mustExist = told.front().when < killed - delay;
        EXPECT_TRUE(fs::exists(file) || !mustExist);
        if (fs::exists(file)) {
            ++files;
            std::ifstream in(file);
            const auto account = nlohmann::json::parse(in, nullptr, false);
            ASSERT_TRUE(account.is_object());
            const std::size_t fills = account["fills"].size();
            ASSERT_GE(fills, 1u);
            // the last one may have been carried out and saved without its answer having been read
            if (fills <= told.size()) {
                EXPECT_EQ(account["balance"].get<double>(), told[fills - 1].balance);
            }
            EXPECT_LE(fills, told.size() + 1);
            if (fills < told.size()) {
                EXPECT_GT(told[fills].when, killed - delay);
            }
        }
        fs::remove_all(home);
    }
    std::printf("%d of %d killed runs left a file\n", files, runs);
    EXPECT_GT(files, runs / 4);
}

}  // namespace
}  // namespace vmr
