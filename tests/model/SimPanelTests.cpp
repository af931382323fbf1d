// What the simulator's panel shows and does, without a view.
#include <gmock/gmock.h>

#include <random>

#include "base/Preferences.h"
#include "model/SimDesk.h"
#include "model/SimPanelFacts.h"
#include "tests/sim/PlainLedger.h"
#include "tests/sim/SimScript.h"

namespace vmr::test {
namespace {

using sim::OrderType;
using sim::Side;
using testing::ElementsAre;

struct Panel {
    TestTime time;  // a Wednesday, 10:00 in New York
    TestQueue main{time};
    SessionTime session;
    SimEngine engine{{.clock = time, .session = session, .ids = UuidSource(1), .localDay = [](double at) {
                          return static_cast<std::int64_t>(at / 86400);
                      }}};
    SimScript script{time, engine};
    MemoryPreferences preferences;
    PaneWork work{main};
    std::string root = "NQ";
    SimDesk desk{engine, preferences, work, [this]() -> const std::string& { return root; }};

    explicit Panel(const std::string& before = "open 1 NQM6; quote 24452 24453") { script.run(before); }
    void type(OrderType type, const std::string& text) {
        sim::SimTicket ticket = desk.ticket();
        *ticket.fieldOf(type) = text;
        desk.setTicket(ticket);
    }
    std::string question() const { return desk.question() ? desk.question()->text : ""; }
    std::array<std::uint64_t, 7> revisions() const {
        std::array<std::uint64_t, 7> out{};
        for (std::size_t i = 0; i < out.size(); ++i) out[i] = desk.revision(static_cast<SimDesk::Part>(i));
        return out;
    }
};

TEST(SimDesk, AnUnusualOrderTakesTwoPressesOfOneButton) {
    constexpr const char* asked = "Buy limit 24,600 is 0.6 % through the market: press again";
    Panel at;
    at.type(OrderType::limit, "24600");
    const auto press = [&](Side side) { return at.desk.press(side, OrderType::limit).value_or("entered"); };
    EXPECT_EQ(press(Side::buy), asked);
    EXPECT_EQ(at.question(), asked);
    at.time.advance(0.39);
    EXPECT_EQ(press(Side::buy), asked) << "a double click, which nobody can have meant as an answer";
    EXPECT_TRUE(at.engine.orders().empty() && at.engine.fills().empty());
    at.time.advance(2.7);
    EXPECT_EQ(at.question(), "");
    EXPECT_EQ(press(Side::buy), asked) << "too late";
    EXPECT_EQ(press(Side::sell), "entered") << "another button";
    EXPECT_EQ(press(Side::buy), asked);
    at.type(OrderType::limit, "24700");
    EXPECT_EQ(press(Side::buy), "Buy limit 24,700 is 1.0 % through the market: press again") << "another order";
    at.time.advance(2.9);
    EXPECT_EQ(press(Side::buy), "entered");
    EXPECT_EQ(at.question(), "");
    SimDesk::setConfirmsUnusual(at.preferences, false);
    EXPECT_EQ(press(Side::buy), "entered");
    SimDesk::setConfirmsUnusual(at.preferences, true);
    at.script.run("closed");
    EXPECT_EQ(press(Side::buy), "the market is closed") << "what is refused is not asked";
    EXPECT_EQ(at.desk.notice(), "the market is closed");
    at.time.advance(SimDesk::noticeFor + 0.1);
    EXPECT_EQ(at.desk.notice(), std::nullopt);
}

TEST(SimDesk, APriceFieldShowsWhatIsReadAndIsMarked) {
    Panel at;
    const auto field = [&] {
        const auto shown = at.desk.field(OrderType::stop);
        return shown.read + (shown.wrong ? "!" : "");
    };
    EXPECT_EQ(field(), "");
    at.desk.press(Side::buy, OrderType::stop);
    EXPECT_EQ(field(), "!") << "pressed without a price";
    EXPECT_FALSE(at.desk.field(OrderType::limit).wrong);
    for (const auto& [text, shown] : {std::pair("5000,25", "5,000.25"), {"", ""}, {"soon", "!"}, {"-1", "!"}}) {
        at.type(OrderType::stop, text);
        EXPECT_EQ(field(), shown) << text;
    }
    at.desk.press(Side::sell, OrderType::stop);
    EXPECT_TRUE(at.engine.orders().empty());
    at.type(OrderType::stop, "24500");
    at.root = "ES";
    at.desk.look();
    EXPECT_EQ(at.desk.ticket().stopText, "") << "a price of another root";
}

TEST(SimDesk, TheChartsMenuFollowsTheTicket) {
    Panel at;
    const auto menu = [&] {
        const auto& legs = at.engine.ticketBracket;
        const auto ticks = [](const auto& leg) { return leg ? std::to_string(*leg) : "-"; };
        return std::to_string(at.engine.ticketQty) +
               (legs ? " " + ticks(legs->slTicks) + " " + ticks(legs->tpTicks) : "");
    };
    const auto turnTo = [&](const char* root) {
        at.root = root;
        at.desk.look();
        return menu();
    };
    at.desk.setOpen(true);
    at.desk.setTicket({.qty = 9, .slTicks = 10, .tpTicks = 0, .useTicks = false});
    EXPECT_EQ(menu(), "9 40 -");
    EXPECT_EQ(turnTo("GC"), "9 100 -") << "as many points";
    EXPECT_EQ(turnTo(""), "9 100 -");
    EXPECT_EQ(turnTo("NQ"), "9 40 -");
    at.desk.setTicket({.qty = 9, .bracketOn = false});
    EXPECT_EQ(menu(), "9");
    at.desk.setOpen(false);
    EXPECT_EQ(turnTo("ES"), "9") << "another pane's ticket may be the one";
    at.desk.setOpen(true);
    EXPECT_EQ(at.desk.ticket(), sim::SimTicket());
    EXPECT_EQ(menu(), "1 40 80") << "what the panel shows now";
}

TEST(SimDesk, TheHeadingSaysWhyAPriceIsDoubtful) {
    Panel at("root ES; quote 9 10; root NQ");
    const auto warning = [&](const std::string& script) {
        at.script.run(script);
        return at.desk.warning();
    };
    EXPECT_EQ(warning(""), "NQ is not watched · no price of NQ yet");
    EXPECT_EQ(warning("open 1 NQM6"), "No price of NQ yet");
    EXPECT_EQ(warning("trade 100; wait 15"), "");
    EXPECT_EQ(warning("wait 197.5"), "Price is 212 s old");
    EXPECT_EQ(warning("offline 1"), "Feed is down · price is 212 s old");
    EXPECT_EQ(warning("leave 1"), "NQ is not watched · price is 212 s old");
    const auto before = at.desk.revision(SimDesk::Part::ticket);
    EXPECT_EQ(warning("closed"), "");
    at.desk.look();
    EXPECT_TRUE(at.desk.marketClosed());
    EXPECT_GT(at.desk.revision(SimDesk::Part::ticket), before);
    at.root = "";
    EXPECT_NE(at.desk.emptyText(), "");
    EXPECT_TRUE(at.desk.press(Side::buy, OrderType::market));
}

// In the order of `Part`: ticket, account, positions, orders, performance, history, fills.
TEST(SimDesk, OnlyWhatMayHaveChangedMovesOn) {
    for (const auto& [script, moved] : {
             std::tuple("trade 24452.5; quote 24452 24453", "0000000"),
             {"buy 1 limit=24000", "0011000"},
             {"buy 1", "0110001"},
             {"wait 1", "0000000"},
             {"sell 2 limit=24452", "0110111"},
             {"reset 7", "0111111"},
         }) {
        Panel at("open 1 NQM6; quote 24452 24453; trade 24452; sell 2 stop=20000; buy 1");
        at.desk.look();
        const auto before = at.revisions();
        at.script.run(script);
        at.desk.look();
        std::string seen;
        for (std::size_t i = 0; i < before.size(); ++i) seen += at.revisions()[i] == before[i] ? '0' : '1';
        EXPECT_EQ(seen, moved) << script;
    }
}

TEST(SimPanelFacts, RowsAndHeadings) {
    Panel at(
        "root ES; open 2 ESM6; quote 50 50; trade 50; root NQ; open 1 NQM6; quote 99.75 100; trade 100; buy 2 sl=4;"
        "root ES; sell 1; buy 3 stop=55 limit=56; root GC; trade 4000; buy 1; sell 1; root NQ; open 1 NQU6");
    const auto rows = simPositionRows(at.engine, at.desk.ticket());
    std::string told = simPositionsHeading(at.engine) + "; " + simOrdersHeading(at.engine);
    for (const auto& row : rows)
        told += "; " + row.size + " " + row.name() + " " + row.average + " " + row.addSl.value_or("-") + " " +
                row.addTp.value_or("-");
    for (const auto& row : simOrderRows(at.engine))
        told += "; " + row.side + " " + row.qty + " " + row.root + " " + row.type + " " + row.price + " " + row.tag;
    EXPECT_EQ(told,
              "POSITIONS (2); WORKING (2); SHORT 1 ES 50.00 + SL (40t) + TP (80t); LONG 2 NQ · NQM6 100.00 - + TP "
              "(80t); SELL 2 NQ stop 99.00 SL; BUY 3 ES stopLimit 56.00 ");
    at.script.run("trade 100.62");  // 12.4 for each
    EXPECT_EQ(simPnl(at.engine, "NQ"), (SimPnl{"+25.00", true}));
    at.script.run("root ES; trade 51");
    EXPECT_EQ(simPnl(at.engine, "ES"), (SimPnl{"-50.00", false}));
    const auto account = simAccountFacts(at.engine);
    EXPECT_NEAR(account.equity - account.balance, 24.8 - 50, 1e-9);
}

TEST(SimPanelFacts, HistoryAndFillsAreCutAndCounted) {
    Panel at("quote 100 100");
    for (int i = 0; i < 40; ++i)
        at.script.run(i % 4 == 0 ? "quote 100 100; buy 1; quote 102 102; sell 1" : "buy 1; sell 1");
    EXPECT_EQ(simHistoryHeading(at.engine), "HISTORY (40) · 25% win");
    const auto rows = simHistoryRows(at.engine);
    ASSERT_EQ(rows.size(), 15u);
    EXPECT_EQ(rows[3].prices + " " + rows[3].result + " " + rows[2].result, "100.00 → 102.00 +35.00 -5.00");
    EXPECT_EQ(rows[3].id, at.engine.trades()[3].id);
    EXPECT_EQ(simFillRows(at.engine).size(), 12u);

    // averages between two ticks
    at.script.run("quote 100 100; buy 1; quote 100.25 100.25; buy 2");
    EXPECT_EQ(simPositionRows(at.engine, at.desk.ticket()).at(0).average, "100.17");
    at.script.run("sell 1; sell 2");
    for (const auto& [tick, prices] : {std::pair(0.25, "100.17 → 100.25"),
                                       {1.0 / 3, "100.17 → 100.25"},
                                       {0.005, "100.167 → 100.25"},
                                       {1.0 / 32, "100.16667 → 100.25"}}) {
        at.engine.updateSpecs({{"NQ", {tick, 5}}});
        EXPECT_EQ(simHistoryRows(at.engine).at(0).prices, prices);
    }
}

TEST(SimPanelFacts, PerformanceOfAllAndOfToday) {
    // results after fees, by day: +35, -25 | -5 | +15
    Panel at(
        "quote 100 100; buy 1; quote 102 102; sell 1; buy 1; quote 101 101; sell 1; wait 86400; buy 1; sell 1; "
        "wait 86400; buy 1; quote 102 102; sell 1; buy 1; quote 104 104");
    const SimPerformance all = simPerformance(at.engine, false), today = simPerformance(at.engine, true);
    std::string metrics;
    for (const SimMetric& metric : all.metrics) metrics += metric.caption + " " + metric.value + "; ";
    EXPECT_EQ(metrics,
              "Trades 4; Win rate 50%; Profit factor 1.67; Net P&L 20.00; Expectancy 5.00; Payoff 1.67; Avg win 25.00; "
              "Avg loss -15.00; Max DD 30.00; Best 35.00; Worst -25.00; Avg time 0s; ");
    EXPECT_EQ(all.exits, "Exits: SL 0 · TP 0 · Manual 4 · Fees 20.00");
    std::vector<double> results, drawdowns, balances;
    for (const SimCurvePoint& point : all.curve) {
        results.push_back(point.result);
        drawdowns.push_back(point.drawdown);
        balances.push_back(point.balance);
    }
    EXPECT_THAT(results, ElementsAre(35, 10, 5, 20));
    EXPECT_THAT(drawdowns, ElementsAre(0, 25, 30, 15));
    EXPECT_THAT(balances, ElementsAre(50035, 50010, 50005, 50020)) << "what is open is none of it";
    EXPECT_EQ(today.metrics[0].value, "1");
    ASSERT_EQ(today.curve.size(), 1u);
    EXPECT_EQ(today.curve[0].balance, 50020);
    ASSERT_EQ(all.days.size(), 3u);
    EXPECT_EQ(today.days, all.days);
    EXPECT_EQ(all.days[0].text + " " + all.days[1].text + " " + all.days[2].text, "+15.00 -5.00 +10.00");
    EXPECT_EQ(all.days[2].name, "Jun 10");

    const SimCurvePlot plot = simCurvePlot(all.curve);
    ASSERT_EQ(plot.points.size(), 4u);
    EXPECT_EQ(plot.base, 1);
    EXPECT_EQ(plot.points[0], (SimCurvePlot::Point{0, 0, 0}));
    EXPECT_NEAR(plot.points[3].y, 15.0 / 35, 1e-12);
    EXPECT_NEAR(plot.points[3].peak, 0, 1e-12);
    EXPECT_EQ(simCurvePlot({{-1, 1, 9, 0}, {-1, 1, 9, 0}}).base, 0);
    EXPECT_TRUE(simCurvePlot({{0, 0, 9, 0}}).points.empty());
    EXPECT_EQ(simCurvePlot({{0, 0, 9, 0}, {0, 0, 9, 0}}).points[1].y, 0) << "a flat curve";
    EXPECT_EQ(simCurveSpot(all.curve, 0.6)->index, 2u);
    EXPECT_TRUE(simCurveSpot(all.curve, 7)->text.starts_with("Trade 4 · Jun 12 ")) << simCurveSpot(all.curve, 7)->text;
    EXPECT_TRUE(simCurveSpot(all.curve, 7)->text.ends_with(" · 50,020.00"));
}

TEST(SimPanelFacts, AResetTellsWhatIsLost) {
    Panel at("quote 100 100");
    EXPECT_EQ(simResetQuestion(at.engine, 25000), "Start again with 25,000.00? Nothing is lost.");
    at.script.run("buy 1; sell 1; buy 1 sl=4 tp=4");
    EXPECT_EQ(simResetQuestion(at.engine, 50000),
              "Start again with 50,000.00? Lost for good: 1 open position, 2 working orders, 1 trade, 3 fills.");
}

/// Presses the panel's controls at random, while the market moves, closes and opens.
class RandomHands {
 public:
    explicit RandomHands(std::uint64_t seed) : random_(seed) {}

