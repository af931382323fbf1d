// The rules of orders, protective orders and book-keeping, one script each.
#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>
#include <ctime>

#include "base/LocalDay.h"
#include "chart/AllocationCount.h"
#include "sim/TickGrid.h"
#include "tests/sim/SimScript.h"

namespace vmr::test {
namespace {

struct Account {
    TestTime time;  // a Wednesday, 10:00 in New York
    SessionTime session;
    SimEngine engine{{.clock = time, .session = session, .ids = UuidSource(1)}};
    SimScript script{time, engine};
};

struct Rule {
    const char* name;
    const char* script;
    const char* outcome;
};

void check(const Rule& rule) {
    Account account;
    EXPECT_EQ(account.script.run(rule.script).outcome(), rule.outcome) << rule.name;
}

TEST(SimMatching, EachTypeFillsWhereItsRuleSays) {
    const Rule rules[] = {
        {"the touch is half a tick off the last without a quote", "trade 100; buy 1; sell 3",
         "-2@99.875 | fills buy 1 100.125, sell 3 99.875"},
        {"a quote never goes stale", "quote 90 91; wait 9000; trade 100; buy 1", "1@91 | fills buy 1 91"},
        {"before any price a market order is refused and a limit rests", "buy 1; buy 1 limit=100",
         "none | works buy 1 limit 100 | refuses buy"},
        {"a seeded price fills nothing by itself and then counts", "buy 1 limit=100; seed 99; quote 104 105",
         "1@100 | fills buy 1 100"},
        {"orders made by a fill are reached in its pass", "trade 101; sell 1 stop=100 tp=1; quote 98 98.5; trade 97",
         "0@0 | fills sell 1 98, buy 1 97.75TP"},
        // the fill at 1 removes both legs before it; the order that slides into its place waits for the next event
        {"an order is passed over when a fill removes one before it",
         "trade 100; buy 1; protect SL 90; sell 1 limit=105; sell 1 limit=106; trade 107",
         "0@0 | works sell 1 limit 106 | fills buy 1 100.125, sell 1 105"},
        {"entry is refused in a closed market, fills are not", "trade 101; buy 1 limit=100; closed; buy 1; trade 99",
         "1@100 | fills buy 1 100 | refuses buy"},
        {"a stop-limit rests as a plain limit once its stop is reached",
         "trade 100; buy 1 stop=101 limit=100.5; sell 2 stop=99 limit=99.5; trade 101; trade 99",
         "1@100.5 | works sell 2 limit 99.5 | fills buy 1 100.5"},
        {"bad orders", "trade 100; buy 0; buy -3; buy 1 limit=nan; sell 1 stop=inf; root ZZ; trade 1; buy 1",
         "none | refuses buy buy buy sell buy"},
        {"what is not a market is ignored as a whole",
         "quote 99.5 99.75; quote 0 90; quote 80 -1; quote 70 69; trade 0; trade -5; sell 1 stop=99; buy 1",
         "1@99.75 | works sell 1 stop 99 | fills buy 1 99.75"},
        {"a position beyond 64 bits", "trade 100; buy 9223372036854775807; buy 1",
         "9223372036854775807@100.125 | fills buy 9223372036854775807 100.125 | refuses buy"},
    };
    for (const Rule& rule : rules) check(rule);
}

TEST(SimMatching, ATickAllocatesNothing) {
    Account at;
    at.script.run("trade 100; quote 99 101");
    for (int i = 0; i < 200; ++i) at.script.run(i % 2 == 0 ? "buy 1 limit=50" : "sell 1 stop=40");
    const long before = allocationCount();
    for (int i = 0; i < 100; ++i) {
        at.engine.onTrade("NQ", 90 + i % 5);
        at.engine.onQuote("NQ", 90, 91 + i % 5);
    }
    EXPECT_EQ(allocationCount() - before, 0);
    EXPECT_EQ(at.engine.orders().size(), 200u);
}

// A contract's prices fill no order of another one.
TEST(SimContracts, PricesGoWithTheirContract) {
    const Rule rules[] = {
        {"position and orders stay, prices go until there are new ones, the other root's stay",
         "root ES; open 2 ESM6; trade 50; root NQ; open 1 NQM6; trade 100; quote 99.75 100; buy 1 sl=4; open 1 NQU6; "
         "quote 80 80.25; root ES; buy 1; root NQ; flatten; trade 70",
         "0@0 | fills buy 1 100, buy 1 50.125, sell 1 80"},
        {"nothing is entered or closed before a new price",
         "open 1 NQM6; trade 100; buy 1 sl=4; open 1 NQU6; buy 1; flatten",
         "1@100.125 | works sell 1 stop 99.125 SL | fills buy 1 100.125 | refuses buy flatten"},
        {"the same contract again", "open 1 NQM6; trade 100; open 2 NQM6; leave 1; open 1 NQM6; buy 1",
         "1@100.125 | fills buy 1 100.125"},
        {"the contract that is left counts", "open 1 NQM6; open 2 NQU6; trade 100; leave 2; buy 1",
         "none | refuses buy"},
        {"a pane that leaves takes no price of another root with it",
         "root ES; open 1 ESM6; root NQ; open 2 NQM6; trade 100; leave 2; buy 1", "1@100.125 | fills buy 1 100.125"},
        {"a root that is shown rolls with its chart, any other at once",
         "open 1 NQM6; trade 100; roll NQU6; buy 1; leave 1; roll NQM6; buy 1; roll NQU6; buy 1",
         "2@100.125 | fills buy 1 100.125, buy 1 100.125 | refuses buy"},
    };
    for (const Rule& rule : rules) check(rule);
}

TEST(SimContracts, OldPricesAreSaid) {
    for (const auto& [script, age] : {std::pair("open 1 NQM6; trade 100; wait 15", -1),
                                      {"open 1 NQM6; trade 100; wait 16", 16},
                                      {"open 1 NQM6; quote 99 101; wait 212; trade 102", 212},
                                      {"open 1 NQM6; quote 99 101; wait 212; trade 101", -1},
                                      {"open 1 NQM6; trade 100; wait 20; quote 99 101", -1},
                                      {"open 1 NQM6; trade 100; wait 3; offline 1", 3},
                                      {"open 1 NQM6; trade 100; open 2 NQM6; offline 1", -1},
                                      {"open 1 NQM6; trade 100; wait 3; leave 1", 3},
                                      {"open 1 NQM6; open 2 NQU6; trade 100; wait 3; offline 2", 3},
                                      {"open 1 NQM6; trade 100; closed", -1},
                                      {"open 1 NQM6; trade 100; wait 16; open 1 NQU6", -1}}) {
        Account account;
        EXPECT_EQ(account.script.run(script).engine.stalePrice("NQ").value_or(-1), age) << script;
    }
}

// Rounded and moved prices are the decimals that a feed prints, to the last bit.
TEST(SimTicks, PricesAreThePrintedDecimals) {
    using Whole = std::int64_t;
    Account at;
    // each tick, and the same as a fraction with a power of ten below
    for (const auto& [tick, steps, parts] : {std::tuple<double, Whole, Whole>(0.25, 25, 100),
                                             {0.1, 1, 10},
                                             {0.01, 1, 100},
                                             {0.005, 5, 1000},
                                             {1.0 / 32, 3125, 100000},
                                             {2.5, 25, 10}}) {
        at.engine.updateSpecs({{"X", {tick, 1}}});
        const auto printed = [steps = steps, parts = parts](Whole n) {
            const std::string rest = std::to_string(n * steps % parts + parts).substr(1);
            return *parseDouble(std::to_string(n * steps / parts) + "." + rest);
        };
        const auto most = static_cast<Whole>(100000 / tick);
        int wrong = 0;
        for (Whole n = 1; n <= most; n += n < 5000 ? 1 : 37) {
            const double price = printed(n);
            wrong += at.engine.roundTick("X", price) != price;
            wrong += at.engine.roundTick("X", price + 0.49 * tick) != price;
            wrong += sim::TickGrid(tick).moved(price, 80) != printed(n + 40);
            wrong += n > 1 && sim::TickGrid(tick).moved(price, -2) != printed(n - 1);
        }
        EXPECT_EQ(wrong, 0) << tick;
    }
    at.script.run("root GC; trade 4104.3; quote 4104.3 4104.4; buy 1; protect TP 4104.72; trade 4104.7");
    EXPECT_EQ(at.script.outcome(), "0@0 | fills buy 1 4104.4, sell 1 4104.7TP");
}

TEST(SimBrackets, LegsFollowThePosition) {
    const Rule rules[] = {
        {"a bracket on an add is for all, at its own fill price",
         "quote 99.75 100; buy 1 sl=4; quote 104.75 105; buy 1 sl=40 tp=80",
         "2@102.5 | works sell 2 stop 95 SL >1, sell 2 limit 125 TP >0 | fills buy 1 100, buy 1 105"},
        {"protect links both ways, on the grid", "quote 99.75 100; buy 2; protect TP 104.1; protect SL 95.2",
         "2@100 | works sell 2 limit 104 TP >1, sell 2 stop 95.25 SL >0 | fills buy 2 100"},
        {"protect and a later fill leave another root's legs",
         "quote 99.75 100; buy 1 sl=4; root ES; quote 49.75 50; buy 1; protect SL 45; protect TP 55; buy 2",
         "3@50 | works sell 1 stop 99 SL, sell 3 stop 45 SL >2, sell 3 limit 55 TP >1 | fills buy 1 100, buy 1 50, "
         "buy 2 50"},
        {"a leg of no ticks is none", "quote 99.75 100; buy 1 sl=0 tp=0", "1@100 | fills buy 1 100"},
        {"protect refuses", "trade 100; protect SL 90; buy 1; protect XX 90; protect SL 0; protect SL nan",
         "1@100.125 | fills buy 1 100.125 | refuses protect protect protect protect"},
        {"flatten sells at the bid and leaves entries", "quote 99.75 100; buy 2 sl=4; buy 1 limit=90; flatten; flatten",
         "0@0 | works buy 1 limit 90 | fills buy 2 100, sell 2 99.75 | refuses flatten"},
        {"flatten in a closed market changes nothing", "quote 99.75 100; buy 2 sl=4; closed; flatten",
         "2@100 | works sell 2 stop 99 SL | fills buy 2 100 | refuses flatten"},
        {"modify moves the limit, or else the stop; nothing fills",
         "trade 100; buy 1 limit=90; sell 1 stop=80; sell 1 stop=70 limit=60; modify 0 101.1; modify 1 81.1; modify 2 "
         "61.1",
         "none | works buy 1 limit 101, sell 1 stop 81, sell 1 stop 70 limit 61"},
        {"modify refuses", "trade 100; buy 1 limit=90; modify 0 0; modify 0 nan; modify 0 0.1; modify 7 95; cancel 7",
         "none | works buy 1 limit 90 | refuses modify modify modify modify cancel"},
        {"what is put back stands where it was, off the grid",
         "trade 101; buy 1 limit=100.125 sl=4 tp=4; modify 0 99; leg 0 TP 105; leg 0 SL 90; back 0 - 100.125; "
         "back 0 TP 101.125; back 0 SL 99.125; back 0 - nan; back 0 SL 0; back 3 - 90",
         "none | works buy 1 limit 100.125 [99.125/101.125] | refuses back back back"},
        {"cancelAll is for one root", "trade 100; buy 1 limit=90; root ES; trade 9; buy 1 limit=8; cancelAll",
         "none | works buy 1 limit 90"},
        {"a planned leg is whole ticks away, at least 1, on its own side",
         "trade 101; buy 1 limit=100 tp=8; leg 0 SL 103.1; leg 0 TP 100; sell 1 stop=90 sl=4 tp=2; leg 1 SL 95",
         "none | works buy 1 limit 100 [97/100.25], sell 1 stop 90 [95/89.5]"},
    };
    for (const Rule& rule : rules) check(rule);
}

TEST(SimAccounting, OpenResultsAndTheDay) {
    Account at;
    at.script.run("quote 100 100; buy 2");
    EXPECT_EQ(at.engine.unrealized("NQ"), 0) << "no last price";
    at.script.run("trade 101; root ES; quote 50 50; sell 1; trade 51");
    EXPECT_EQ(at.engine.unrealized("NQ"), 40);
    EXPECT_EQ(at.engine.totalUnrealized(), 40 - 50);
    at.script.run("buy 1");  // closes at 50: a result of 0 after fees of 5
    EXPECT_EQ(at.engine.dayPnL(), 40 - 5);
    at.time.advance(2 * 86400);
    EXPECT_EQ(at.engine.dayPnL(), 40) << "a trade of another day";
    for (std::size_t i = 0; i <= SimEngine::maxTrades; ++i) at.script.run("buy 1; sell 1");
    EXPECT_EQ(at.engine.fills().size(), SimEngine::maxFills);
    EXPECT_EQ(at.engine.trades().size(), SimEngine::maxTrades);
    int told = 0;
    const auto link = at.engine.changed.connect([&](SimEngine::Field) { ++told; });
    at.script.run("reset 7");
    EXPECT_EQ(told, 6) << "balances, positions, orders, fills and trades";
}

TEST(SimAccounting, TheDayIsTheMachinesOwn) {
    ::setenv("TZ", "Europe/Lisbon", 1);
    ::tzset();
    constexpr double evening = 1781148600.0;  // 23:30 in New York, 04:30 of the next day in Lisbon
    EXPECT_EQ(localDay(evening), localDay(TestTime().now()) + 1);
}

TEST(SimStats, FiguresOfATable) {
    const auto trade = [](double pnl, double fees, double opened, double closed, const char* tag) {
        return sim::Trade{
            .id = {}, .sym = {}, .pnl = pnl, .fees = fees, .openedAt = opened, .closedAt = closed, .exitTag = tag};
    };
    // given newest first; after fees: -10, 30, 0, -20
    const sim::Trade all[] = {trade(-15, 5, 5, 80, "SL"), trade(2, 2, 30, 40, "other"), trade(32, 2, 10, 30, "TP"),
                              trade(-10, 0, 0, 10, "SL")};
    const sim::Stats expected{4, 1, 25, 0, 9, 1, 30, -10, 3, 0, 20, 30, -20, 28.75, 2, 1, 1, {-10, 20, 20, 0}};
    EXPECT_EQ(SimEngine::stats(all), expected);

    const sim::Trade wins[] = {trade(4, 0, 0, 1, ""), trade(6, 0, 0, 1, "")};
    EXPECT_TRUE(std::isinf(SimEngine::stats(wins).profitFactor));
    EXPECT_THAT(SimEngine::stats(wins).curve, testing::ElementsAre(4, 10)) << "equal times stay as given";
    EXPECT_EQ(SimEngine::stats({}), sim::Stats{});
    const sim::Trade loss[] = {trade(-5, 0, 0, 1, "")};
    EXPECT_EQ(SimEngine::stats(loss).maxDrawdown, 5) << "from the balance before the first trade";
}

}  // namespace
}  // namespace vmr::test
