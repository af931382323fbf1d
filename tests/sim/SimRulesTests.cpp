// The rules of orders, protective orders and book-keeping, one script each.
#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <sstream>

#include "base/LocalDay.h"
#include "base/NumberText.h"
#include "chart/AllocationCount.h"
#include "sim/SimEngine.h"
#include "support/time/TestTime.h"

namespace vmr::test {
namespace {

constexpr double openHours = 1781100000.0;    // a Wednesday, 10:00 in New York
constexpr double closedHours = 1781366400.0;  // the Saturday after

/// Commands end with ";". Orders are named by their place in the working list, counted from 0:
/// trade P; quote B A; seed P; buy|sell QTY [limit=P] [stop=P] [sl=N] [tp=N]; cancel I; modify I P; leg I SL|TP P;
/// protect SL|TP P; flatten; cancelAll; root SYM; wait S; closed
class SimScript {
 public:
    TestTime time{openHours};
    SessionTime session;
    SimEngine engine{{.clock = time, .session = session, .ids = UuidSource(1)}};
    std::string root = "NQ";
    std::string refused;  ///< the commands that did nothing, by name

    SimScript& run(const std::string& script) {
        std::istringstream all(script);
        for (std::string command; std::getline(all, command, ';');) {
            std::istringstream words(command);
            std::string name;
            if (words >> name && !carryOut(name, words)) refused += " " + name;
        }
        return *this;
    }

    /// "POSITION", and " | works ORDERS", " | fills FILLS" (oldest first), " | refuses COMMANDS" where there are any.
    std::string outcome() const {
        const auto found = engine.positions().find(root);
        std::string out = "none", works, fills;
        if (found != engine.positions().end())
            out = std::to_string(found->second.qty) + "@" + doubleText(found->second.avg);
        for (const sim::Order& order : engine.orders()) {
            works += (works.empty() ? " | works " : ", ") + word(order.side, order.qty);
            if (order.stopPrice) works += " stop " + doubleText(*order.stopPrice);
            if (order.limitPrice) works += " limit " + doubleText(*order.limitPrice);
            if (!order.tag.empty()) works += " " + order.tag;
            if (order.bracket)
                works += " [" + ticks(order.bracket->slTicks) + "/" + ticks(order.bracket->tpTicks) + "]";
            if (order.ocoId) works += " >" + place(*order.ocoId);
        }
        for (auto fill = engine.fills().rbegin(); fill != engine.fills().rend(); ++fill)
            fills += (fills.empty() ? " | fills " : ", ") + word(fill->side, fill->qty) + " " +
                     doubleText(fill->price) + fill->tag;
        return out + works + fills + (refused.empty() ? "" : " | refuses" + refused);
    }

