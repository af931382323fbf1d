// Two charts in a window and several windows, driven by a real pointer.
#include <algorithm>
#include <cmath>

#include "tests/app/DrivenWindow.h"

namespace vmr {
namespace {

using nlohmann::json;

constexpr double width = 1200;

class WindowPair : public DrivenWindow {
 protected:
    void SetUp() override {
        DrivenWindow::SetUp();
        if (IsSkipped()) return;
        startMarket();
        act(toTool("dual") + " click 1");
        ASSERT_TRUE(until([](const json& state) {
            return state["panes"].size() == 2 && state["windows"][0]["dual"] == true && hasView(state["panes"][1]);
        }));
    }
    // Of two panes each has no room for all of its tools; these are the last ones of the menu of what is folded.
    void fold(std::size_t pane, const char* name) {
        const std::string more = toTool("more", pane, pane == 0 ? 0 : left() + 1);
        const auto& folded = state_["panes"][pane]["toolbar"]["folded"];
        const auto at = std::find(folded.begin(), folded.end(), name);
        ASSERT_NE(at, folded.end()) << name;
        std::string up;
        for (auto i = folded.end() - at; i > 0; --i) up += " Up";
        act(more + " click 1 sleep 0.2 key" + up + " Return sleep 0.1");
    }
    static bool hasView(const json& pane) { return pane["viewport"].is_object() && !pane["displayCandles"].empty(); }
    double left() { return std::round(look()["windows"][0]["split"].get<double>() * (width - 1)); }
    void dragDivider(double to_) {
        act(to(left(), 400) + " mousedown 1" + to((left() + to_) / 2, 400) + to(to_, 400) + " mouseup 1 sleep 0.05");
    }
    const json& view(int pane) { return state_["panes"][pane]["viewport"]; }
    // Bars between the right edge and the newest bar.
    double gap(int pane) {
        return view(pane)["first"].get<double>() + view(pane)["count"].get<double>() -
               double(state_["panes"][pane]["displayCandles"].size());
    }
};

TEST_F(WindowPair, TheDividerKeepsRoomForBothAndGoesBackToTheMiddle) {
    EXPECT_EQ(left(), 600);
    dragDivider(450);
    EXPECT_NEAR(left(), 450, 1);
    dragDivider(40);
    EXPECT_NEAR(left(), 320, 1);
    dragDivider(1190);
    EXPECT_NEAR(left(), width - 1 - 320, 1);
    act(to(left(), 300) + " click --repeat 2 --delay 60 1 sleep 0.1");
    EXPECT_NEAR(left(), 600, 1);
    EXPECT_EQ(look()["windows"][0]["panes"], json({1, 2}));

    fold(0, "dual");
    EXPECT_TRUE(until([](const json& state) { return state["panes"].size() == 1; }));
    EXPECT_EQ(look()["windows"][0]["dual"], false);
}

TEST_F(WindowPair, TheChartsMoveTogetherWhileTheyAreInStep) {
    fold(1, "sync");
    ASSERT_TRUE(until([](const json& state) { return state["windows"][0]["sync"] == true; }));
    EXPECT_EQ(state_["panes"][1]["toast"]["title"], "Sync");
    const auto together = [this](const json&) {
        for (const char* field : {"first", "count", "minP", "maxP"})
            if (std::abs(view(0)[field].get<double>() - view(1)[field].get<double>()) > 0.3) return false;
        return true;
    };
    for (const double y : {400.0, 700.0})  // over the chart and over the oscillator
        for (const double pane : {0.0, 600.0}) {
            const double before = look()["panes"][0]["viewport"]["first"];
            act(to(pane + 100, y) + " mousedown 1" + to(pane + 160, y + 20) + to(pane + 220, y + 40) +
                " mouseup 1 sleep 0.3");
            EXPECT_TRUE(until(together)) << pane << ", " << y << ": " << view(0) << view(1);
            EXPECT_LT(view(0)["first"].get<double>(), before - 5) << pane << ", " << y;
        }

    EXPECT_EQ(program_->ask("@2 symbol ES"), "[cmd] ok symbol ES");
    ASSERT_TRUE(until(
        [](const json& state) { return state["panes"][1]["currentSymbol"] == "ES" && hasView(state["panes"][1]); }));
    act(to(100, 400) + " mousedown 1" + to(60, 400) + to(20, 400) + " mouseup 1 sleep 0.3");
    EXPECT_TRUE(until([this](const json&) { return std::abs(gap(0) - gap(1)) < 0.3; })) << gap(0) << " " << gap(1);
    fold(0, "sync");
    EXPECT_TRUE(until([](const json& state) { return state["windows"][0]["sync"] == false; }));
}

TEST_F(WindowPair, FourPanesAreAllThereCanBe) {
    for (const std::size_t windows : {2, 3}) {
        act(" windowraise $W windowfocus --sync $W key ctrl+n");
        EXPECT_TRUE(until([&](const json& state) { return state["windows"].size() == windows; }));
    }
    act(" windowraise $W windowfocus --sync $W");
    fold(1, "newWindow");
    EXPECT_TRUE(until([](const json& state) { return state["panes"][0]["connLimited"] == true; }));
    EXPECT_TRUE(until([](const json& state) { return state["panes"][0]["connLimited"] == false; })) << "not for ever";
    EXPECT_EQ(look()["windows"].size(), 3u);
    EXPECT_EQ(program_->ask("window close 3"), "[cmd] ok window 3 closed");
    EXPECT_EQ(look()["panes"].size(), 3u);
}

}  // namespace
}  // namespace vmr
