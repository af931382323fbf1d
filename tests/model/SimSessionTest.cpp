// A scripted trading session on a recorded practice market: the pane feeds the account, and every run ends alike.
#include <gmock/gmock.h>

#include <filesystem>

#include "market/SessionTime.h"
#include "model/RecordedMarket.h"
#include "model/SimTrading.h"
#include "model/TestPane.h"
#include "sim/SimEngine.h"
#include "support/SyntheticMarket.h"

namespace vmr::test {
namespace {

using sim::OrderType;
using sim::Side;

class SimSession : public testing::Test {
 protected:
    SimSession() : file_(std::filesystem::temp_directory_path() / ("velmora-" + UuidSource().next().text())) {
        using namespace date::literals;
        const auto friday = date::local_days(2026_y / 6 / 5);
        start_ = newYorkMoment(friday, 16, 40);
        record(file_.string(), 11, "M6", {{start_, newYorkMoment(friday, 17, 2), 1}});
    }
    ~SimSession() override {
        std::error_code ignored;
        std::filesystem::remove(file_, ignored);
    }

    /// Trades through the recording; what happened, and the account at the end as the state document tells it.
    std::pair<std::vector<std::string>, std::string> run() {
        TestPane pane(static_cast<double>(start_));
        SessionTime session;
        SimEngine engine({pane.time, session, UuidSource(5)});
        pane.sim = &engine;
        pane.openSymbol("NQ");
        std::vector<std::string> told;
        std::size_t fills = 0;
        const auto note = [&] {
            for (; fills < engine.fills().size(); ++fills) {
                const auto& fill = engine.fills()[engine.fills().size() - 1 - fills];
                const auto position = engine.positions().at("NQ").qty;
                told.push_back(std::string(rawText(fill.side)) + (fill.tag.empty() ? "" : " " + fill.tag) + " -> " +
                               std::to_string(position) + ", working " + std::to_string(engine.orders().size()));
            }
        };
        const auto steps = std::to_array<std::pair<std::int64_t, std::function<void()>>>(
            {{60,
              [&] {
                  engine.place("NQ", Side::buy, OrderType::market, 1, {}, {}, sim::BracketSpec{400, 8});
              }},
             {700,
              [&] {
                  engine.place("NQ", Side::buy, OrderType::market, 1, {}, {}, sim::BracketSpec{400, 400});
              }},
             {760, [&] { engine.place("NQ", Side::sell, OrderType::market, 3); }},
             {820, [&] { engine.flatten("NQ"); }},
             {1190, [&] { engine.place("NQ", Side::buy, OrderType::limit, 1, 1000); }},
             {1260, [&] {
                  if (engine.place("NQ", Side::buy, OrderType::market, 1)) told.push_back("filled in a closed market");
              }}});
        std::string error;
        const auto reader = RecordingReader::open(file_, error);
        EXPECT_TRUE(reader) << error;
        std::size_t step = 0;
        const auto playTo = [&](double t) {
            if (t > pane.time.now()) pane.time.advance(t - pane.time.now());
        };
        const auto stepsUntil = [&](double t) {
            for (; step < steps.size() && static_cast<double>(start_ + steps[step].first) <= t; ++step) {
                playTo(static_cast<double>(start_ + steps[step].first));
                steps[step].second();
                note();
            }
        };
        for (const RecordedFrame* frame; (frame = reader->peek()) != nullptr; reader->pop()) {
            const double t = static_cast<double>(frame->timeMs) / 1000;
            stepsUntil(t);
            playTo(t);
            pane.frame(*frame->frame.bytes);
            note();
        }
        stepsUntil(static_cast<double>(start_ + 1320));
        const std::string document = stateDocument(pane.time, {}, &engine);
        pane.model.reset();
        return {told, document};
    }

 private:
    std::filesystem::path file_;
    std::int64_t start_;
};

TEST_F(SimSession, EndsAlikeOnEveryRun) {
    const auto [told, account] = run();
    EXPECT_THAT(told, testing::ElementsAre("buy -> 1, working 2", "sell TP -> 0, working 0", "buy -> 1, working 2",
                                           "sell -> -2, working 0", "buy -> 0, working 0"));
    EXPECT_NE(account.find("\"limitPrice\": 1000.0"), std::string::npos) << "the far order still rests";
    const auto again = run();
    EXPECT_EQ(again.first, told);
    EXPECT_EQ(again.second, account);
}

}  // namespace
}  // namespace vmr::test
