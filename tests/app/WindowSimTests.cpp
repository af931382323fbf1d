// The simulator's panel in the running program, driven by a real pointer and real keys; what its account did.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>

#include "tests/app/DrivenWindow.h"

namespace vmr {
namespace {

using nlohmann::json;

constexpr double toolbarHeight = 44, titleHeight = 34, tick = 0.25;
// In the panel, below its title, while it is not scrolled and nothing is said over the ticket.
constexpr double ticketTop = 64, marketRow = ticketTop + 30 + 8 + 62 + 8 + 17, limitRow = marketRow + 42, stopRow = limitRow + 60;
constexpr double cardsTop = stopRow + 43, cardHead = 36;

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
    bool holds(std::int64_t qty) {
        return until([&](const json&) { return position()["qty"] == qty; });
    }
    bool works(std::size_t count) {
        return until([&](const json&) { return account()["orders"].size() == count; });
    }
    static std::string tabs(int count) { return count > 0 ? " key --repeat " + std::to_string(count) + " Tab" : ""; }
    static constexpr double buy = 196, sell = 300, buyMarket = 90, sellMarket = 270, field = 60;
};

TEST_F(WindowSim, ARoundTripIsMadeByKeysAlone) {
    act(" key ctrl+k sleep 0.5 type 'simulator panel'");
    act(" sleep 0.3 key Return sleep 0.3");
    ASSERT_TRUE(until([&](const json&) { return pane()["panels"]["open"]["sim"] == true; }));

    act(tabs(2) + " key Up Up Down");                // the quantity, behind the title and the button that closes
    act(tabs(2) + " key Down Down" + tabs(4) + " key space");  // the stop's distance, then BUY MKT
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
    act(toTool("simPanel") + " click 1");
    ASSERT_TRUE(until([&](const json&) { return pane()["panels"]["frames"].contains("sim"); }));
    const json before = pane()["viewport"];

    click(buyMarket, marketRow);
    ASSERT_TRUE(holds(1));
    click(sellMarket, marketRow);  // reverses it
    ASSERT_TRUE(holds(-1));
    EXPECT_EQ(order("SL")["side"], "buy");

    click(field, limitRow);
    act(" type '5000,25'");
    click(buy, limitRow);
    ASSERT_TRUE(works(3));
    EXPECT_EQ(order("")["limitPrice"], 5000.25);
    click(sell, limitRow);  // far through the market: it asks
    act(" sleep 0.5");
    EXPECT_EQ(look()["sim"]["orders"].size(), 3u);
    click(sell, limitRow);
    ASSERT_TRUE(holds(-2));

    click(field, limitRow);
    act(" key ctrl+a type 'x1'");
    click(buy, limitRow);
    click(buy, stopRow);  // no price
    const std::size_t working = account()["orders"].size();

    // CANCEL ALL, below the position's card; with its orders gone the position offers a stop again
    act(in(180, cardsTop) + " click --repeat 3 5 sleep 0.3");
    look();
    EXPECT_EQ(account()["orders"].size(), working);
    EXPECT_EQ(pane()["viewport"]["count"], before["count"]) << "the wheel is the panel's";

    program_->ask("clock set 2026-06-10T16:59:58");
    program_->ask("order NQ buy market 1");
    act(in(180, 20) + " click --repeat 20 4");
    const json account0 = look()["sim"];
    act(" sleep 4");
    for (const double y : {marketRow, limitRow, stopRow}) click(buyMarket, y);
    EXPECT_EQ(look()["sim"]["fills"], account0["fills"]) << "the ticket is gone";
}

}  // namespace
}  // namespace vmr
