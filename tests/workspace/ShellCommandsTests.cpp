// What the shell answers, line by line.
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/FileReplace.h"
#include "model/SimDesk.h"
#include "model/StateDocument.h"
#include "tests/workspace/LivePanes.h"

namespace vmr::test {
namespace {

class Shell : public LivePanes {
 protected:
    Shell() { host->open(); }

    ShellSurroundings surroundings() {
        ShellSurroundings out = shell();
        out.quit = [this] { quitting = true; };
        out.writeState = [](const std::string& file) {
            return file == "full disk" ? std::optional<std::string>("no room") : std::nullopt;
        };
        return out;
    }
    std::string say(const std::string& line) { return say(line, commands); }
    std::string say(const std::string& line, ShellCommands& to) {
        answers.clear();
        to.run(line);
        return answers.size() == 1 ? answers[0] : std::to_string(answers.size()) + " answers";
    }

    bool quitting = false;
    ShellCommands commands{surroundings()};
};

TEST_F(Shell, AnswersEachLineOnce) {
    for (const auto& [line, answer] : {std::pair("  ", "0 answers"),
                                       {"frobnicate\t1", "error: unknown command frobnicate; see help"},
                                       {"symbol", "error: wrong arguments for symbol; see help"},
                                       {"symbol XYZ", "error: unknown symbol XYZ"},
                                       {"timeframe x", "error: timeframe needs a whole number of minutes"},
                                       {"open", "error: open needs CANDLE_CHANNEL [DERIVED_CHANNEL]"},
                                       {"set dexEnabled", "error: set needs KEY JSON"},
                                       {"set dexEnabled  true", "ok set dexEnabled"},
                                       {"settings", "error: wrong arguments for settings; see help"},
                                       {"settings export", "error: wrong arguments for settings; see help"},
                                       {"settings import a b.json", "error: there are no stored settings here"},
                                       {"3d maybe", "error: wrong arguments for 3d; see help"},
                                       {"3d on", "ok 3d on"},
                                       {"pressure window 30", "ok pressure window 30"},
                                       {"pressure window 7", "error: wrong arguments for pressure; see help"},
                                       {"do gexBubbles", "ok gexBubbles off"},
                                       {"do fullScreen", "error: there is no window"},
                                       {"do it", "error: there is no action it; see actions"},
                                       {"key gexBubbles q", "error: there are no keys here"},
                                       {"state", "error: state needs a FILE"},
                                       {"state a b.json", "ok state a b.json"},
                                       {"state full disk", "error: no room"},
                                       {"relay drop", "error: there is no practice relay; start with --practice"},
                                       {"sign-in a b forget c", "error: sign-in needs EMAIL PASSWORD [forget]"},
                                       {"sign-out", "ok signed out"},
                                       {"order NQ buy market 1 x=2", "error: wrong arguments for order; see help"},
                                       {"cancel nobody", "ok nothing changed"},
                                       {"reset 5000", "ok balance 5000; start balance 5000"}})
        EXPECT_EQ(say(line), answer) << line;
    EXPECT_TRUE(host->active()->config->dexEnabled);
    EXPECT_EQ(say("settings reset"), "ok settings reset");
    EXPECT_EQ(host->active()->config.get(), GexConfig());
    EXPECT_FALSE(quitting);
    EXPECT_EQ(say("quit"), "ok quitting");
    EXPECT_TRUE(quitting);
}

TEST_F(Shell, TellsWhyAnOrderIsRefusedAndOnWhatPriceItFilled) {
    sim.onQuote("NQ", 100, 100.25);
    clock.setNow(clock.now() + 212);
    for (const auto& [line, answer] :
         {std::pair("order ZZ buy market 1", "error: unknown root ZZ"),
          {"order NQ buy market 0", "error: the quantity must be at least 1"},
          {"order NQ buy market 1 limit=9", "error: a market order takes no limit price"},
          {"order NQ sell stop 1 stop=9 limit=9", "error: a stop order takes no limit price"},
          {"order NQ sell limit 1", "error: a limit order needs a limit price"},
          {"order NQ sell limit 1 limit=-1", "error: a price must be above 0"},
          {"order NQ buy limit 1 limit=9 sl=0", "error: a stop or target must be at least 1 tick away"},
          {"order ES buy market 1", "error: there is no price of ES yet"},
          {"order NQ buy market 1", "position NQ 1 @ 100.25; balance 49997.5 (price is 212 s old)"},
          {"order NQ buy limit 1 limit=101", "balance 49995 (price is 212 s old)"},
          {"order NQ buy limit 1 limit=90", "buy 1 NQ limit limit=90"},
          {"protect NQ SL 0", "error: a price must be above 0"},
          {"protect NQ SL 99", "sell 2 NQ stop stop=99 SL"},
          {"sim", "sell 2 NQ stop stop=99 SL (not watched)"}})
        EXPECT_TRUE(say(line).ends_with(answer)) << line << ": " << answers[0];
    clock.setNow(clock.now() + 3 * 86400);  // a Saturday
    for (const auto& [line, answer] : {std::pair("order NQ buy market 1", "error: the market is closed"),
                                       {"flatten NQ", "error: Market closed — position kept"},
                                       {"flatten ES", "ok nothing changed"}})
        EXPECT_EQ(say(line), answer);
    EXPECT_EQ(sim.orders().size(), 2u);
    sim.watch(this, "NQ", "NQM6");
    EXPECT_TRUE(say("sim").ends_with("SL"));
    const std::string first = sim.orders().front().id.text();
    EXPECT_EQ(say("cancel " + first), "ok gone " + first);
}

TEST_F(Shell, WorksTheTicketAsThePanelDoes) {
    sim.watch(this, "NQ", "NQM6");
    sim.setConnected(this, true);
    sim.onQuote("NQ", 24452, 24453);
    const auto file = std::filesystem::temp_directory_path() / ("velmora-fills-" + UuidSource().next().text() + ".csv");
    for (const auto& [line, answer] :
         {std::pair("ticket buy market", "error: the simulator supports futures only"),
          {"open futures:NQM6", "ok open futures:NQM6"},
          {"ticket", "ok qty 1; bracket on 40 80 ticks"},
          {"ticket qty 200", "ok qty 100; bracket on 40 80 ticks"},
          {"ticket qty 2", "ok qty 2; bracket on 40 80 ticks"},
          {"ticket bracket on 10 0", "ok qty 2; bracket on 10 0 ticks"},
          {"ticket points", "ok qty 2; bracket on 10 0 points"},
          {"ticket limit 24400,5", "ok qty 2; bracket on 10 0 points; limit 24,400.50"},
          {"ticket stop 24 600", "ok qty 2; bracket on 10 0 points; limit 24,400.50; stop is no price above 0"},
          {"ticket buy stop", "error: a stop order needs a price above 0"},
          {"ticket stop", "ok qty 2; bracket on 10 0 points; limit 24,400.50"},
          {"ticket buy limit", "buy 2 NQ limit limit=24400.5 sl=40"},
          {"ticket limit 24600", "ok qty 2; bracket on 10 0 points; limit 24,600.00"},
          {"ticket buy limit", "error: Buy limit 24,600 is 0.6 % through the market: press again"},
          {"a second press", ""},
          {"ticket buy limit", "position NQ 2 @ 24600; balance 49995"},
          {"ticket bracket off", "ok qty 2; bracket off 10 0 points; limit 24,600.00"},
          {"ticket sell market", "position NQ -2 @ 24452; balance 44065"},
          {"ticket +sl", "buy 2 NQ stop stop=24462 SL"},
          {"ticket cancel all", "error"},
          {"ticket flat", "position NQ 0 @ 0; balance 44020"},
          {"ticket +tp", "error: there is no position in NQ"},
          {"ticket cancel x", "error: the order is gone already"},
          {"ticket qty two", "error: wrong arguments for ticket; see help"},
          {"ticket bracket on 1", "error: wrong arguments for ticket; see help"},
          {"ticket buy stopLimit", "error: wrong arguments for ticket; see help"},
          {"sim export wins x", "error: wrong arguments for sim; see help"}})
        if (std::string_view(answer).empty())
            runUntil([] { return false; }, SimDesk::readWithin + 0.1);  // so that it is no double click
        else if (std::string_view(answer) != "error")
            EXPECT_TRUE(say(line).ends_with(answer)) << line << ": " << answers[0];
        else
            EXPECT_TRUE(say(line).starts_with("ok gone ")) << line << ": " << answers[0];
    EXPECT_TRUE(sim.orders().empty());
    EXPECT_EQ(say("sim export fills " + file.string()), "ok 3 fills to " + file.string());
    EXPECT_TRUE(readFile(file)->starts_with("root,side,qty,time"));
    std::filesystem::remove(file);
    host->active()->panels.simPanelOpen = true;
    host->active()->panels.simPanelOpen = false;
    EXPECT_EQ(say("ticket"), "ok qty 1; bracket on 40 80 ticks") << "it lives no longer than the panel";
    EXPECT_EQ(sim.ticketQty, 2);
    host->active()->panels.simPanelOpen = true;
    EXPECT_EQ(sim.ticketQty, 1);
    const auto panel = nlohmann::json::parse(stateDocument({clock, host->models(), &sim}))["panes"][0]["simPanel"];
    EXPECT_EQ(panel["title"], "Trade Simulator — NQ");
    EXPECT_EQ(panel["headings"][3], "HISTORY (2) · 0% win");
    EXPECT_EQ(panel["metrics"]["Trades"], "2");
}

TEST_F(Shell, SpeaksToEveryPane) {
    for (const auto& [line, answer] : {std::pair("pane open", "ok pane 2"),
                                       {"@2 timeframe 5", "ok timeframe 5"},
                                       {"timeframe 3", "ok timeframe 3"},
                                       {"@1", "error: what is pane 1 to do? see help"},
                                       {"@3 timeframe 1", "error: there is no pane 3"},
                                       {"@4294967298 timeframe 1", "error: there is no pane 4294967298"},
                                       {"pane close x", "error: wrong arguments for pane; see help"},
                                       {"pane close 7", "error: there is no pane 7"},
                                       {"pane open", "ok pane 3"},
                                       {"pane open", "ok pane 4"},
                                       {"pane open", "error: at most 4 panes can be open"},
                                       {"pane close 3", "ok pane 3 closed"},
                                       {"pane open", "ok pane 5"}})
        EXPECT_EQ(say(line), answer) << line;
    EXPECT_EQ(host->find(2)->bars.timeframe, 5);
    EXPECT_EQ(host->find(1)->bars.timeframe, 3);
    for (const char* line : {"pane close 1", "pane close 2", "pane close 4", "@5 pane close 5"})
        EXPECT_TRUE(say(line).starts_with("ok ")) << line;
    EXPECT_EQ(say("symbol NQ"), "error: no pane is open; see pane open");
}

TEST_F(Shell, SteersTheClockWhereItIsOurs) {
    EXPECT_EQ(say("clock pause"), "error: the clock is the machine's own; start with --practice");
    ShellSurroundings at = surroundings();
    at.clock = &clock;
    at.bench = [](double seconds) { return seconds < 60; };
    ShellCommands practice(at);
    for (const auto& [line, answer] : {std::pair("clock", "error: wrong arguments for clock; see help"),
                                       {"clock stop", "error: wrong arguments for clock; see help"},
                                       {"clock speed 10001", "error: the speed is a number above 0, at most 10000"},
                                       {"clock speed 0", "error: the speed is a number above 0, at most 10000"},
                                       {"clock speed 2.5", "ok clock speed 2.5"},
                                       {"clock set yesterday", "error: set needs a moment such as 2026-06-10T10:00:00"},
                                       {"bench 0", "error: wrong arguments for bench; see help"},
                                       {"bench 2.5", "ok bench"},
                                       {"bench 60", "error: a benchmark is running"},
                                       {"clock pause", "ok clock paused"},
                                       {"clock set 2026-06-09T10:00:00", "ok clock set 2026-06-09T10:00:00"}})
        EXPECT_EQ(say(line, practice), answer) << line;
    EXPECT_EQ(clock.now(), 1781100000 - 86400);
    EXPECT_TRUE(clock.paused());
    EXPECT_EQ(clock.speed(), 2.5);
    practice.run("clock resume");
    EXPECT_FALSE(clock.paused());
}

TEST_F(Shell, SignsInOnceItIsOver) {
    EXPECT_EQ(say("sign-in " + relay.email() + " wrong"), "0 answers");
    EXPECT_EQ(say("sign-in " + relay.email() + " again"), "error: a sign-in is running");
    answers.clear();
    ASSERT_TRUE(runUntil([&] { return !answers.empty(); }));
    EXPECT_TRUE(answers[0].starts_with("error: Auth error (400)")) << answers[0];
    EXPECT_EQ(say("sign-in " + relay.email() + " " + relay.password() + " forget"), "0 answers");
    ASSERT_TRUE(runUntil([&] { return !answers.empty(); }));
    EXPECT_EQ(answers[0], "ok signed in as " + relay.email());
    EXPECT_FALSE(preferences.get(FirebaseRESTAuth::refreshTokenKey));
}

}  // namespace
}  // namespace vmr::test
