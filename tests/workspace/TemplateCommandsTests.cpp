// Chart templates by the shell's commands, over HTTP against a practice relay.
#include <algorithm>

#include "tests/workspace/LivePanes.h"

namespace vmr::test {
namespace {

class LiveTemplates : public LivePanes {
 protected:
    LiveTemplates() : LivePanes(true) {}
    void SetUp() override {
        host->open();
        ASSERT_TRUE(signIn(1));
        ASSERT_TRUE(runUntil([&] { return streaming(1); }));
    }
    /// The answer, when it comes.
    std::string say(const std::string& line) {
        answers.clear();
        commands.run(line);
        return heard();
    }
    std::string heard() {
        EXPECT_TRUE(runUntil([&] { return !answers.empty(); }, 10));
        return answers.empty() ? "" : answers[0];
    }
    bool logged(int pane, const std::string& text) {
        const auto& lines = host->find(pane)->log.logLines;
        return std::any_of(lines.begin(), lines.end(), [&](const LogLine& line) { return line.text == text; });
    }
    const GexConfig& config(int pane) { return host->find(pane)->config.get(); }

    ShellCommands commands{shell()};
};

TEST_F(LiveTemplates, AreSavedLoadedAndAppliedInTheNextPane) {
    const std::string none = "ok NQ_QQQ; 1 empty; 2 empty; 3 empty";
    for (const auto& [line, answer] : {std::pair("template list", none.c_str()),
                                       {"template load 3", "error: slot 3 is empty"},
                                       {"template load 4", "error: wrong arguments for template; see help"},
                                       {"template list 1", "error: wrong arguments for template; see help"},
                                       {"set ema1Period 33", "ok set ema1Period"},
                                       {"template save 2", "ok saved to slot 2"},
                                       {"set ema1Period 9", "ok set ema1Period"},
                                       {"template load 2", "ok applied slot 2"}})
        EXPECT_EQ(say(line), answer) << line;
    EXPECT_EQ(config(1).ema1Period, 33);
    const std::string full = say("template list");
    EXPECT_TRUE(full.starts_with("ok NQ_QQQ; 1 empty; 2 saved ") && full.ends_with(" (preferred); 3 empty")) << full;
    say("set ema1Period 9");
    say("pane open");
    EXPECT_TRUE(runUntil([&] { return logged(2, "→ template: applied preferred slot_2 for NQ_QQQ"); }, 10));
    EXPECT_EQ(config(2).ema1Period, 33);
    EXPECT_EQ(config(1).ema1Period, 9) << "a pane has its own";
}

TEST_F(LiveTemplates, ASlowAnswerFindsNobodyWhoLeft) {
    relay.command("templates delay 0.4");
    EXPECT_EQ(say("panel nothing open"), "error: wrong arguments for panel; see help");
    EXPECT_EQ(say("panel templates open"), "ok panel templates open");
    answers.clear();
    commands.run("template save 1");
    commands.run("template save 2");
    EXPECT_EQ(heard(), "error: A save is under way.");
    EXPECT_EQ(say("symbol ES"), "error: The chart was left.");
    AppModel& pane = *host->find(1);
    ASSERT_TRUE(runUntil([&] { return pane.templates.list->has_value(); }, 10));
    EXPECT_TRUE(pane.templates.list.get()->savedSlots.empty()) << "the panel of the next chart has its own list";
    EXPECT_EQ(pane.templates.status.get(), std::nullopt);
    say("pane open");
    ASSERT_TRUE(runUntil([&] { return streaming(2); }));
    answers.clear();
    commands.run("@2 template list");
    commands.run("pane close 2");
    EXPECT_EQ(heard(), "error: The pane was closed.");
    answers.clear();
    commands.run("template list");
    commands.run("sign-out");
    EXPECT_EQ(heard(), "error: Signed out.");
    EXPECT_FALSE(runUntil([&] { return pane.templates.list->has_value() || pane.templates.status->has_value(); }, 0.8));
    EXPECT_EQ(say("template list"), "error: Not signed in.");
}

}  // namespace
}  // namespace vmr::test
