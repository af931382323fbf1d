// The simulator's panel in the running program, driven by a real pointer and real keys; what its account did.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "tests/app/DrivenWindow.h"
#include "tests/sim/PlainLedger.h"

namespace vmr {
namespace {

using nlohmann::json;

constexpr double toolbarHeight = 44, titleHeight = 34, tick = 0.25;
// Places in the panel as it opens, from its left edge and from below its title; nothing is said over the ticket.
constexpr double ticketTop = 64, marketRow = ticketTop + 131, limitRow = marketRow + 42, stopRow = limitRow + 60;
constexpr double positionsTop = stopRow + 45, positionButtons = positionsTop + 80;
constexpr double ordersTop = positionsTop + 122, firstOrder = ordersTop + 51;
constexpr double buyMarket = 90, sellMarket = 270, priceField = 60, buy = 196, sell = 300;
constexpr double firstButton = 45, secondButton = 115, cancelAll = 300, cancelFirst = 324;

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
    /// A place in the panel, from its left edge and from below its title.
    std::string in(double x, double y) {
        const json frame = look()["panes"][0]["panels"]["frames"]["sim"];
        EXPECT_TRUE(frame.is_array());
        return to(frame[0].get<double>() + x, toolbarHeight + frame[1].get<double>() + titleHeight + y);
    }
    void click(double x, double y) { act(in(x, y) + " click 1"); }
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

TEST_F(WindowSim, ThePointerTradesAndTheMarketClosesUnderIt) {
    act(toTool("simPanel") + " click 1 sleep 0.3 key --repeat 40 alt+shift+Down");
    ASSERT_TRUE(until([&](const json&) { return pane()["panels"]["frames"].value("sim", json{0, 0, 0, 0})[3] > 600; }));

    click(buyMarket, marketRow);
    ASSERT_TRUE(holds(1));
    click(sellMarket, marketRow);
    ASSERT_TRUE(holds(-1)) << "reversed";
    EXPECT_EQ(order("SL")["side"], "buy");

    click(priceField, limitRow);
    act(" type '5000,25'");
    click(buy, limitRow);
    ASSERT_TRUE(works(3));
    EXPECT_EQ(order("")["limitPrice"], 5000.25);
    const auto through = std::lround(account()["lasts"]["NQ"].get<double>() * 1.008);
    click(priceField, limitRow);
    act(" key ctrl+a type " + std::to_string(through));
    click(buy, limitRow);
    ASSERT_TRUE(until([&](const json&) { return panel()["question"].is_string(); })) << "far through the market";
    EXPECT_EQ(position()["qty"], -1);
    act(" sleep 0.5");  // so that it is no double click
    click(buy, limitRow);
    ASSERT_TRUE(holds(0));
    click(priceField, limitRow);
    act(" key ctrl+a type 'x1'");
    click(sell, limitRow);
    EXPECT_TRUE(until([&](const json&) { return panel()["ticket"]["limit"]["wrong"] == true; }));
    EXPECT_EQ(account()["orders"].size(), 1u);

    click(sellMarket, marketRow);
    ASSERT_TRUE(works(3));
    EXPECT_EQ(panel()["rows"]["positions"][0]["addSl"], nullptr);
    click(cancelAll, ordersTop + 18);
    ASSERT_TRUE(works(0));
    EXPECT_EQ(panel()["rows"]["positions"][0]["addSl"], "+ SL (40t)");
    click(secondButton, positionButtons);
    ASSERT_TRUE(works(1));
    EXPECT_EQ(order("SL")["stopPrice"], position()["avg"].get<double>() + 40 * tick);
    click(cancelFirst, firstOrder);
    ASSERT_TRUE(works(0));

    program_->ask("clock set 2026-06-10T16:59:58");
    ASSERT_TRUE(until([&](const json&) { return panel()["marketClosed"] == true; }));
    act(" sleep 1");
    const json fills = look()["sim"]["fills"];
    click(buyMarket, marketRow);
    click(firstButton, positionButtons - (positionsTop - ticketTop - 82));  // the cards have moved up
    EXPECT_TRUE(until([&](const json&) { return panel()["notice"] == "Market closed — position kept"; }));
    EXPECT_EQ(account()["fills"], fills) << "the ticket is gone";
}

// What hands do at random, by pointer and keys, and book-keeping that only hears of the fills.
class RandomWindowHands : public WindowSim {
 protected:
    int pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    double cardsTop() { return panel()["marketClosed"] == true ? ticketTop + 82 : positionsTop; }
    double ordersNow() { return cardsTop() + (position()["qty"] == 0 ? 76 : ordersTop - positionsTop); }

