// The whole client against the practice relay, over real loopback sockets.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include "app/Program.h"
#include "base/AsioLoop.h"
#include "base/FileReplace.h"
#include "tests/app/SilentServer.h"
#include "workspace/SettingsEditor.h"

namespace vmr {
namespace {

namespace fs = std::filesystem;

// A home of its own, so that no test sees the user's files.
struct Home {
    const fs::path folder = fs::temp_directory_path() / ("velmora-test-" + UuidSource().next().text());
    Home() {
        ::setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
        ::setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    }
    ~Home() { fs::remove_all(folder); }
};

Options practiceOptions() {
    Options options;
    options.practice = true;
    options.clock = parseClockSetting("2026-06-10T10:00:30@60");
    return options;
}

// The program on a loop that runs until a condition holds.
class Session {
 public:
    explicit Session(const Options& options) : start_(options) {
        EXPECT_FALSE(start_.failure()) << start_.failure().value_or("");
        program_ = std::make_unique<Program>(start_, loop_);
        // the pane's own log forgets: the trades of a chart that was left fill it within a second at this speed
        heard_ = pane().log.logChanged.connect([this] {
            if (!pane().log.logLines.empty()) story_.push_back(pane().log.logLines.back().text);
        });
        program_->signInToPractice();
    }
    ~Session() { program_.reset(); }

    // Looks every 5 ms of real time; whether the condition came to hold within `limit` seconds.
    bool runUntil(const std::function<bool()>& done, double limit = 30) {
        bool held = false;
        const auto poll = loop_.every(0, 0.005, [&] {
            if ((held = done())) loop_.quit();
        });
        const auto end = loop_.after(limit, [&] { loop_.quit(); });
        loop_.run();
        for (const auto timer : {poll, end}) loop_.cancel(timer);
        return held;
    }

    AppModel& pane() { return *program_->panes().active(); }
    relay::PracticeRelay& relay() { return *start_.practice(); }
    ProgramStart& start() { return start_; }

    // Closed bars of the pane that differ from the relay's own; a busy machine has 3 seconds until the last one comes.
    std::vector<std::int64_t> differences() {
        std::vector<std::int64_t> out;
        for (int tries = 0; tries < 7 && (tries == 0 || !out.empty()); ++tries) {
            if (tries > 0) runUntil([] { return false; }, 0.5);
            out.clear();
            std::map<std::int64_t, Candle> truth;
            for (const Candle& bar : relay().ledger(pane().channels->chartChannel)) truth[bar.time] = bar;
            const auto& bars = pane().bars.candles;
            for (std::size_t i = 0; i + 2 < bars.size(); ++i)
                if (const auto found = truth.find(bars[i].time); found == truth.end() || found->second != bars[i])
                    out.push_back(bars[i].time);
        }
        return out;
    }

