// The oscillator below the chart, driven by a real pointer.
#include <cmath>

#include "tests/app/DrivenWindow.h"

namespace vmr {
namespace {

using nlohmann::json;

class WindowOscillator : public DrivenWindow {
 protected:
    void SetUp() override {
        DrivenWindow::SetUp();
        if (IsSkipped()) return;
        startMarket();
        ASSERT_TRUE(until([](const json& state) { return shown(state) == 200; })) << pane()["oscillator"];
    }
    /// Its height; 0 while it is hidden.
    static double shown(const json& state) {
        const json& oscillator = state["panes"][0]["oscillator"];
        return oscillator.is_null() ? 0 : oscillator["height"].get<double>();
    }
    bool becomes(double height) {
        return until([&](const json& state) { return std::abs(shown(state) - height) <= 1; });
    }
    /// As the settings on the disk tell it; the default before there are any.
    double stored() {
        const json file = program_->file(".config/Velmora/practice/preferences.json");
        if (!file.is_object()) return 200;
        return json::parse(file.value("gex-config", "{}")).value("oscHeight", 200.0);
    }
    /// The handle from where it is, over places, and to the last of them.
    void drag(const std::vector<double>& over) {
        std::string events = to(300, 800 - shown(look()) - 3) + " mousedown 1";
        for (const double y : over) events += to(300, y);
        act(events + " mouseup 1 sleep 0.05");
    }
};

TEST_F(WindowOscillator, TheHandleSetsItsHeightWithinLimits) {
    drag({592, 590});
    EXPECT_TRUE(becomes(200)) << "too little for a drag";
    drag({580, 560, 547});
    EXPECT_TRUE(becomes(250)) << shown(state_);
    EXPECT_TRUE(until([this](const json&) { return std::abs(stored() - 250) <= 1; })) << stored();
    const double before = stored();
    act(to(300, 547) + " mousedown 1" + to(300, 500) + to(300, 480) + " sleep 0.6");
    EXPECT_GT(shown(look()), 300);
    EXPECT_EQ(stored(), before) << "while the drag lasts";
    act(" mouseup 1");
    EXPECT_TRUE(until([this](const json&) { return stored() > 300; }));
    drag({400, 200, 60});
    EXPECT_TRUE(becomes(400));
    drag({500, 700, 790});
    EXPECT_TRUE(becomes(100));
    EXPECT_EQ(pane()["config"]["oscHeight"], 100);
    act(to(300, 697) + " click --repeat 2 --delay 60 1 sleep 0.1");
    EXPECT_TRUE(becomes(200));
}

TEST_F(WindowOscillator, ItGivesWayInALowPaneAndGoesWithItsSwitch) {
    const double first = pane()["viewport"]["first"];
    act(to(300, 700) + " mousedown 1" + to(360, 720) + to(420, 790) + " mouseup 1");
    EXPECT_TRUE(until([&](const json& state) {
        return state["panes"][0]["viewport"]["first"] < first - 1 && !state["panes"][0]["oscillator"].is_null();
    }));
    const json& series = pane()["oscillator"]["polylines"]["nq"];
    const double left = pane()["viewport"]["first"];
    EXPECT_LE(std::abs(series[0][0][0].get<double>() - std::trunc(left) + 2), 1) << "from two bars beyond the view";
    EXPECT_EQ(pane()["oscillator"]["legend"].size(), 6U);

    program_->ask("set oscEnabled false");
    EXPECT_TRUE(becomes(0));
    program_->ask("set oscEnabled true");
    EXPECT_TRUE(becomes(200));
    for (const auto& [height, expected] :
         {std::pair(480, 200.0), {420, 150.0}, {364, 94.0}, {363, 0.0}, {800, 200.0}}) {
        act(" windowsize --sync $W 900 " + std::to_string(height));
        EXPECT_TRUE(becomes(expected)) << height << ": " << shown(state_);
        if (expected == 150) act(to(300, 267) + " mousedown 1" + to(300, 250) + to(300, 230) + " mouseup 1");
    }
    EXPECT_EQ(pane()["config"]["oscHeight"], 200) << "what a pane has room for is no setting";

    EXPECT_EQ(program_->ask("symbol ES"), "[cmd] ok symbol ES");
    EXPECT_TRUE(until([](const json& state) {
        const json& oscillator = state["panes"][0]["oscillator"];
        return !oscillator.is_null() && oscillator["legend"].size() == 5 &&
               oscillator["legend"][0].get<std::string>().starts_with("ES ");
    })) << pane()["oscillator"]["legend"];
}

}  // namespace
}  // namespace vmr
