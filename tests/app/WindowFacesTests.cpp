// The running window's panels, form and menu, driven by a real pointer and real keys.
#include <algorithm>

#include "tests/app/DrivenWindow.h"

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
        act(to(width - 23, 22) + " click 1");
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

}  // namespace
}  // namespace vmr
