// The running window's panels, form and menu, driven by a real pointer and real keys.
#include "relay/PracticeRelay.h"
#include "tests/app/DrivenWindow.h"
#include "tests/app/SilentServer.h"

namespace vmr {
namespace {

using nlohmann::json;

constexpr double width = 1200, toolbarHeight = 44;

class WindowPanels : public DrivenWindow {
 protected:
    using Frame = std::vector<double>;  // x, y, width, height below the toolbar

    void SetUp() override {
        DrivenWindow::SetUp();
        if (!IsSkipped()) startMarket();
    }
    // The frame of the account's panel as it is shown; empty when it is closed.
    Frame shown() {
        const json& panels = look()["panes"][0]["panels"];
        EXPECT_EQ(panels["open"]["account"], panels["frames"].contains("account"));
        return panels["frames"].value("account", Frame());
    }
    void expectFrame(const Frame& expected, const char* after) {
        EXPECT_TRUE(until([&](const json&) { return shown() == expected; }))
            << after << ": " << testing::PrintToString(shown());
    }
    void openByButton() {
        act(toTool("account") + " click 1");
        ASSERT_TRUE(until([&](const json&) { return !shown().empty(); }));
    }
    void drag(double x, double y, double dx, double dy) {
        act(to(x, y) + " mousedown 1" + to(x + dx / 2, y + dy / 2) + to(x + dx, y + dy) + " mouseup 1");
    }
    // From the middle of the title bar.
    void dragTitle(double dx, double dy) {
        const Frame at = shown();
        ASSERT_EQ(at.size(), 4u);
        drag(at[0] + at[2] / 2, toolbarHeight + at[1] + 17, dx, dy);
    }
};

TEST_F(WindowPanels, APanelIsMovedSizedClosedAndComesBackWhereItWas) {
    openByButton();
    Frame frame = shown();
    const Frame first = frame;
    const double camera = pane()["viewport"]["first"];

    dragTitle(-300, 120);
    frame[0] -= 300;
    frame[1] += 120;
    expectFrame(frame, "a drag of the title");
    drag(frame[0] + frame[2] - 6, toolbarHeight + frame[1] + frame[3] - 6, 50, 200);
    frame[2] += 50;
    expectFrame(frame, "a drag of the grip: its height is the content's");
    act(" windowfocus --sync $W key alt+Left key alt+Down key alt+shift+Right");
    frame[0] -= 8;
    frame[1] += 8;
    frame[2] += 8;
    expectFrame(frame, "the keys");
    EXPECT_EQ(pane()["viewport"]["first"], camera) << "none of it was for the chart";

    act(" key Escape");
    expectFrame({}, "Escape");
    act(" key Escape");
    openByButton();
    expectFrame(frame, "opening it again");
    EXPECT_NE(frame, first);

    dragTitle(-900, -400);
    frame[0] = frame[1] = 8;
    expectFrame(frame, "past the corner");
    dragTitle(2000, 1500);
    frame[0] = width - 8 - frame[2];
    frame[1] = 800 - toolbarHeight - 8 - frame[3];
    expectFrame(frame, "past the other corner");
    act(" windowsize --sync $W 800 500");
    expectFrame({800 - 8 - frame[2], 500 - toolbarHeight - 8 - frame[3], frame[2], frame[3]}, "a smaller window");
    act(" windowfocus --sync $W" + to(300, 300) + " click 1 key Escape");
    expectFrame({}, "Escape while the chart has the keyboard");
}

// What each row does is tested on the view; here real keys reach it, and the program ends well.
TEST_F(WindowPanels, TheMenuOpensAndQuits) {
    const std::string button = to(24, 22) + " click 1 sleep 0.3";
    act(" windowfocus --sync $W" + button + " key Escape" + button + " key Down Down Down Down");
    EXPECT_TRUE(look().is_object()) << "nothing is chosen before Enter";
    act(" key Return sleep 0.3 key Return");  // the sheet, which closes again
    act(button + " key Up");
    act(button + button + " key Down Down Down Down Down Down Down sleep 0.1 key Return");
    EXPECT_EQ(program_->end(), 0);
    program_.reset();
}

class WindowSignIn : public DrivenWindow {
 protected:
    void SetUp() override {
        DrivenWindow::SetUp();
        ASSERT_EQ(relay_.start(), std::nullopt);
    }
    void type(const std::string& keys) { act(" windowfocus --sync $W " + keys); }
    bool becomes(const char* field, const json& value) {
        return until([&](const json& state) { return state["panes"][0][field] == value; });
    }
    static std::string letters(std::string_view text) { return " type --delay 20 --args 1 " + std::string(text); }

    SystemClock time_;
    relay::PracticeRelay relay_{time_, {}};
};

TEST_F(WindowSignIn, AWrongPasswordIsToldAndTheRightOneEnters) {
    start({}, relay_.variables());
    type(letters(relay_.email()) + " key Tab" + letters("wrong") + " key Return");
    EXPECT_TRUE(becomes("authError", "Auth error (400): INVALID_LOGIN_CREDENTIALS")) << pane()["authError"];
    type("key ctrl+a" + letters(relay_.password()) + " key Return");
    EXPECT_TRUE(becomes("connected", true)) << pane()["status"];
    EXPECT_EQ(pane()["userEmail"], relay_.email());
}

TEST_F(WindowSignIn, ASignInThatIsNotAnsweredCanBeGivenUp) {
    const SilentServer silent;
    auto variables = relay_.variables();
    variables.emplace_back("VMR_IDENTITY_URL", silent.url("http"));
    start({}, variables);
    type(letters("a@b.c") + " key Tab" + letters("p") + " key Return");
    EXPECT_TRUE(becomes("signingIn", true));
    type("key Escape");
    EXPECT_TRUE(becomes("signingIn", false));
    EXPECT_EQ(pane()["authError"], nullptr);
    type("key Return");
    EXPECT_TRUE(becomes("signingIn", true)) << "what was typed stands there for another try";
}

}  // namespace
}  // namespace vmr