    void act() {
        at_.time.setNow(pick(6) == 0 ? closedHours : openHours + counts_["actions"]++);
        center_ += pick(41) - 20;
        if (pick(3) != 0) at_.script.run("quote " + price(0) + " " + price(1) + "; trade " + price(pick(2)));
        const std::int64_t held = position();
        const std::size_t fills = at_.engine.fills().size(), orders = at_.engine.orders().size();
        const int kind = pick(10);
        const bool open = !at_.desk.marketClosed();
        if (kind < 3) {
            const Side side = pick(2) == 0 ? Side::buy : Side::sell;
            ticket();
            pressTwice(side, OrderType::market);
            const std::int64_t sign = side == Side::buy ? 1 : -1, qty = at_.desk.ticket().qty;
            EXPECT_EQ(position(), !open ? held : held * sign < 0 ? sign * qty : held + sign * qty);
        } else if (kind < 7) {
            const OrderType type = pick(2) == 0 ? OrderType::limit : OrderType::stop;
            ticket();
            at_.type(type, price(pick(400) - 200));
            pressTwice(pick(2) == 0 ? Side::buy : Side::sell, type);
            EXPECT_TRUE(open || (fills == at_.engine.fills().size() && orders == at_.engine.orders().size()));
        } else if (kind == 7) {
            EXPECT_EQ(at_.desk.protect("NQ", pick(2) == 0 ? "SL" : "TP").has_value(), held == 0);
        } else if (kind == 8) {
            at_.desk.flatten("NQ");
            EXPECT_EQ(position(), open ? 0 : held);
        } else if (orders > 0) {
            pick(4) == 0 ? at_.desk.cancelAll()
                         : static_cast<void>(at_.desk.cancel(at_.engine.orders()[random_() % orders].id));
        }
        compare();
    }
    Counts& counts() { return counts_; }

