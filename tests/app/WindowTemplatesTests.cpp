// The panel of chart templates in a small window, driven by a real pointer and real keys, also at 200 %.
#include "tests/app/DrivenWindow.h"

namespace vmr {
namespace {

using nlohmann::json;

class WindowTemplates : public DrivenWindow, public testing::WithParamInterface<int> {
 protected:
    void SetUp() override {
        DrivenWindow::SetUp();
        if (IsSkipped()) return;
        start({"--practice", "--clock", "2026-06-10T10:00", "--window", "720x480"},
              {{"QT_SCALE_FACTOR", std::to_string(GetParam())}});
        ASSERT_TRUE(until([](const json& state) {
            const json& shown = state["panes"][0];
            return shown["viewport"].is_object() && shown["displayCandles"].size() > 100 &&
                   shown["catFutures"].size() == 6;
        }));
    }
    const json& templates() { return state_["panes"][0]["templates"]; }
    bool becomes(const char* field, const json& value) {
        return until([&](const json&) { return templates()[field] == value; });
    }
    /// The middle of a button of the panel: of which slot, and how far from the panel's right edge, in points.
    std::string button(int slot, double fromRight) {
        const json frame = look()["panes"][0]["panels"]["frames"]["templates"];
        const double x = frame[0].get<double>() + frame[2].get<double>() - fromRight;
        const double y = toolbarHeight + frame[1].get<double>() + titleHeight + 8 + 48 * (slot - 0.5);
        return to(x * GetParam(), y * GetParam());
    }
    static constexpr double toolbarHeight = 44, titleHeight = 34, saveButton = 16 + 32;
};

TEST_P(WindowTemplates, SlotsAreSavedLoadedAndLeftByPointerAndKeys) {
    ASSERT_EQ(program_->ask("panel templates open"), "[cmd] ok panel templates open");
    ASSERT_TRUE(until([&](const json&) { return templates()["list"].is_object(); }));
    EXPECT_TRUE(templates()["list"]["slots"].empty());
    const json frame = pane()["panels"]["frames"]["templates"];
    EXPECT_LE(frame[0].get<double>() + frame[2].get<double>(), 720 - 8);
    EXPECT_LE(frame[1].get<double>() + frame[3].get<double>(), 480 - toolbarHeight - 8);

    act(" windowfocus --sync $W" + button(2, saveButton) + " click 1");
    EXPECT_TRUE(becomes("status", "Saved to slot 2 (now preferred).")) << templates();
    EXPECT_TRUE(until([&](const json&) { return templates()["list"]["preferred"] == "slot_2"; }));
    const double count = pane()["viewport"]["count"], first = pane()["viewport"]["first"];

    act(to(600 * GetParam(), 400 * GetParam()) + " click 5 click 5 sleep 0.3");
    EXPECT_NE(look()["panes"][0]["viewport"]["count"], count) << "the chart was zoomed";
    act(button(2, saveButton) + " keydown shift key Tab keyup shift key Return");  // the wheel took nothing away
    EXPECT_TRUE(becomes("status", "Applied slot 2."));
    EXPECT_TRUE(until([&](const json&) {
        return std::abs(pane()["viewport"]["count"].get<double>() - count) < 1e-6 &&
               pane()["viewport"]["first"].get<double>() >= first;
    })) << pane()["viewport"];

    act(" key Tab key Tab key space");  // from one Save to the next: an empty slot cannot be loaded
    EXPECT_TRUE(becomes("status", "Saved to slot 3 (now preferred)."));
    act(" key Escape");
    EXPECT_TRUE(until([&](const json&) { return pane()["panels"]["open"]["templates"] == false; }));
}

INSTANTIATE_TEST_SUITE_P(, WindowTemplates, testing::Values(1, 2));

}  // namespace
}  // namespace vmr
