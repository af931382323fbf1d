// A scripted trading session on a recorded practice market: the pane feeds the account, and every run ends alike.
#include <gmock/gmock.h>

#include <filesystem>

#include "model/RecordedMarket.h"
#include "model/SimTrading.h"
#include "sim/SimEngine.h"
#include "sim/SimStore.h"
#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

using sim::OrderType;
using sim::Side;

/// Trades through the recording of a market that starts at `start`; what happened, and the account at the end as the
/// state document tells it.
std::pair<std::vector<std::string>, std::string> trade(const std::vector<relay::RecordedFrame>& frames, double start) {
    TestPane pane(start);
    SessionTime session;
    SimEngine engine({pane.time, session, UuidSource(5)});
    pane.sim = &engine;
    pane.openSymbol("NQ");
    std::vector<std::string> told;
    std::size_t fills = 0;
    const auto note = [&] {
        for (; fills < engine.fills().size(); ++fills) {
            const auto& fill = engine.fills()[engine.fills().size() - 1 - fills];
            told.push_back(std::string(rawText(fill.side)) + (fill.tag.empty() ? "" : " " + fill.tag) + " -> " +
                           std::to_string(engine.positions().at("NQ").qty) + ", working " +
                           std::to_string(engine.orders().size()));
        }
    };
    const auto market = [&](Side side, int qty, std::optional<sim::BracketSpec> bracket = {}) {
        return engine.place("NQ", side, OrderType::market, qty, {}, {}, bracket).has_value();
    };
    const sim::BracketSpec near{400, 8}, far{400, 400};
    const auto steps = std::to_array<std::pair<double, std::function<void()>>>(
        {{60, [&] { market(Side::buy, 1, near); }},
         {700, [&] { market(Side::buy, 1, far); }},
         {760, [&] { market(Side::sell, 3); }},
         {820, [&] { engine.flatten("NQ"); }},
         {1190, [&] { engine.place("NQ", Side::buy, OrderType::limit, 1, 1000); }},
         {1260, [&] { EXPECT_FALSE(market(Side::buy, 1)) << "the market is closed"; }}});
    auto step = steps.begin();
    const auto playTo = [&](double t) {
        for (; step != steps.end() && start + step->first <= t; ++step) {
            pane.time.advance(std::max(0.0, start + step->first - pane.time.now()));
            step->second();
            note();
        }
        pane.time.advance(std::max(0.0, t - pane.time.now()));
    };
    for (const relay::RecordedFrame& frame : frames) {
        playTo(static_cast<double>(frame.timeMs) / 1000);
        pane.frame(*frame.frame.bytes);
        note();
    }
    playTo(start + 1320);
    const std::string document = stateDocument({pane.time, {}, &engine});
    pane.model.reset();
    return {told, document};
}

TEST(SimSession, EndsAlikeOnEveryRun) {
    using namespace date::literals;
    const date::local_days friday(2026_y / 6 / 5);
    const std::int64_t start = newYorkMoment(friday, 16, 40);
    const auto frames = record(11, "M6", {{start, newYorkMoment(friday, 17, 2), 1}});
    const auto [told, account] = trade(frames, static_cast<double>(start));
    EXPECT_THAT(told, testing::ElementsAre("buy -> 1, working 2", "sell TP -> 0, working 0", "buy -> 1, working 2",
                                           "sell -> -2, working 0", "buy -> 0, working 0"));
    EXPECT_NE(account.find("\"limitPrice\": 1000.0"), std::string::npos) << "the far order still rests";
    const auto again = trade(frames, static_cast<double>(start));
    EXPECT_EQ(again.first, told);
    EXPECT_EQ(again.second, account);
}

/// A pane on NQ with its account, which is long 1 at 100 with a stop at 95 and has seen no trade.
class SimPane : public PaneFixture {
 protected:
    SimPane() {
        sim = &engine;
        engine.onQuote("NQ", 100, 100);
        engine.place("NQ", Side::buy, OrderType::market, 1);
        engine.setProtective("NQ", "SL", 95);
    }
    ~SimPane() override { model.reset(); }
    void trade(const std::string& contract, const std::string& price, double ageSeconds = 0) {
        event("futures:" + contract + ":trades",
              R"({"price":)" + price + R"(,"ts":)" + std::to_string((time.now() - ageSeconds) * 1000) + "}");
    }
    std::size_t fills() const { return engine.fills().size(); }

    SessionTime account;
    SimEngine engine{{time, account, UuidSource(5)}};
};

TEST_F(SimPane, AnOldContractsPricesReachNoOrder) {
    engine.watch(this, "ES", "ESM6");
    engine.onTrade("ES", 50);
    engine.watch(this, "", "");
    openSymbol("NQ");
    const auto showOld = [&] {
        snapshot("futures:NQM6", flatBars(minute - 120, 3, 90));
        event("futures:NQM6:quote", R"({"bid":90,"ask":90.25})");
        trade("NQM6", "90");
    };
    showOld();
    EXPECT_EQ(fills(), 1u) << "which contract is the front one is not known yet";
    event("meta:contracts", R"({"map":{"NQ":"NQU6","ES":"ESU6"}})");
    EXPECT_EQ(engine.last("ES"), std::nullopt) << "a root that no pane shows rolls, too";
    showOld();
    snapshot("futures:NQU6", flatBars(minute - 120, 3, 101));
    event("futures:NQU6:quote", R"({"bid":101,"ask":101.25})");
    EXPECT_EQ(fills(), 1u);
    EXPECT_EQ(engine.last("NQ"), 101);
    trade("NQU6", "94", 200);
    EXPECT_EQ(fills(), 1u) << "a trade that the bars refuse as too old";
    model->openChart("futures:NQZ6", "");
    EXPECT_EQ(engine.last("NQ"), std::nullopt);
    trade("NQZ6", "94");
    EXPECT_EQ(fills(), 2u);
    EXPECT_EQ(engine.openTrades().size(), 0u);
    EXPECT_TRUE(engine.watches().connected("NQ"));
    sockets.last().close(1006);
    time.runUntilIdle();
    EXPECT_FALSE(engine.watches().connected("NQ"));
    model->shutdown();
    EXPECT_FALSE(engine.watches().watched("NQ"));
}

