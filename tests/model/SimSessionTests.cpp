// A scripted trading session on a recorded practice market: the pane feeds the account, and every run ends alike.
#include <gmock/gmock.h>

#include "model/RecordedMarket.h"
#include "sim/SimEngine.h"
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
    const auto steps = std::to_array<std::pair<double, std::function<void()>>>(
        {{60,
          [&] {
              market(Side::buy, 1, sim::BracketSpec{400, 8});
          }},
         {700,
          [&] {
              market(Side::buy, 1, sim::BracketSpec{400, 400});
          }},
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
    const std::string document = stateDocument(pane.time, {}, &engine);
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

}  // namespace
}  // namespace vmr::test
