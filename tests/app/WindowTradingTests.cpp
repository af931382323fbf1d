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
    std::string held_;  // where the hand goes next
    const json& trading(std::size_t pane) { return state_["panes"][pane]["trading"]; }
    // The line of that kind whose text begins so; null where there is none.
    json line(std::size_t pane, const char* kind, const char* text = "") {
        if (!trading(pane).is_object()) return {};
        for (const json& one : trading(pane)["lines"])
            if (one["kind"] == kind && one["text"].get<std::string>().starts_with(text)) return one;
        return {};
    }
    bool bothShow(const char* kind, const json& price, const char* text = "") {
        const json one = line(0, kind, text), other = line(1, kind, text);
        return one.is_object() && other.is_object() && one["price"] == price && other["price"] == price &&
               one["id"] == other["id"];
    }
    const json& orders() { return state_["sim"]["orders"]; }
    // Takes hold of a line by its badge or its tag and drags it down by so much.
    void take(std::size_t pane, const char* part, double by, const char* kind, const char* text = "") {
        ASSERT_TRUE(until([&](const json&) {
            const json one = line(pane, kind, text);
            return one.is_object() && one[part].is_array();
        })) << kind
            << " " << text;
        const json box = line(pane, kind, text)[part];
        const double x = box[0].get<double>() + 5, y = box[1].get<double>() + box[3].get<double>() / 2;
        act(at(pane, x, y) + " mousedown 1" + at(pane, x, y + by / 2) + at(pane, x, y + by));
        held_ = at(pane, x, y + by + 40);
    }
    bool drags(std::size_t pane) {
        return until([&](const json&) { return trading(pane).is_object() && trading(pane)["drag"].is_string(); });
    }
    // The drag is over, and what the pointer still does until it lets go changes no order.
    void expectLost(std::size_t pane) {
        ASSERT_TRUE(until([&](const json&) { return trading(pane).is_object() && trading(pane)["drag"].is_null(); }));
        const json before = orders();
        act(held_ + " mouseup 1 sleep 0.2");
        EXPECT_EQ(look()["sim"]["orders"], before);
    }
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

// A planned leg, then the stop and the target that come of it: by the badge and by the tag, in either pane.
TEST_F(WindowTrading, PlannedLegsAndTheStopAndTheTargetAreDragged) {
    const double last = look()["sim"]["lasts"]["NQ"];
    program_->ask("order NQ buy limit 1 limit=" + std::to_string(last - 10) + " sl=40 tp=60");
    const auto planned = [&](const char* leg) { return orders()[0]["bracket"][leg].get<int>(); };
    take(1, "badge", 20, "leg", "SL");
    EXPECT_TRUE(until([&](const json&) { return planned("slTicks") > 40; })) << orders();
    act(" mouseup 1");
    take(0, "tag", 10, "leg", "TP");
    EXPECT_TRUE(until([&](const json&) { return planned("tpTicks") < 60; })) << orders();
    act(" windowfocus --sync $W key Escape mouseup 1");
    EXPECT_TRUE(until([&](const json&) { return planned("tpTicks") == 60; })) << "taken back";
    const json leg = line(0, "leg", "SL")["price"];
    EXPECT_TRUE(bothShow("leg", leg, "SL"));
    EXPECT_EQ(leg, orders()[0]["limitPrice"].get<double>() - planned("slTicks") * tick);

    program_->ask("order NQ buy market 1 sl=40 tp=60");
    ASSERT_TRUE(until([&](const json&) { return orders().size() == 3; }));
    for (const bool target : {false, true}) {
        SCOPED_TRACE(target);
        const char *text = target ? "TP" : "SL", *price = target ? "limitPrice" : "stopPrice";
        const auto now = [&] { return orders()[target ? 2 : 1][price].get<double>(); };
        const double before = now();
        take(target, "tag", 15, "order", text);
        EXPECT_TRUE(until([&](const json&) { return now() < before && bothShow("order", now(), text); })) << orders();
        act(" windowfocus --sync $W key Escape mouseup 1");
        EXPECT_TRUE(until([&](const json&) { return now() == before && bothShow("order", before, text); }));
        take(1 - target, "badge", 15, "order", text);
        act(" mouseup 1");
        EXPECT_TRUE(until([&](const json&) { return now() < before && bothShow("order", now(), text); })) << orders();
    }
}

TEST_F(WindowTrading, ADragEndsWithItsChartItsOrderAndItsContract) {
    const auto enter = [&] {
        const double last = look()["sim"]["lasts"]["NQ"];
        program_->ask("order NQ buy limit 1 limit=" + std::to_string(last - 10));
    };
    enter();
    take(0, "badge", 10, "order", "BUY");
    ASSERT_TRUE(drags(0));
    program_->ask("symbol ES");  // in the pane that has the hand
    expectLost(0);
    program_->ask("symbol NQ");

    take(0, "badge", -300, "order", "BUY");  // through the market
    ASSERT_TRUE(drags(0));
    program_->ask("clock resume");
    ASSERT_TRUE(until([](const json& state) { return state["sim"]["positions"].contains("NQ"); })) << orders();
    program_->ask("clock pause");
    expectLost(0);

    enter();
    take(1, "tag", 8, "order", "BUY");
    ASSERT_TRUE(drags(1));
    program_->ask("relay contract NQ NQU6");
    program_->ask("clock resume");
    ASSERT_TRUE(until([](const json& state) { return state["sim"]["contracts"]["NQ"] == "NQU6"; }));
    program_->ask("clock pause");
    expectLost(1);
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
