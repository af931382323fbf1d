// The simulator's panel in the running program, driven by real keys; what its account did.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/app/DrivenWindow.h"

namespace vmr {
namespace {

using nlohmann::json;

constexpr double tick = 0.25;

class WindowSim : public DrivenWindow {
 protected:
    void SetUp() override {
        DrivenWindow::SetUp();
        if (IsSkipped()) return;
        startMarket();
        act(" windowfocus --sync $W" + to(900, 400));
        program_->ask("set simEnabled true");
        act(" sleep 0.3");  // the icon comes, and the row makes room for it
    }
    const json& account() { return state_["sim"]; }
    json position() { return account()["positions"].value("NQ", json{{"qty", 0}}); }
    json order(const std::string& tag) {
        for (const json& one : account()["orders"])
            if (one["tag"] == tag) return one;
        return {};
    }
    const json& panel() { return pane()["simPanel"]; }
    bool holds(std::int64_t qty) {
        return until([&](const json&) { return position()["qty"] == qty; });
    }
    bool works(std::size_t count) {
        return until([&](const json&) { return account()["orders"].size() == count; });
    }
    static std::string tabs(int count) { return count > 0 ? " key --repeat " + std::to_string(count) + " Tab" : ""; }
};

TEST_F(WindowSim, ARoundTripIsMadeByKeysAlone) {
    act(" key ctrl+k sleep 0.5 type 'simulator panel'");
    act(" sleep 0.3 key Return sleep 0.3");
    ASSERT_TRUE(until([&](const json&) { return pane()["panels"]["open"]["sim"] == true; }));

    act(tabs(2) + " key Up Up Down");  // the quantity, behind the title and the button that closes
    act(tabs(2) + " key Down Down" + tabs(4) + " keydown space sleep 1 keyup space");  // SL, then BUY MKT, held down
    ASSERT_TRUE(holds(2)) << account()["orders"];
    const double average = position()["avg"];
    EXPECT_DOUBLE_EQ(order("SL")["stopPrice"], average - 38 * tick);
    EXPECT_DOUBLE_EQ(order("TP")["limitPrice"], average + 80 * tick);

    act(tabs(2) + " type '5000,25'");
    act(" key Up" + tabs(1) + " key Return");
    ASSERT_TRUE(works(3));
    EXPECT_EQ(order("")["limitPrice"], 5000.5) << "as it was read, and a tick above";
    EXPECT_EQ(order("")["qty"], 2);
    EXPECT_EQ(order("")["bracket"]["slTicks"], 38);

    act(tabs(2) + " type 'abc'");
    act(tabs(1) + " key Return" + tabs(2) + " key space");  // BUY STP does nothing; FLAT
    ASSERT_TRUE(holds(0));
    ASSERT_TRUE(works(1)) << account()["orders"];
    const double exit = account()["fills"][0]["price"], commission = account()["commission"];
    EXPECT_NEAR(account()["balance"], 50000 + 2 * (exit - average) / tick * 5 - 4 * commission, 1e-6);

    act(" key --repeat 2 shift+Tab sleep 0.1 key Escape");  // in no order of Escape: it stays
    EXPECT_EQ(look()["panes"][0]["panels"]["open"]["sim"], true);
}

TEST_F(WindowSim, TradesAreListedSortedExportedAndLost) {
    for (int i = 0; i < 17; ++i)
        for (const char* line : {"order NQ buy market 1", "flatten NQ"}) program_->ask(line);
    program_->ask("panel sim open");
    act(" windowfocus --sync $W sleep 0.3" + tabs(16) + " key space" + tabs(1) + " key space sleep 0.3");
    ASSERT_TRUE(until([&](const json&) { return pane()["panels"]["frames"].contains("simList"); }));
    EXPECT_EQ(panel()["perfToday"], true);
    EXPECT_EQ(panel()["rows"]["history"].size(), 15u);
    EXPECT_TRUE(panel()["headings"][3].get<std::string>().starts_with("HISTORY (17)")) << panel()["headings"];

    act(tabs(11) + " key Return key Return key --repeat 7 shift+Tab");  // by result, from the worst; Export
    act(" key Return sleep 0.3 key ctrl+a type '" + (program_->home / "out.csv").string() + "'");
    act(" key Return sleep 0.3");
    ASSERT_TRUE(until([&](const json&) { return std::filesystem::exists(program_->home / "out.csv"); }));
    std::ifstream file(program_->home / "out.csv");
    std::vector<double> results;
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("NQ,")) continue;
        std::istringstream cells(line);
        std::string cell;
        for (int i = 0; i < 8; ++i) std::getline(cells, cell, ',');
        results.push_back(std::stod(cell));
    }
    EXPECT_EQ(results.size(), 17u);
    EXPECT_TRUE(std::ranges::is_sorted(results)) << testing::PrintToString(results);

    act(" key Escape sleep 0.2" + tabs(2) + " key Return sleep 0.2" + tabs(1) + " key Return");
    ASSERT_TRUE(until([&](const json&) { return account()["trades"].empty(); })) << "started anew";
    EXPECT_EQ(account()["balance"], 50000);
    EXPECT_FALSE(pane()["panels"]["frames"].contains("simList"));
    EXPECT_TRUE(pane()["panels"]["frames"].contains("sim"));
}

}  // namespace
}  // namespace vmr