TEST_F(SimPane, WithoutTheContractsTheBuiltInOneCountsAfterTwoSeconds) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 120, 3, 90));
    model->switchSymbol("ES");
    for (const double price : {50, 51}) snapshot("futures:ESM6", flatBars(minute - 120, 3, price));
    for (const bool known : {false, true}) {
        time.advance(known ? 0.2 : 1.9);
        EXPECT_EQ(engine.last("ES").has_value(), known);
    }
    EXPECT_EQ(engine.last("ES"), 50) << "a seed is the first price";
    EXPECT_EQ(engine.last("NQ"), std::nullopt) << "of a chart that has gone";
    time.advance(15.1);
    EXPECT_TRUE(engine.stalePrice("ES")) << "though the bar lasts longer";
}

TEST_F(SimPane, ThePaneShowsTheAccountsProblemForAsLongAsItLasts) {
    const auto folder = std::filesystem::temp_directory_path() / ("sim-session-" + UuidSource().next().text());
    const auto file = folder / "account.json";
    auto other = std::make_unique<SimStore>(file, time);
    SimEngine kept({time, account, UuidSource(6), std::make_shared<SimStore>(file, time), &main, &queue, {}, {}});
    sim = &kept;
    make();
    time.advance(30);
    EXPECT_THAT(model->notices.accountProblem.get().value_or(""), testing::HasSubstr("another Velmora has it"));
    EXPECT_THAT(stateDocument({time, {}, &kept}), testing::HasSubstr("\"keepsAccount\": false"));

    // nor does the chart change anything of it
    kept.onQuote("NQ", 100, 100.25);
    kept.place("NQ", Side::buy, OrderType::market, 1, {}, {}, sim::BracketSpec{4, 4});
    const auto entry = *kept.place("NQ", Side::buy, OrderType::limit, 1, 90, {}, sim::BracketSpec{4, {}});
    std::vector<std::string> refused;
    SimTrading trading(kept, [&](const std::string& reason) { refused.push_back(reason); });
    const auto tryAll = [&] {
        trading.place("NQ", "sell", "limit", 120);
        trading.modifyProjectedLeg(entry.id, "SL", 80);
        trading.modify(entry.id, 91);
        trading.setProtective("NQ", "SL", 95);
        trading.cancel(entry.id);
        trading.flatten("NQ");
        trading.cancelAll("NQ");
        return trading.mayChange();
    };
    const auto before = kept.snapshot();
    EXPECT_FALSE(tryAll());
    EXPECT_EQ(kept.snapshot(), before);
    EXPECT_EQ(refused, std::vector<std::string>(8, *kept.problem()));
    other.reset();
    time.advance(2);
    EXPECT_FALSE(model->notices.accountProblem.get().has_value());
    trading.place("NQ", "sell", "limit", 120);
    EXPECT_EQ(std::pair(kept.orders().size(), refused.size()), std::pair(std::size_t{1}, std::size_t{8}));
    model.reset();
    std::filesystem::remove_all(folder);
}

/// Two trades of one second, 30 points apart.
struct Jump final : relay::TradeSource {
    void minuteTrades(std::int64_t minute, std::vector<relay::Trade>& trades) override {
        trades.clear();
        if (minute != static_cast<std::int64_t>(TestPane::wednesdayAt10)) return;
        trades = {{minute * 1000 + 1000, 20000, 1, 19999.75, 20000.25},
                  {minute * 1000 + 1500, 19970, 1, 19969.75, 19970.25}};
    }
    std::int64_t historyStart(std::int64_t t) override { return t - 600; }
};

TEST_F(SimPane, AStopThatIsJumpedOverFillsAtTheQuoteOfThatTrade) {
    openSymbol("NQ");
    event("meta:contracts", R"({"map":{"NQ":"NQM6"}})");
    engine.place("NQ", Side::sell, OrderType::stop, 1, {}, 19990);
    struct Socket final : relay::Subscriber {
        explicit Socket(TestPane& to) : pane(to) {}
        void send(const relay::Frame& frame) override { pane.frame(*frame.bytes); }
        TestPane& pane;
    } socket(*this);
    relay::ChannelHub hub;
    hub.add(std::make_unique<relay::MarketPublisher>(hub, 1, relay::Rush{}, relay::findTradable("NQ"),
                                                     std::make_unique<Jump>()));
    hub.subscribe(socket, {"futures:NQM6", "futures:NQM6:trades", "futures:NQM6:quote"}, minute * 1000);
    hub.tick(minute * 1000 + 2000);
    EXPECT_EQ(engine.fills().front().price, 19969.75);
    hub.leave(socket);
}

}  // namespace
}  // namespace vmr::test