    // Live on the contract that the relay calls the front one.
    bool streaming() {
        const auto& map = pane().catalog.contractOverrides.get();
        const auto front = map.find(pane().currentSymbol());
        return pane().session.connected && front != map.end() &&
               pane().channels->chartChannel.ends_with(front->second) && !pane().bars.candles.empty() &&
               (pane().channels->secondaryChannel.empty() || !pane().bars.secondaryCandles.empty());
    }
    // The pane has shown `minutes` new bars since now.
    bool runMinutes(int minutes) {
        const std::int64_t from = pane().bars.candles.back().time;
        return runUntil(
            [&] { return !pane().bars.candles.empty() && pane().bars.candles.back().time >= from + minutes * 60; });
    }
    // Snapshots of the chart's bars so far.
    std::ptrdiff_t snapshots() {
        const std::string channel = pane().channels->chartChannel;
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

TEST(PracticeSession, LosesNoBarOverDropsRefusalsAndStaleTokens) {
    Home home;
    Options options = practiceOptions();
    options.tokenLife = 61;  // a minute of margin is taken off, so that a reconnect after a second refreshes
    Session session(options);
    ASSERT_TRUE(session.runUntil([&] { return session.streaming(); }));
    ASSERT_TRUE(session.runMinutes(4));
    EXPECT_EQ(session.differences(), std::vector<std::int64_t>());
    EXPECT_GT(session.pane().bars.candles.size(), 3000u);
    EXPECT_FALSE(session.pane().bars.vixCandles.empty());
    for (const char* fault : {"drop", "close 4006", "close 1011", "malformed 20", "wrong 20"}) {
        SCOPED_TRACE(fault);
        EXPECT_EQ(session.relay().command(fault).substr(0, 2), "ok");
        if (!std::string(fault).ends_with(" 20")) {  // the others end the connection
            ASSERT_TRUE(session.runUntil([&] { return !session.pane().session.connected; }));
            const auto before = session.snapshots();
            ASSERT_TRUE(session.runUntil([&] { return session.streaming() && session.snapshots() >= before + 2; }));
        }
        ASSERT_TRUE(session.runMinutes(3));
        EXPECT_EQ(session.differences(), std::vector<std::int64_t>());
    }
    EXPECT_TRUE(session.logHas("→ reconnected — subscriptions re-flushed, snapshots merge in place"));
    EXPECT_FALSE(session.pane().session.connLimited);
    EXPECT_FALSE(session.logHas("token fetch failed"));
}

TEST(PracticeSession, LeavesTheUsersOwnProfileAlone) {
    Home home;
    const Paths user = *Paths::user();
    fs::create_directories(user.config);
    std::ofstream(user.config / "preferences.json") << "{\"vmr.auth.refreshToken\": \"mine\"}";
    {
        Session session(practiceOptions());
        ASSERT_TRUE(session.runUntil([&] { return session.streaming(); }));
        session.pane().setTimeframe(5);
        EXPECT_EQ(&session.start().relayClock(), &session.start().clock()) << "the relay's own time";
        const Endpoints& all = session.start().endpoints();
        for (const std::string& url :
             {all.identityUrl, all.secureTokenUrl, all.functionsUrl, all.firestoreUrl, all.downloadsUrl})
            EXPECT_EQ(url, session.relay().restUrl()) << "nothing goes to a public host";
    }
    EXPECT_EQ(readFile(user.config / "preferences.json"), "{\"vmr.auth.refreshToken\": \"mine\"}");
    const auto practiceFile = Paths::practice()->config / "preferences.json";
    EXPECT_TRUE(fs::exists(practiceFile));
    EXPECT_EQ(fs::status(practiceFile).permissions() & fs::perms::all, fs::perms::owner_read | fs::perms::owner_write);
}

TEST(PracticeSession, BeginsWithTheSimulatorOnUntilItIsTurnedOff) {
    Home home;
    for (const bool first : {true, false}) {
        Session session(practiceOptions());
        EXPECT_EQ(session.pane().config->simEnabled, first);
        resetSettings(session.pane());
    }
    Options own;
    own.headless = true;
    ProgramStart start(own);
    AsioLoop loop;
    EXPECT_FALSE(Program(start, loop).panes().active()->config->simEnabled) << "outside of practice";
}

TEST(ProgramSetup, WithoutARelayTheStoredSessionWaitsUnused) {
    Home home;
    const SilentServer signIn;
    const std::string url = signIn.url("http").substr(0, signIn.url("http").size() - 1);
    fs::create_directories(Paths::user()->config);
    const fs::path file = Paths::user()->config / "preferences.json";
    const std::string stored = R"({"vmr.auth.endpoints":")" + url + " " + url + R"(","vmr.auth.refreshToken":"mine"})";
    std::ofstream(file) << stored;
    for (const char* name : {"VMR_IDENTITY_URL", "VMR_SECURETOKEN_URL"}) ::setenv(name, url.c_str(), 1);
    Options options = practiceOptions();
    options.practice = false;
    {
        ProgramStart start(options);
        AsioLoop loop;
        Program program(start, loop);
        loop.after(0.3, [&loop] { loop.quit(); });
        loop.run();
        EXPECT_TRUE(program.panes().active()->session.isSignedIn);
        EXPECT_EQ(program.panes().active()->session.status.get(), "Not connected");
        EXPECT_TRUE(start.setupProblem());
        EXPECT_FALSE(signIn.isCalled(0)) << "no token was sent";
        EXPECT_NEAR(start.relayClock().now(), SystemClock().now(), 1) << "another relay is told this machine's time";
    }
    EXPECT_EQ(readFile(file), stored);
    for (const char* name : {"VMR_IDENTITY_URL", "VMR_SECURETOKEN_URL"}) ::unsetenv(name);
}

}  // namespace
}  // namespace vmr