 private:
    static std::string word(sim::Side side, std::int64_t qty) {
        return std::string(rawText(side)) + " " + std::to_string(qty);
    }
    static std::string ticks(std::optional<std::int64_t> count) { return count ? std::to_string(*count) : "-"; }
    std::string place(const Uuid& id) const {
        for (std::size_t i = 0; i < engine.orders().size(); ++i)
            if (engine.orders()[i].id == id) return std::to_string(i);
        return "?";
    }
    static double price(std::istringstream& words) {
        std::string word;
        words >> word;
        return parseDouble(word).value_or(std::numeric_limits<double>::quiet_NaN());
    }
    Uuid orderId(std::istringstream& words) const {
        std::size_t i = 0;
        words >> i;
        return i < engine.orders().size() ? engine.orders()[i].id : Uuid{};
    }
    bool place(sim::Side side, std::istringstream& words) {
        std::int64_t qty = 0;
        words >> qty;
        std::optional<double> limit, stop;
        std::optional<sim::BracketSpec> bracket;
        for (std::string word; words >> word;) {
            const std::string key = word.substr(0, word.find('='));
            const auto value = parseDouble(word.substr(key.size() + 1));
            if (key == "limit") limit = value;
            if (key == "stop") stop = value;
            if ((key == "sl" || key == "tp") && !bracket) bracket.emplace();
            if (key == "sl") bracket->slTicks = static_cast<std::int64_t>(*value);
            if (key == "tp") bracket->tpTicks = static_cast<std::int64_t>(*value);
        }
        const auto type = stop ? (limit ? sim::OrderType::stopLimit : sim::OrderType::stop)
                               : (limit ? sim::OrderType::limit : sim::OrderType::market);
        return engine.place(root, side, type, qty, limit, stop, bracket).has_value();
    }
    bool carryOut(const std::string& name, std::istringstream& words) {
        std::string text;
        Uuid id;
        if (name == "buy" || name == "sell") return place(*sim::sideNamed(name), words);
        if (name == "cancel") return engine.cancel(orderId(words));
        if (name == "flatten") return engine.flatten(root);
        if (name == "protect") return words >> text, engine.setProtective(root, text, price(words));
        if (name == "modify") return id = orderId(words), engine.modify(id, price(words));
        if (name == "leg") return id = orderId(words), words >> text, engine.modifyProjectedLeg(id, text, price(words));
        if (name == "root") return static_cast<bool>(words >> root);
        if (name == "cancelAll") return engine.cancelAll(root), true;
        if (name == "closed") return time.setNow(closedHours), true;
        const double a = price(words);
        if (name == "trade") return engine.onTrade(root, a), true;
        if (name == "quote") return engine.onQuote(root, a, price(words)), true;
        if (name == "seed") return engine.seedLast(root, a), true;
        if (name == "wait") return time.advance(a), true;
        ADD_FAILURE() << "no such command: " << name;
        return false;
    }
};

struct Rule {
    const char* name;
    const char* script;
    const char* outcome;
};

void check(const Rule& rule) {
    SimScript sim;
    sim.run(rule.script);
    EXPECT_EQ(sim.outcome(), rule.outcome) << rule.name;
}

TEST(SimMatching, EachTypeFillsWhereItsRuleSays) {
    const Rule rules[] = {
        {"a limit has no price improvement", "quote 99.5 99.75; buy 1 limit=100", "1@100 | fills buy 1 100"},
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
        {"bad orders", "trade 100; buy 0; buy -3; buy 1 limit=nan; sell 1 stop=inf; root ZZ; trade 1; buy 1",
         "none | refuses buy buy buy sell buy"},
        {"a position beyond 64 bits", "trade 100; buy 9223372036854775807; buy 1",
         "9223372036854775807@100.125 | fills buy 9223372036854775807 100.125 | refuses buy"},
    };
    for (const Rule& rule : rules) check(rule);
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
         "quote 99.75 100; buy 1 sl=4; quote 104.75 105; buy 1 sl=40 tp=80",
         "2@102.5 | works sell 2 stop 95 SL >1, sell 2 limit 125 TP >0 | fills buy 1 100, buy 1 105"},
        {"protect links both ways, on the grid", "quote 99.75 100; buy 2; protect TP 104.1; protect SL 95.2",
         "2@100 | works sell 2 limit 104 TP >1, sell 2 stop 95.25 SL >0 | fills buy 2 100"},
        {"protect leaves another root's orders",
         "quote 99.75 100; buy 1 sl=4; root ES; quote 49.75 50; buy 1; protect SL 45",
         "1@50 | works sell 1 stop 99 SL, sell 1 stop 45 SL | fills buy 1 100, buy 1 50"},
        {"a leg of no ticks is none", "quote 99.75 100; buy 1 sl=0 tp=0", "1@100 | fills buy 1 100"},
        {"protect refuses", "trade 100; protect SL 90; buy 1; protect XX 90; protect SL 0; protect SL nan",
         "1@100.125 | fills buy 1 100.125 | refuses protect protect protect protect"},
        {"flatten sells at the bid and leaves entries", "quote 99.75 100; buy 2 sl=4; buy 1 limit=90; flatten; flatten",
         "0@0 | works buy 1 limit 90 | fills buy 2 100, sell 2 99.75 | refuses flatten"},
        {"flatten in a closed market loses the legs, not the position",
         "quote 99.75 100; buy 2 sl=4 tp=4; closed; flatten", "2@100 | fills buy 2 100 | refuses flatten"},
        {"modify moves the limit, or else the stop; nothing fills",
         "trade 100; buy 1 limit=90; sell 1 stop=80; sell 1 stop=70 limit=60; modify 0 101.1; modify 1 81.1; modify 2 "
         "61.1",
         "none | works buy 1 limit 101, sell 1 stop 81, sell 1 stop 70 limit 61"},
        {"modify refuses", "trade 100; buy 1 limit=90; modify 0 0; modify 0 nan; modify 0 0.1; modify 7 95; cancel 7",
         "none | works buy 1 limit 90 | refuses modify modify modify modify cancel"},
        {"cancelAll is for one root", "trade 100; buy 1 limit=90; root ES; trade 9; buy 1 limit=8; cancelAll",
         "none | works buy 1 limit 90"},
        {"a planned leg is whole ticks away, at least 1, on its own side",
         "trade 101; buy 1 limit=100 tp=8; leg 0 SL 103.1; leg 0 TP 100; sell 1 stop=90 sl=4; leg 1 SL 95",
         "none | works buy 1 limit 100 [12/1], sell 1 stop 90 [20/-]"},
    };
    for (const Rule& rule : rules) check(rule);
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
    ::setenv("TZ", "Europe/Lisbon", 1);
    ::tzset();
    constexpr double evening = 1781148600.0;  // 23:30 in New York, 04:30 of the next day in Lisbon
    EXPECT_EQ(localDay(evening), localDay(openHours) + 1);
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
}

}  // namespace
}  // namespace vmr::test
