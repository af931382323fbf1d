// The rules of orders, protective orders and book-keeping, one script each.
#include <cmath>
#include <cstdlib>
#include <ctime>

#include "base/LocalDay.h"
#include "chart/AllocationCount.h"
#include "sim/SimScript.h"

namespace vmr::test {
namespace {

using sim::BracketSpec;
using sim::OrderType;
using sim::Side;

struct Rule {
    const char* name;
    const char* script;
    const char* position;
    const char* orders;   // what still works
    const char* fills;    // oldest first
    const char* refused;  // the commands that did nothing
};

void check(const Rule& rule) {
    SCOPED_TRACE(rule.name);
    SimScript sim;
    sim.run(rule.script);
    EXPECT_EQ(sim.position(), rule.position);
    EXPECT_EQ(sim.orders(), rule.orders);
    EXPECT_EQ(sim.fills(), rule.fills);
    EXPECT_EQ(sim.refused, rule.refused);
}

TEST(SimMatching, EachTypeFillsWhereItsRuleSays) {
    const Rule rules[] = {
        {"a limit has no price improvement", "seed 101; buy 1 limit=100; quote 99.5 99.75", "1@100", "", "buy 1 100",
         ""},
        {"a trade through a limit fills at the limit", "trade 101; sell 1 limit=102; trade 105", "-1@102", "",
         "sell 1 102", ""},
        {"a gap past a sell stop fills at the bid", "trade 101; sell 1 stop=100; quote 98.75 99; trade 99", "-1@98.75",
         "", "sell 1 98.75", ""},
        {"a sell stop never fills better than its price", "trade 101; quote 100.25 101; sell 1 stop=100; trade 100",
         "-1@100", "", "sell 1 100", ""},
        {"a stop beyond the market rests until the next event", "trade 99; sell 1 stop=100; wait 1", "none",
         "sell 1 stop 100", "", ""},
        {"the touch is half a tick off the last without a quote", "trade 100; buy 1; sell 3", "-2@99.875", "",
         "buy 1 100.125, sell 3 99.875", ""},
        {"a quote never goes stale", "quote 90 91; wait 9000; trade 100; buy 1", "1@91", "", "buy 1 91", ""},
        {"before any price a market order is refused and a limit rests", "buy 1; buy 1 limit=100", "none",
         "buy 1 limit 100", "", "buy"},
        {"a seeded price fills nothing by itself and then counts", "buy 1 limit=100; seed 99; quote 104 105", "1@100",
         "", "buy 1 100", ""},
        {"a seed must be a price, and comes first only once",
         "seed 0; seed -1; seed inf; seed nan; seed 5; seed 7; buy 1", "1@5.125", "", "buy 1 5.125", ""},
        {"a stop-limit marketable at its trigger fills in the same pass",
         "trade 99; buy 1 stop=100 limit=102; trade 101", "1@102", "", "buy 1 102", ""},
        {"a stop-limit beyond its limit goes on as a limit", "trade 99; buy 1 stop=100 limit=100.5 sl=4; trade 101",
         "none", "buy 1 limit 100.5 [4/-]", "", ""},
        {"orders made by a fill are reached in its pass", "trade 101; sell 1 stop=100 tp=1; quote 98 98.5; trade 97",
         "0@0", "", "sell 1 98, buy 1 97.75TP", ""},
        // the fill at 1 removes both legs before it; the order that slides into its place waits for the next event
        {"an order is passed over when a fill removes one before it",
         "trade 100; buy 1; protect SL 90; sell 1 limit=105; sell 1 limit=106; trade 107", "0@0", "sell 1 limit 106",
         "buy 1 100.125, sell 1 105", ""},
        {"... and is looked at on the next event",
         "trade 100; buy 1; protect SL 90; sell 1 limit=105; sell 1 limit=106; trade 107; trade 107", "-1@106", "",
         "buy 1 100.125, sell 1 105, sell 1 106", ""},
        {"entry is refused in a closed market, fills are not", "trade 101; buy 1 limit=100; closed; buy 1; trade 99",
         "1@100", "", "buy 1 100", "buy"},
        {"bad orders", "trade 100; buy 0; buy -3; buy 1 limit=nan; sell 1 stop=inf; root ZZ; trade 1; buy 1", "none",
         "", "", "buy buy buy sell buy"},
        {"a position beyond 64 bits", "trade 100; buy 9223372036854775807; buy 1", "9223372036854775807@100.125", "",
         "buy 9223372036854775807 100.125", "buy"},
    };
    for (const Rule& rule : rules) check(rule);
}

TEST(SimMatching, AStopLimitWithoutALimitEndsAsALimitThatNeverFills) {
    SimScript sim;
    sim.run("trade 99; quote 98 99");
    const auto order = sim.engine.place("NQ", Side::buy, OrderType::stopLimit, 2, {}, 100.0, BracketSpec{4, {}});
    ASSERT_TRUE(order);
    sim.run("trade 101; trade 1; quote 0.5 1");
    sim::Order expected = *order;
    expected.type = OrderType::limit;
    expected.stopPrice.reset();
    EXPECT_THAT(sim.engine.orders(), testing::ElementsAre(expected));
    EXPECT_EQ(sim.fills(), "");
}

TEST(SimMatching, ATickAllocatesNothing) {
    SimScript sim;
    sim.run("trade 100; quote 99 101");
    for (int i = 0; i < 200; ++i) sim.run(i % 2 == 0 ? "buy 1 limit=50" : "sell 1 stop=40");
    const long before = allocationCount();
    for (int i = 0; i < 100; ++i) {
        sim.engine.onTrade(sim.root, 90 + i % 5);
        sim.engine.onQuote(sim.root, 90, 91 + i % 5);
    }
    EXPECT_EQ(allocationCount() - before, 0);
    EXPECT_EQ(sim.engine.orders().size(), 200u);
}

TEST(SimBrackets, LegsFollowThePosition) {
    const Rule rules[] = {
        {"a bracket on an add is for all, at its own fill price",
         "quote 99.75 100; buy 1 sl=4; quote 104.75 105; buy 1 sl=40 tp=80", "2@102.5",
         "sell 2 stop 95 SL >1, sell 2 limit 125 TP >0", "buy 1 100, buy 1 105", ""},
        {"the target takes the stop along, entries stay",
         "quote 99.75 100; buy 1 sl=40 tp=8; buy 1 limit=95; trade 102", "0@0", "buy 1 limit 95",
         "buy 1 100, sell 1 102TP", ""},
        {"protect links both ways, on the grid", "quote 99.75 100; buy 2; protect TP 104.1; protect SL 95.2", "2@100",
         "sell 2 limit 104 TP >1, sell 2 stop 95.25 SL >0", "buy 2 100", ""},
        {"protect refuses", "trade 100; protect SL 90; buy 1; protect XX 90; protect SL 0; protect SL nan", "1@100.125",
         "", "buy 1 100.125", "protect protect protect protect"},
        {"flatten sells at the bid and leaves entries", "quote 99.75 100; buy 2 sl=4; buy 1 limit=90; flatten; flatten",
         "0@0", "buy 1 limit 90", "buy 2 100, sell 2 99.75", "flatten"},
        {"flatten in a closed market loses the legs, not the position",
         "quote 99.75 100; buy 2 sl=4 tp=4; closed; flatten", "2@100", "", "buy 2 100", "flatten"},
        {"modify moves the limit, or else the stop; nothing fills",
         "trade 100; buy 1 limit=90; sell 1 stop=80; sell 1 stop=70 limit=60; modify 0 101.1; modify 1 81.1; modify 2 "
         "61.1",
         "none", "buy 1 limit 101, sell 1 stop 81, sell 1 stop 70 limit 61", "", ""},
        {"modify refuses", "trade 100; buy 1 limit=90; modify 0 0; modify 0 nan; modify 0 0.1; modify 7 95; cancel 7",
         "none", "buy 1 limit 90", "", "modify modify modify modify cancel"},
        {"cancelAll is for one root", "trade 100; buy 1 limit=90; root ES; trade 9; buy 1 limit=8; cancelAll", "none",
         "buy 1 limit 90", "", ""},
        {"a planned leg is whole ticks away, at least 1, on its own side",
         "trade 101; buy 1 limit=100 tp=8; leg 0 SL 103.1; leg 0 TP 100; sell 1 stop=90 sl=4; leg 1 SL 95", "none",
         "buy 1 limit 100 [12/1], sell 1 stop 90 [20/-]", "", ""},
        {"planned legs refuse",
         "trade 101; buy 1 limit=100; leg 0 SL 99; buy 1 limit=100 sl=4; leg 1 XX 99; leg 1 SL -4; leg 1 SL 1e300; "
         "leg 9 SL 9; spec 0 5; leg 1 SL 99",
         "none", "buy 1 limit 100, buy 1 limit 100 [4/-]", "", "leg leg leg leg leg leg"},
    };
    for (const Rule& rule : rules) check(rule);
}

TEST(SimBrackets, ProjectedLegsStandAroundTheEntry) {
    SimScript sim;
    sim.run("quote 99.75 100; buy 1 limit=90 sl=40 tp=80; sell 1 stop=80 sl=4; buy 1 limit=91");
    const auto& orders = sim.engine.orders();
    EXPECT_EQ(sim.engine.projectedBracket(orders[0]), (SimEngine::LegPrices{80.0, 110.0}));
    EXPECT_EQ(sim.engine.projectedBracket(orders[1]), (SimEngine::LegPrices{81.0, {}}));
    EXPECT_EQ(sim.engine.projectedBracket(orders[2]), SimEngine::LegPrices{});
}

struct Money {
    const char* name;
    const char* script;
    const char* position;
    double realized;
    double balance;
    const char* trades;  // newest first
};

TEST(SimAccounting, CashPositionsAndRoundTrips) {
    const Money rows[] = {
        {"two exits are one trade", "commission 0; quote 100 100; buy 2; quote 101 101; sell 1; quote 103 103; sell 1",
         "0@0", 80, 50080, "buy 2 100>102 pnl 80 fees 0"},
        {"a reversal pays all its fees on the old trade", "quote 100 100; buy 1; quote 99 99; sell 3", "-2@99", -20,
         49970, "buy 1 100>99 pnl -20 fees 10"},
        {"... and none on the new one", "quote 100 100; buy 1; quote 99 99; sell 3; buy 2", "0@0", -20, 49965,
         "sell 2 99>99 pnl 0 fees 5, buy 1 100>99 pnl -20 fees 10"},
        {"scaling in and out keeps the greatest size and the last average",
         "commission 0; quote 100 100; buy 2; sell 1; quote 104 104; buy 3; quote 105 105; sell 4", "0@0", 160, 50160,
         "buy 4 103>104 pnl 160 fees 0"},
        {"the tag of the order that ends it", "commission 0; quote 100 100; buy 1 tp=4; trade 101", "0@0", 20, 50020,
         "buy 1 100>101 pnl 20 fees 0TP"},
        {"a reset ends positions without a trade", "quote 100 100; buy 1; buy 1 limit=90; reset 7", "none", 0, 7, ""},
    };
    for (const Money& row : rows) {
        SCOPED_TRACE(row.name);
        SimScript sim;
        sim.run(row.script);
        EXPECT_EQ(sim.position(), row.position);
        EXPECT_EQ(sim.trades(), row.trades);
        EXPECT_EQ(sim.engine.balance(), row.balance);
        const auto position = sim.engine.positions().find(sim.root);
        EXPECT_EQ(position == sim.engine.positions().end() ? 0 : position->second.realized, row.realized);
        EXPECT_EQ(sim.refused, "");
    }
}

TEST(SimAccounting, OpenResultsAndTheDay) {
    SimScript sim;
    sim.run("quote 100 100; buy 2");
    EXPECT_EQ(sim.engine.unrealized("NQ"), 0) << "no last price";
    sim.run("trade 101; root ES; quote 50 50; sell 1; trade 51");
    EXPECT_EQ(sim.engine.unrealized("NQ"), 40);
    EXPECT_EQ(sim.engine.totalUnrealized(), 40 - 50);
    sim.run("buy 1");  // closes at 50: a result of 0 after fees of 5
    EXPECT_EQ(sim.engine.dayPnL(), 40 - 5);
    sim.time.advance(2 * 86400);
    EXPECT_EQ(sim.engine.dayPnL(), 40) << "a trade of another day";
}

TEST(SimAccounting, TheDayIsTheMachinesOwn) {
    const char* before = std::getenv("TZ");
    const std::string old = before ? before : "";
    ::setenv("TZ", "Europe/Lisbon", 1);
    ::tzset();
    constexpr double evening = 1781148600.0;  // 23:30 in New York, 04:30 of the next day in Lisbon
    EXPECT_EQ(localDay(evening), localDay(openHours) + 1);
    before ? ::setenv("TZ", old.c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
}

TEST(SimEngine, GridOpenHoursAndNotices) {
    SimScript sim;
    sim.run("root OFF; spec 0 5; root NQ");
    EXPECT_EQ(sim.engine.roundTick("NQ", 100.125), 100.25);
    EXPECT_EQ(sim.engine.roundTick("OFF", 1.23), 1.23);

    std::string told;
    const Connection listening = sim.engine.changed.connect([&](SimEngine::Field field) {
        constexpr const char* names[] = {"balance", "start", "positions", "orders", "fills", "trades"};
        told += std::string(names[static_cast<std::size_t>(field)]) + " ";
    });
    sim.run("trade 100; quote 99 100; seed 5");
    EXPECT_EQ(std::exchange(told, ""), "") << "ticks tell nobody";
    sim.run("buy 1");
    EXPECT_EQ(std::exchange(told, ""), "balance positions fills ");
    sim.run("buy 1 limit=90; modify 0 91; cancel 0");
    EXPECT_EQ(std::exchange(told, ""), "orders orders orders ");
    sim.run("sell 1");
    EXPECT_EQ(told, "balance positions trades fills ");
}

sim::Trade trade(double pnl, double fees, double opened, double closed, const char* tag) {
    sim::Trade trade;
    trade.pnl = pnl;
    trade.fees = fees;
    trade.openedAt = opened;
    trade.closedAt = closed;
    trade.exitTag = tag;
    return trade;
}

TEST(SimStats, FiguresOfATable) {
    // given newest first; after fees: -10, 30, 0, -20
    const sim::Trade all[] = {trade(-15, 5, 5, 80, "SL"), trade(2, 2, 30, 40, "other"), trade(32, 2, 10, 30, "TP"),
                              trade(-10, 0, 0, 10, "SL")};
    const sim::Stats mixed = SimEngine::stats(all);
    const sim::Stats expected{4, 1, 25, 0, 9, 1, 30, -10, 3, 0, 20, 30, -20, 28.75, 2, 1, 1, {-10, 20, 20, 0}};
    EXPECT_EQ(mixed, expected);

    const sim::Trade wins[] = {trade(4, 0, 0, 1, ""), trade(6, 0, 0, 1, "")};
    const sim::Stats winning = SimEngine::stats(wins);
    EXPECT_TRUE(std::isinf(winning.profitFactor));
    EXPECT_THAT(winning.curve, testing::ElementsAre(4, 10)) << "equal times stay as given";

    EXPECT_EQ(SimEngine::stats({}), sim::Stats{});
}

}  // namespace
}  // namespace vmr::test