    void handle() {
        look();
        const double row = pick(2) == 0 ? limitRow : stopRow, last = account()["lasts"].value("NQ", 24000.0);
        const std::string price = std::to_string(std::lround(last) + pick(81) - 40);
        switch (const int kind = pick(10)) {
            case 0:
            case 1:
                return click(pick(2) == 0 ? buyMarket : sellMarket, marketRow);
            case 2:
            case 3:
            case 4:  // an order at a price, sent by a click or by the keys
                click(priceField, row);
                act(" key ctrl+a type " + price);
                if (kind == 4) return act(tabs(1 + pick(2)) + " key Return");
                return click(pick(2) == 0 ? buy : sell, row);
            case 5:
                click(92, ticketTop + 15);
                return act(" key ctrl+a type " + std::to_string(1 + pick(3)));
            case 6:
                return click(pick(2) == 0 ? 45 : 140, ticketTop + 53);  // the stop's distance
            case 7:
                return click(firstButton + 72 * pick(3), cardsTop() + positionButtons - positionsTop);
            case 8:
                return click(pick(3) == 0 ? cancelAll : cancelFirst, ordersNow() + 18);
            default:
                return click(cancelFirst, ordersNow() + 51 + 30 * pick(3));
        }
    }
    void compare() {
        look();
        const json& fills = account()["fills"];
        const auto seen = std::ranges::find(fills, newest_, [](const json& fill) { return fill["id"]; });
        for (auto at = seen; at != fills.begin();) {
            --at;
            sim::Fill fill;
            fill.sym = (*at)["sym"];
            fill.side = (*at)["side"] == "buy" ? sim::Side::buy : sim::Side::sell;
            fill.qty = (*at)["qty"];
            fill.price = (*at)["price"];
            fill.commission = (*at)["commission"];
            ledger_.apply(fill, 20);
            ++counts_["fills"];
        }
        if (!fills.empty()) newest_ = fills[0]["id"];
        const auto& plain = ledger_.roots["NQ"];
        const auto size = static_cast<std::int64_t>(plain.contracts.size());
        EXPECT_EQ(position()["qty"], plain.side == sim::Side::buy ? size : -size);
        EXPECT_NEAR(account()["balance"], ledger_.cash, 1e-6);
        EXPECT_EQ(account()["trades"].size(), ledger_.finished.size());
        EXPECT_EQ(panel()["rows"]["orders"].size(), account()["orders"].size());
        const json& rows = panel()["rows"]["positions"];
        ASSERT_EQ(rows.size(), size == 0 ? 0u : 1u);
        if (size == 0) return;
        const std::string held = (plain.side == sim::Side::buy ? "LONG " : "SHORT ") + std::to_string(size) + " NQ ";
        EXPECT_TRUE(rows[0]["text"].get<std::string>().starts_with(held)) << rows;
    }
    void handleAndCompare(int times) {
        for (int i = 0; i < times && !HasFailure(); ++i) {
            SCOPED_TRACE(i);
            const std::size_t orders = account()["orders"].size(), fills = account()["fills"].size();
            handle();
            compare();
            counts_["acted"] += orders != account()["orders"].size() || fills != account()["fills"].size();
        }
    }

    std::mt19937 random_{5};
    test::Counts counts_;
    test::PlainLedger ledger_{counts_};
    json newest_;
};

TEST_F(RandomWindowHands, AndAPlainLedgerAgreeWhileTheMarketClosesAndOpens) {
    act(toTool("simPanel") + " click 1 sleep 0.3 key --repeat 40 alt+shift+Down");
    ASSERT_TRUE(until([&](const json&) { return panel()["ticket"].is_object(); }));
    handleAndCompare(30);
    program_->ask("clock set 2026-06-10T16:59:59");
    ASSERT_TRUE(until([&](const json&) { return panel()["marketClosed"] == true; }));
    act(" sleep 1");
    compare();
    const std::size_t fills = counts_["fills"];
    handleAndCompare(8);
    EXPECT_EQ(counts_["fills"], fills) << "the market is closed";
    program_->ask("clock set 2026-06-10T18:00:01");
    ASSERT_TRUE(until([&](const json&) { return panel()["marketClosed"] == false && panel()["warning"] == ""; }));
    act(" sleep 1");
    handleAndCompare(22);
    EXPECT_GE(counts_["fills"], 12u);
    EXPECT_GE(counts_["acted"], 25u);
    EXPECT_GE(counts_["reversals"] + counts_["partial closes"], 2u);
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
