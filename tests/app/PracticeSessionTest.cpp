// The whole client against the practice relay, over real loopback sockets.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include "app/Program.h"
#include "base/AsioLoop.h"

namespace vmr {
namespace {

namespace fs = std::filesystem;

// A home of its own, so that no test sees the user's files.
class Home {
 public:
    Home() : folder_(fs::temp_directory_path() / ("velmora-test-" + UuidSource().next().text())) {
        fs::create_directories(folder_);
        ::setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1);
        ::setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
    }
    ~Home() {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

 private:
    fs::path folder_;
};

Options practiceOptions(const std::string& clock = "2026-06-10T10:00:30@60", std::uint64_t seed = 7) {
    Options options;
    options.practice = true;
    options.seed = seed;
    options.clock = parseClockSetting(clock);
    return options;
}

// The program on a loop that runs until a condition holds.
class Session {
 public:
    explicit Session(const Options& options) : start_(options) {
        EXPECT_FALSE(start_.failure()) << start_.failure().value_or("");
        program_ = std::make_unique<Program>(start_, loop_);
        // the pane's own log forgets: the trades of a chart that was left fill it within a second at this speed
        heard_ = pane().logChanged.connect([this] {
            if (!pane().logLines.empty()) story_.push_back(pane().logLines.back().text);
        });
        program_->signInToPractice();
    }
    ~Session() { program_.reset(); }

    // Looks every 5 ms of real time; whether the condition came to hold within `limit` seconds.
    bool runUntil(const std::function<bool()>& done, double limit = 30) {
        bool held = false;
        const auto poll = loop_.every(0, 0.005, [&] {
            if (!(held = done())) return;
            loop_.quit();
        });
        const auto end = loop_.after(limit, [&] { loop_.quit(); });
        loop_.run();
        loop_.cancel(poll);
        loop_.cancel(end);
        return held;
    }

    AppModel& pane() { return program_->pane(); }
    PracticeRelay& relay() { return *start_.practice(); }
    std::string tell(const std::string& fault) { return relay().command(fault); }

    // Closed bars of the pane that differ from the relay's own.
    std::vector<std::string> differences() {
        std::map<std::int64_t, Candle> truth;
        for (const Candle& bar : relay().ledger(pane().chartChannel)) truth[bar.time] = bar;
        std::vector<std::string> out;
        const auto& bars = pane().candles;
        for (std::size_t i = 0; i + 2 < bars.size(); ++i)
            if (const auto found = truth.find(bars[i].time); found == truth.end() || !(found->second == bars[i]))
                out.push_back("bar at " + std::to_string(bars[i].time) + " of " + std::to_string(bars.size()) +
                              ", index " + std::to_string(i));
        return out;
    }

    // The same after giving a busy machine time: a closed bar comes a moment after its minute.
    std::vector<std::string> lastingDifferences() {
        auto found = differences();
        for (int tries = 0; tries < 6 && !found.empty(); ++tries) {
            runUntil([] { return false; }, 0.5);
            found = differences();
        }
        return found;
    }

    // Live on the contract that the relay calls the front one.
    bool streaming() {
        const auto& map = pane().contractOverrides.get();
        const auto front = map.find(pane().currentSymbol());
        return pane().connected && front != map.end() && pane().chartChannel->ends_with(front->second) &&
               !pane().candles.empty() && (pane().secondaryChannel.empty() || !pane().secondaryCandles.empty());
    }
    // The pane has shown `minutes` new bars since now.
    bool runMinutes(int minutes) {
        const std::int64_t from = pane().candles.back().time;
        return runUntil([&] { return !pane().candles.empty() && pane().candles.back().time >= from + minutes * 60; });
    }
    // Snapshots of the chart's bars so far.
    std::ptrdiff_t snapshots() {
        const std::string channel = pane().chartChannel;
        return std::count_if(story_.begin(), story_.end(), [&](const std::string& line) {
            return line.starts_with(channel + " [snapshot]") || line.starts_with(channel + ":1m [snapshot]");
        });
    }
    bool logHas(const std::string& part) {
        return std::any_of(story_.begin(), story_.end(),
                           [&](const std::string& line) { return line.find(part) != std::string::npos; });
    }

 private:
    AsioLoop loop_;
    ProgramStart start_;
    std::unique_ptr<Program> program_;
    std::vector<std::string> story_;  // every line that the pane logged
    Connection heard_;
};

TEST(PracticeSession, BarsEqualTheRelaysLedgerAndTheSeedMakesTheMarket) {
    Home home;
    Session session(practiceOptions());
    ASSERT_TRUE(session.runUntil([&] { return session.streaming(); }));
    for (const char* line : {"connecting…", "socket opened, awaiting hello…", "hello: ", "→ chart: futures:"})
        EXPECT_TRUE(session.logHas(line)) << line;
    ASSERT_TRUE(session.runMinutes(4));
    EXPECT_EQ(session.lastingDifferences(), std::vector<std::string>());
    EXPECT_GT(session.pane().candles.size(), 3000u);
    EXPECT_FALSE(session.pane().vixCandles.empty());

    Session other(practiceOptions("2026-06-10T10:00:30@60", 8));
    ASSERT_TRUE(other.runUntil([&] { return other.streaming(); }));
    EXPECT_NE(other.pane().candles.front(), session.pane().candles.front());
}

TEST(PracticeSession, LosesNoBarOverDropsRefusalsAndStaleTokens) {
    Home home;
    Options options = practiceOptions();
    options.tokenLife = 61;  // a minute of margin is taken off, so that a reconnect after a second refreshes
    Session session(options);
    ASSERT_TRUE(session.runUntil([&] { return session.streaming(); }));
    for (const char* fault : {"drop", "close 4006", "close 1011", "malformed 20", "wrong 20"}) {
        SCOPED_TRACE(fault);
        EXPECT_EQ(session.tell(fault).substr(0, 2), "ok");
        const bool breaks = std::string(fault) != "malformed 20" && std::string(fault) != "wrong 20";
        if (breaks) {
            ASSERT_TRUE(session.runUntil([&] { return !session.pane().connected; }));
            const auto before = session.snapshots();
            ASSERT_TRUE(session.runUntil([&] { return session.streaming() && session.snapshots() >= before + 2; }));
        }
        ASSERT_TRUE(session.runMinutes(3));
        EXPECT_EQ(session.lastingDifferences(), std::vector<std::string>());
    }
    EXPECT_TRUE(session.logHas("→ reconnected — subscriptions re-flushed, snapshots merge in place"));
    EXPECT_FALSE(session.pane().connLimited);
    EXPECT_FALSE(session.logHas("token fetch failed"));
}

TEST(PracticeSession, LeavesTheUsersOwnProfileAlone) {
    Home home;
    const Paths user = Paths::user();
    fs::create_directories(user.config);
    std::ofstream(user.config / "preferences.json") << "{\"vmr.auth.refreshToken\": \"mine\"}";
    {
        Session session(practiceOptions());
        ASSERT_TRUE(session.runUntil([&] { return session.streaming(); }));
        session.pane().setTimeframe(5);
    }
    std::ifstream kept(user.config / "preferences.json");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), "{\"vmr.auth.refreshToken\": \"mine\"}");
    const auto practiceFile = Paths::practice().config / "preferences.json";
    EXPECT_TRUE(fs::exists(practiceFile));
    EXPECT_EQ(fs::status(practiceFile).permissions() & fs::perms::all, fs::perms::owner_read | fs::perms::owner_write);
}

}  // namespace
}  // namespace vmr
