// The running program's window, driven by a pointer and keys of the display's own.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>

#include "tests/app/RunningProgram.h"

namespace vmr {

class DrivenWindow : public testing::Test {
 protected:
    void SetUp() override {
        if (std::system("command -v xdotool > /dev/null") != 0)
            GTEST_SKIP() << "xdotool is not installed, so there is no pointer to drive the window with";
    }
    void TearDown() override {
        if (!program_) return;
        program_->say("quit");
        EXPECT_EQ(program_->end(), 0);
    }

    /// Starts the program and waits for its window.
    void start(const std::vector<std::string>& words,
               const std::vector<std::pair<std::string, std::string>>& variables = {}) {
        program_.emplace(words, variables);
        ASSERT_TRUE(program_->ask("help"));
        const std::string file = program_->home / "window";
        // a search fails where a window goes while it looks
        const std::string find = "timeout 20 sh -c \"until xdotool search --sync --onlyvisible --name '^Velmora$' > '" +
                                 file + "'; do sleep 0.05; done\"";
        ASSERT_EQ(std::system(find.c_str()), 0);
        std::ifstream(file) >> window_;
    }
    /// Starts it with an open market, waits until that is shown, and trades on it.
    void startMarket() {
        start({"--practice", "--clock", "2026-06-10T10:00", "--window", "1200x800"});
        ASSERT_TRUE(until([](const nlohmann::json& state) {
            const nlohmann::json& pane = state["panes"][0];
            return pane["displayCandles"].size() > 100 && pane["catFutures"].size() == 6 &&
                   pane["viewport"].is_object() && state["sim"]["lasts"].contains("NQ");
        })) << "the market did not come";
        EXPECT_EQ(program_->ask("set simEnabled true"), "[cmd] ok set simEnabled");
    }

    /// Real events, one after the other, in the words of xdotool.
    void act(const std::string& events) {
        const std::string command = "W=" + window_ + "; xdotool" + events;
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }
    /// The pointer to a place in the window, or to its left or upper edge.
    static std::string to(double x, double y) {
        const auto word = [](double at) { return " " + std::to_string(std::lround(std::max(0.0, at))); };
        return " mousemove --window $W" + word(x) + word(y) + " sleep 0.03";
    }

    /// The pointer to a control of the toolbar of the pane that begins at `left`.
    std::string toTool(const char* name, std::size_t pane = 0, double left = 0) {
        EXPECT_TRUE(until([&](const nlohmann::json& state) {
            return state["panes"][pane]["toolbar"]["shown"].contains(name);
        })) << name;
        return to(left + state_["panes"][pane]["toolbar"]["shown"].value(name, 0.0), 22);
    }

    /// The state document as of now.
    const nlohmann::json& look() {
        program_->ask("state state.json", 30);
        state_ = program_->file("state.json");
        EXPECT_TRUE(state_.is_object());
        return state_;
    }
    bool until(const std::function<bool(const nlohmann::json&)>& holds) {
        const double end = clock_.monotonic() + 20;
        while (clock_.monotonic() < end) {
            if (holds(look())) return true;
            program_->line(0.02);
        }
        return false;
    }
    const nlohmann::json& pane() { return state_["panes"][0]; }

    SystemClock clock_;
    std::optional<RunningProgram> program_;
    std::string window_;
    nlohmann::json state_;
};

}  // namespace vmr
