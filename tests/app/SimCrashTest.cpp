// The account's file after the process was killed while it traded: whole, and at most about a second old.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

#include "base/Clock.h"
#include "base/Uuid.h"

extern char** environ;

namespace vmr {
namespace {

namespace fs = std::filesystem;

// The program with a practice relay of its own, spoken to through pipes.
class TradingProcess {
 public:
    explicit TradingProcess(const fs::path& home) {
        int in[2], out[2];
        if (::pipe(in) != 0 || ::pipe(out) != 0) std::abort();
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in[0], 0);
        posix_spawn_file_actions_adddup2(&actions, out[1], 1);
        for (const int end : {in[0], in[1], out[0], out[1]}) posix_spawn_file_actions_addclose(&actions, end);
        const std::string homeText = "HOME=" + home.string();
        std::vector<std::string> environment{homeText};
        for (char** at = environ; *at; ++at) {
            const std::string entry = *at;
            if (!entry.starts_with("HOME=") && !entry.starts_with("XDG_") && !entry.starts_with("VMR_"))
                environment.push_back(entry);
        }
        std::vector<char*> pointers;
        for (auto& entry : environment) pointers.push_back(entry.data());
        pointers.push_back(nullptr);
        std::vector<std::string> words{VMR_PROGRAM, "--headless", "--practice", "--clock", "2026-06-10T10:00@10"};
        std::vector<char*> argv;
        for (auto& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        EXPECT_EQ(::posix_spawn(&pid_, VMR_PROGRAM, &actions, nullptr, argv.data(), pointers.data()), 0);
        posix_spawn_file_actions_destroy(&actions);
        ::close(in[0]);
        ::close(out[1]);
        input_ = in[1];
        output_ = out[0];
    }
    ~TradingProcess() {
        if (pid_ > 0) kill();
        ::close(input_);
        ::close(output_);
    }
    void kill() {
        ::kill(pid_, SIGKILL);
        int status = 0;
        ::waitpid(pid_, &status, 0);
        pid_ = 0;
    }
    void say(const std::string& line) { EXPECT_EQ(::write(input_, line.data(), line.size()), ssize_t(line.size())); }
    // Waits at most `seconds` for a whole line.
    std::optional<std::string> line(double seconds) {
        const double until = clock_.monotonic() + seconds;
        while (true) {
            if (const auto end = text_.find('\n'); end != std::string::npos) {
                std::string first = text_.substr(0, end);
                text_.erase(0, end + 1);
                return first;
            }
            const double rest = until - clock_.monotonic();
            pollfd waiting{output_, POLLIN, 0};
            if (rest <= 0 || ::poll(&waiting, 1, static_cast<int>(rest * 1000) + 1) <= 0) return std::nullopt;
            char buffer[4096];
            const auto count = ::read(output_, buffer, sizeof buffer);
            if (count <= 0) return std::nullopt;
            text_.append(buffer, static_cast<std::size_t>(count));
        }
    }

 private:
    SystemClock clock_;
    pid_t pid_ = 0;
    int input_ = -1, output_ = -1;
    std::string text_;
};

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
    TradingProcess process(home);
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
