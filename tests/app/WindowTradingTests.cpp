// The account's lines on two charts of one root, driven by a real pointer.
#include <cmath>

#include "tests/app/DrivenWindow.h"

namespace vmr {
namespace {

using nlohmann::json;

constexpr double toolbarHeight = 44, tick = 0.25;

class WindowTrading : public DrivenWindow {
 protected:
    void SetUp() override {
        DrivenWindow::SetUp();
        if (IsSkipped()) return;
        startMarket();
        EXPECT_EQ(program_->ask("clock pause"), "[cmd] ok clock paused");
        act(toTool("dual") + " click 1");
        ASSERT_TRUE(until([](const json& state) {
            return state["panes"].size() == 2 && state["panes"][1]["viewport"].is_object() &&
                   state["panes"][1]["trading"].is_object();
        }));
        for (const char* pane : {"", "@2 "})  // the charts are as high as their panes
            EXPECT_EQ(program_->ask(std::string(pane) + "set oscEnabled false"), "[cmd] ok set oscEnabled");
        ASSERT_TRUE(until([](const json& state) {
            return state["panes"][0]["oscillator"].is_null() && state["panes"][1]["oscillator"].is_null();
        }));
    }
    // To a place in a pane's chart.
    std::string at(std::size_t pane, double x, double y) {
        const double left = pane == 0 ? 0 : std::round(state_["windows"][0]["split"].get<double>() * 1199) + 1;
        return to(left + x, toolbarHeight + y);
    }
    std::string at(std::size_t pane, const json& box) {
        return at(pane, box[0].get<double>() + 5, box[1].get<double>() + box[3].get<double>() / 2);
    }
    const json& trading(std::size_t pane) { return state_["panes"][pane]["trading"]; }
    // The line of that kind and, with it, that the other pane shows the same one.
    json line(std::size_t pane, const char* kind) {
        for (const json& one : trading(pane)["lines"])
            if (one["kind"] == kind) return one;
        return {};
    }
    bool bothShow(const char* kind, const json& price) {
        return line(0, kind).is_object() && line(1, kind).is_object() && line(0, kind)["price"] == price &&
               line(1, kind)["price"] == price && line(0, kind)["id"] == line(1, kind)["id"];
    }
    const json& orders() { return state_["sim"]["orders"]; }
};

TEST_F(WindowTrading, AnOrderIsPlacedDraggedTakenBackAndClosedInBothPanes) {
    act(at(0, 200, 600) + " click 3 sleep 0.4" + at(0, 230, 620) + " click 1");
    ASSERT_TRUE(
        until([&](const json&) { return orders().size() == 1 && bothShow("order", orders()[0]["limitPrice"]); }));
    const double price = orders()[0]["limitPrice"];
    EXPECT_EQ(line(0, "order")["text"], "BUY 1");
    for (const std::size_t pane : {0, 1}) {
        EXPECT_EQ(line(pane, "order")["badge"][3], 18);
        EXPECT_EQ(line(pane, "order")["tag"][2], 74);
    }

    act(at(0, line(0, "order")["badge"]) + " mousedown 1" + at(0, 300, 580) + at(0, 300, 560) + " sleep 0.1");
    EXPECT_TRUE(until([&](const json&) {
        const json& now = orders()[0]["limitPrice"];
        return now > price + 10 * tick && bothShow("order", now) && trading(0)["drag"].is_string();
    }));
    const std::string said = trading(0)["drag"];
    EXPECT_EQ(said.rfind("BUY 1 ", 0), 0u) << said;
    EXPECT_NE(said.find(" · −"), std::string::npos) << said << ": below the last price";
    EXPECT_EQ(trading(1)["drag"], nullptr) << "the other pane only follows";
    act(" windowfocus --sync $W key Escape sleep 0.1" + at(0, 300, 500) + " mouseup 1");
    EXPECT_TRUE(until([&](const json&) { return bothShow("order", price) && trading(0)["drag"].is_null(); }));

    act(at(1, line(1, "order")["tag"]) + " mousedown 1" + at(1, 400, 590) + at(1, 400, 570) + " mouseup 1");
    EXPECT_TRUE(until([&](const json&) {
        return orders()[0]["limitPrice"] > price && bothShow("order", orders()[0]["limitPrice"]);
    })) << "by its tag on the axis";

    act(at(1, line(1, "order")["close"]) + " click 1");
    EXPECT_TRUE(until([&](const json&) {
        return orders().empty() && trading(0)["lines"].empty() && trading(1)["lines"].empty();
    })) << orders();
}

TEST_F(WindowTrading, APositionTellsItsResultAndAChartWithoutSimulatorShowsNothing) {
    program_->ask("order NQ buy market 2");
    ASSERT_TRUE(until([&](const json&) { return trading(0)["pill"].is_object() && trading(1)["pill"].is_object(); }));
    EXPECT_EQ(line(1, "position")["text"], "LONG 2");
    EXPECT_EQ(line(1, "position")["id"], "entry");
    EXPECT_TRUE(line(1, "position")["tag"].is_array());
    const std::string before = trading(0)["pill"]["text"];
    EXPECT_EQ(program_->ask("clock resume"), "[cmd] ok clock resumed");
    EXPECT_TRUE(until([&](const json&) { return trading(0)["pill"]["text"] != before; })) << before;

    EXPECT_EQ(program_->ask("@2 set simEnabled false"), "[cmd] ok set simEnabled");
    EXPECT_TRUE(until([&](const json&) { return trading(1).is_null() && trading(0).is_object(); }));
    act(at(1, 200, 600) + " click 3 sleep 0.4" + at(1, 230, 620) + " click 1 sleep 0.2");
    EXPECT_TRUE(look()["sim"]["orders"].empty()) << "no menu";

    act(at(0, line(0, "position")["close"]) + " click 1");
    EXPECT_TRUE(until([&](const json&) { return state_["sim"]["positions"]["NQ"]["qty"] == 0; }));
}

}  // namespace
}  // namespace vmr
