// The panel's ticket: what its buttons do to the account, how it reads and writes, and what asks for a second press.
#include <gmock/gmock.h>

#include <map>

#include "sim/SimTexts.h"
#include "sim/SimTicket.h"
#include "tests/sim/SimScript.h"

namespace vmr::test {
namespace {

using sim::OrderType;
using sim::Side;
using sim::SimTicket;

struct Account {
    TestTime time;  // a Wednesday, 10:00 in New York
    SessionTime session;
    SimEngine engine{{.clock = time, .session = session, .ids = UuidSource(1)}};
    SimScript script{time, engine};

    /// "buy market", "sell limit 5000,25", "+SL": on the ticket beside `script.root`; what was refused is noted.
    Account& press(const SimTicket& ticket, const std::string& button) {
        const auto words = CommandWords(button).all();
        std::optional<std::string> problem;
        if (words[0].starts_with('+')) {
            problem = ticket.protect(engine, script.root, words[0].substr(1));
        } else {
            const auto type = *sim::orderTypeNamed(words[1]);
            const auto price = words.size() > 2 ? sim::readPrice(words[2]) : std::nullopt;
            problem = ticket.place(engine, script.root, *sim::sideNamed(words[0]), type,
                                   type == OrderType::limit ? price : std::nullopt,
                                   type == OrderType::stop ? price : std::nullopt);
        }
        if (problem) script.refused += " " + button;
        return *this;
    }
};

TEST(SimTicketPlacing, ButtonsEnterWhatTheyTell) {
    const SimTicket plain{.bracketOn = false}, both, stopOnly{.tpTicks = 0};
    const SimTicket points{.slTicks = 10, .tpTicks = 20, .useTicks = false};
    const SimTicket none{.slTicks = 0, .tpTicks = 0};
    struct Row {
        const char* name;
        const char* before;
        const SimTicket& ticket;
        const char* button;
        const char* outcome;
    };
    for (const Row& row : {
             Row{"against a long it reverses", "quote 99 100; buy 2", plain, "sell market",
                 "-1@99 | fills buy 2 100, sell 3 99"},
             {"against a short too", "quote 99 100; sell 2", plain, "buy market", "1@100 | fills sell 2 99, buy 3 100"},
             {"with the position it adds", "quote 99 100; buy 2", plain, "buy market",
              "3@100 | fills buy 2 100, buy 1 100"},
             {"another root's position is none of it", "root ES; quote 9 10; sell 2; root NQ; quote 99 100", plain,
              "buy market", "1@100 | fills sell 2 9, buy 1 100"},
             {"a limit is for the ticket's quantity", "quote 99 100; buy 2", plain, "sell limit 99",
              "1@100 | fills buy 2 100, sell 1 99"},
             {"a comma is a point, and the price stays as typed", "", plain, "buy limit 5000,26",
              "none | works buy 1 limit 5000.26"},
             {"points are as many as the root has ticks of them", "quote 99 100", points, "buy market",
              "1@100 | works sell 1 stop 90 SL >1, sell 1 limit 120 TP >0 | fills buy 1 100"},
             {"also of another root", "root GC; quote 99 100", points, "sell market",
              "-1@99 | works buy 1 stop 109 SL >1, buy 1 limit 79 TP >0 | fills sell 1 99"},
             {"no target", "", stopOnly, "buy stop 101", "none | works buy 1 stop 101 [91/-]"},
             {"no legs", "quote 99 100", none, "buy market", "1@100 | fills buy 1 100"},
             {"a reversal carries the bracket", "quote 99 100; buy 2 sl=4", both, "sell market",
              "-1@99 | works buy 1 stop 109 SL >1, buy 1 limit 79 TP >0 | fills buy 2 100, sell 3 99"},
             {"without a price nothing happens", "quote 99 100", plain, "buy limit", "none | refuses buy limit"},
             {"nor at a price that is none", "quote 99 100", plain, "buy stop 1,000.5",
              "none | refuses buy stop 1,000.5"},
             {"nor in a closed market", "quote 99 100; closed", plain, "buy market", "none | refuses buy market"},
             {"nor of an unknown root", "quote 99 100; root ZZ", plain, "buy market", "none | refuses buy market"},
             {"a stop stands at the distance from the average, not from the market",
              "quote 99 100; buy 1; quote 104 105; buy 1; trade 150", both, "+SL",
              "2@102.5 | works sell 2 stop 92.5 SL | fills buy 1 100, buy 1 105"},
             {"a target of a short lies below", "root GC; quote 99 100; sell 1", points, "+TP",
              "-1@99 | works buy 1 limit 79 TP | fills sell 1 99"},
             {"below 0 nothing can stand", "quote 5 6; buy 1", both, "+SL", "1@6 | fills buy 1 6 | refuses +SL"},
         }) {
        Account account;
        account.script.run(row.before);
        EXPECT_EQ(account.press(row.ticket, row.button).script.outcome(), row.outcome) << row.name;
    }
}

// Halves away from zero; as they are without a tick.
TEST(SimTicketPlacing, PointsAreRoundedToTicks) {
    Account at;
    at.engine.updateSpecs({{"X", {2, 1}}, {"Y", {0, 1}}});
    const SimTicket points{.useTicks = false};
    EXPECT_EQ(points.toTicks(5, at.engine, "X"), 3);
    EXPECT_EQ(points.toTicks(5, at.engine, "Y"), 5);
    EXPECT_EQ(points.toTicks(5, at.engine, "ZZ"), 5);
}

TEST(SimTicketPlacing, ProtectingButtonsShowWhileTheirOrderIsMissing) {
    Account at;
    SimTicket ticket{.slTicks = 40, .tpTicks = 12, .useTicks = true};
    const auto shown = [&](const std::string& script) {
        at.script.run(script);
        return ticket.protectText(at.engine, "NQ", "SL").value_or("-") + " " +
               ticket.protectText(at.engine, "NQ", "TP").value_or("-");
    };
    EXPECT_EQ(shown("quote 99 100"), "- -");
    EXPECT_EQ(shown("buy 1"), "+ SL (40t) + TP (12t)");
    EXPECT_EQ(shown("root ES; quote 9 10; buy 1; protect SL 5; root NQ; buy 1 limit=5"), "+ SL (40t) + TP (12t)");
    EXPECT_EQ(shown("protect SL 90"), "- + TP (12t)");
    ticket.useTicks = false;
    EXPECT_EQ(shown("cancel 2"), "+ SL (40pt) + TP (12pt)");
}

TEST(SimTicketTexts, NumbersTimesAndPrices) {
    const auto read = [](const char* text) {
        const auto price = sim::readPrice(text);
        return price ? sim::priceText(*price, 2) : "-";
    };
    const std::vector<std::pair<std::string, std::string>> rows{
        {sim::num(12345.5), "12,345.50"},
        {sim::num(-1234567.891), "-1,234,567.89"},
        {sim::num(-123), "-123.00"},
        {sim::num(-0.001), "0.00"},
        {sim::num(std::numeric_limits<double>::infinity()), "∞"},
        {sim::dur(59.4), "59s"},
        {sim::dur(60), "1m"},
        {sim::dur(3599), "60m"},
        {sim::dur(5400), "1.5h"},
        {sim::priceText(24600), "24,600"},
        {sim::priceText(4104.4), "4,104.40"},
        {sim::priceText(99.875), "99.875"},
        {sim::priceText(110.1 + 0.2), "110.30"},
        {sim::pnlText(12.49, 5), "+10.00"},
        {sim::pnlText(-2.4, 5), "+0.00"},
        {sim::pnlText(-12.6, 0), "-15.00"},
        {sim::pnlText(12.49, 12.5), "+12.50"},
        {read("5000,25"), "5,000.25"},
        {read(" 24600 "), "24,600.00"},
        {read("24,600"), "24.60"},
        {read("1,234.5"), "-"},
        {read("0"), "-"},
        {read("-5"), "-"},
        {read("inf"), "-"},
        {read("5 000"), "-"},
        {read(""), "-"},
    };
    for (const auto& [shown, expected] : rows) EXPECT_EQ(shown, expected);
}

TEST(SimTicketTexts, AFieldIsSteppedByTicks) {
    for (const auto& [root, text, steps, expected] : {std::tuple("NQ", "5000,25", 1, "5000.50"),
                                                      {"NQ", "5000,30", -2, "4999.75"},
                                                      {"GC", "4104.3", 1, "4104.40"},
                                                      {"NQ", "", 1, "100.00"},
                                                      {"NQ", "soon", 1, "soon"},
                                                      {"NQ", "0.25", -1, "0.25"},
                                                      {"ZZ", "5", 1, "5"}}) {
        Account at;
        at.script.run("trade 100.1");
        SimTicket ticket{.stopText = text};
        ticket.stepPrice(at.engine, root, OrderType::stop, steps);
        EXPECT_EQ(ticket.stopText, expected) << root << " " << text;
        EXPECT_EQ(ticket.limitText, "");
    }
}

TEST(SimTicketGuard, AsksForWhatIsUnusual) {
    struct Row {
        const char* before;
        Side side;
        OrderType type;
        double limit;
        std::int64_t qty;
        const char* asked;
    };
    for (const Row& row : {
             Row{"", Side::buy, OrderType::market, 0, 20, ""},
             {"", Side::sell, OrderType::market, 0, 21, "Sell market is for 21 contracts"},
             {"buy 15", Side::buy, OrderType::market, 0, 6, "Buy market 6 makes a position of 21 contracts"},
             {"buy 15", Side::sell, OrderType::market, 0, 6, "Sell market is for 21 contracts"},
             {"buy 25", Side::sell, OrderType::limit, 24400, 1, ""},
             {"", Side::buy, OrderType::limit, 24600, 1, "Buy limit 24,600 is 0.6 % through the market"},
             {"", Side::buy, OrderType::limit, 24570, 50, ""},
             {"", Side::sell, OrderType::limit, 24300.25, 1, "Sell limit 24,300.25 is 0.6 % through the market"},
             {"", Side::sell, OrderType::limit, 30000, 1, ""},
             {"", Side::buy, OrderType::stop, 0, 50, ""},
         }) {
        Account at;
        at.script.run(std::string("quote 24452 24453;") + row.before);
        sim::OrderRequest request =
            SimTicket{.qty = row.qty}.request(at.engine, "NQ", row.side, row.type, std::nullopt, std::nullopt);
        if (row.limit > 0) request.limit = row.limit;
        EXPECT_EQ(unusual(request, at.engine).value_or(""), row.asked);
    }
}

// Every subscriber sees the account as the operation leaves it, and hears of each field once.
TEST(SimNotices, ComeOnceBehindAnOperation) {
    using Field = SimEngine::Field;
    for (const auto& [before, script, told] : {
             std::tuple("quote 99 100; buy 2 sl=4 tp=4", "flatten", "BPOFT"),
             {"quote 99 100; buy 2 sl=4 tp=4; protect SL 98", "trade 90", "BPOFT"},
             {"quote 99 100; buy 1 limit=98 sl=4 tp=4; buy 1 limit=97 sl=1", "trade 90", "BPOFT"},
             {"quote 99 100; sell 1", "buy 3 sl=4 tp=4", "BPOFT"},
             {"quote 99 100; buy 2 sl=4 tp=4", "protect TP 110", "O"},
             {"quote 99 100; buy 2 sl=4 tp=4", "cancelAll", "O"},
             {"quote 99 100; buy 2 sl=4 tp=4", "reset 7", "BSPOFT"},
             {"quote 99 100; buy 2 sl=4 tp=4", "trade 99.5", ""},
             {"open 1 NQM6; quote 99 100; buy 2", "open 1 NQU6", "P"},
             {"open 1 NQM6; quote 99 100", "open 1 NQU6", ""},
         }) {
        Account at;
        at.script.run(before);
        std::string heard;
        std::optional<sim::Snapshot> seen;
        const auto link = at.engine.changed.connect([&](Field field) {
            heard += "BSPOFT"[static_cast<std::size_t>(field)];
            EXPECT_EQ(seen.value_or(at.engine.snapshot()), at.engine.snapshot()) << heard;
            seen = at.engine.snapshot();
        });
        at.script.run(script);
        EXPECT_EQ(heard, told) << before << " | " << script;
        EXPECT_EQ(seen.value_or(at.engine.snapshot()), at.engine.snapshot()) << script;
    }
}

}  // namespace
}  // namespace vmr::test