 private:
    static constexpr double openHours = 1781100000, closedHours = 1781366400;
    int pick(int n) { return static_cast<int>(random_() % static_cast<std::uint64_t>(n)); }
    std::string price(int ticks) const { return doubleText(24000 + (center_ + ticks) * 0.25); }
    std::int64_t position() const {
        const auto found = at_.engine.positions().find("NQ");
        return found == at_.engine.positions().end() ? 0 : found->second.qty;
    }
    void ticket() {
        sim::SimTicket ticket = at_.desk.ticket();
        ticket.qty = 1 + pick(12);
        ticket.bracketOn = pick(2) == 0;
        ticket.useTicks = pick(2) == 0;
        ticket.slTicks = pick(60);
        ticket.tpTicks = pick(60);
        at_.desk.setTicket(ticket);
    }
    void pressTwice(Side side, OrderType type) {
        at_.desk.press(side, type);
        if (!at_.desk.question()) return;
        ++counts_["asked"];
        at_.time.advance(SimDesk::readWithin + 0.1);
        at_.desk.press(side, type);
    }
    void compare() {
        const auto& fills = at_.engine.fills();
        for (auto fill = std::ranges::find(fills, newest_, &sim::Fill::id); fill != fills.begin();) {
            ledger_.apply(*--fill, 20);
            ++counts_["fills"];
        }
        if (!fills.empty()) newest_ = fills.front().id;
        const auto& plain = ledger_.roots["NQ"];
        const auto size = static_cast<std::int64_t>(plain.contracts.size());
        EXPECT_EQ(position(), plain.side == Side::buy ? size : -size);
        EXPECT_NEAR(at_.engine.balance(), ledger_.cash, 1e-6);
        EXPECT_EQ(at_.engine.trades().size(), ledger_.finished.size());
        const auto facts = simAccountFacts(at_.engine);
        double open = 0, closed = 0;
        for (const double cost : plain.contracts)
            open += (plain.side == Side::buy ? 1 : -1) * 20 * (at_.engine.last("NQ").value_or(cost) - cost);
        EXPECT_NEAR(facts.equity, ledger_.cash + open, 1e-5);
        for (const sim::Trade& trade : ledger_.finished) closed += trade.pnl - trade.fees;
        const auto curve = simPerformance(at_.engine, false).curve;
        EXPECT_NEAR(curve.empty() ? 0 : curve.back().result, closed, 1e-5);
        for (const SimPositionRow& row : simPositionRows(at_.engine, at_.desk.ticket()))
            EXPECT_EQ(row.size, (plain.side == Side::buy ? "LONG " : "SHORT ") + std::to_string(size));
    }

    std::mt19937_64 random_;
    Panel at_{"open 1 NQM6; quote 24000 24000.25; trade 24000"};
    Counts counts_;
    PlainLedger ledger_{counts_};
    Uuid newest_;
    int center_ = 0;
};

TEST(SimDesk, RandomHandsAndAPlainLedgerAgree) {
    Counts all;
    for (std::uint64_t seed = 1; seed <= 20 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomHands hands(seed);
        for (int i = 0; i < 200 && !HasFailure(); ++i) hands.act();
        for (const auto& [name, count] : hands.counts()) all[name] += count;
    }
    for (const char* name : {"asked", "fills", "reversals", "partial closes"}) EXPECT_GE(all[name], 50u) << name;
}

}  // namespace
}  // namespace vmr::test
