// A random day's trades against a plain computation of the bars, written from the rules alone.
#include <cmath>
#include <random>

#include "model/PlainBars.h"
#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

class BarOracle : public PaneFixture {
 protected:
    std::mt19937 random{42};
    double price = 100;

    std::int64_t below(std::int64_t n) { return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(n)); }

    // Mostly now; sometimes late, far too late, or ahead of the local clock; quarters of a millisecond.
    double tradeTime() {
        const double now = time.now() * 1000;
        const std::int64_t kind = below(8);
        if (kind == 0) return now - static_cast<double>(below(200'000));
        if (kind == 1) return now - static_cast<double>(below(5'000)) * 0.25;
        if (kind == 2) return now + static_cast<double>(below(3) == 0 ? below(150'000) : 0);
        return kind == 3 ? std::floor(now / 60'000) * 60'000 : now;
    }

    void play(const std::string& symbol, double start, int steps) {
        time.setNow(start - 60);
        openSymbol(symbol);
        const std::string chart = model->channels->chartChannel;
        const std::string other = symbol == "NQ" ? model->channels->secondaryChannel : "futures:none";
        PlainBars plain(symbol == "AAPL", true), plainOther(false, false);
        for (const std::string& channel : {chart, other}) event(channel + ":trades", R"({"price":5})");
        EXPECT_TRUE(model->bars.candles.empty() && model->bars.secondaryCandles.empty()) << "trades start no history";
        const int count = symbol == "NQ" ? 4990 : 6000;
        const auto first = static_cast<std::int64_t>(start) / 60 * 60 - count * 60;
        Bars history;
        for (int i = 0; i < count; ++i) history.push_back({first + i * 60, 100, 100, 100, 100, 1});
        plain.merge(history);
        if (symbol == "NQ") plainOther.merge(history);
        for (const std::string& channel : {chart, other}) snapshot(channel, flatBars(first, count));
        plain.roll(time.now());
        for (int step = 0; step < steps; ++step) {
            const double before = time.now();
            const double after = before + static_cast<double>(below(10) == 0 ? below(800) : below(28)) * 0.25;
            time.advance(after - before);
            for (double second = std::floor(before) + 1; second <= after; ++second) plain.roll(second);
            plain.roll(after);  // each message rolls first
            if (below(20) == 0) {
                const auto at = static_cast<std::int64_t>(after) / 60 * 60 - 120;
                const double p = price + static_cast<double>(below(9));
                plain.merge({{at, p, p, p, p, 1}, {at + 60, p, p, p, p, 1}});
                event(chart + ":1m", flatBars(at, 2, p));
                continue;
            }
            std::string events, otherEvents;
            for (auto left = below(4); left >= 0; --left) {
                if (below(5) != 0) price += static_cast<double>(below(9) - 4) * 0.25;
                const bool stamped = below(6) != 0;
                const double ts = stamped ? tradeTime() : after * 1000;
                const std::string stamp = stamped ? R"(,"ts":)" + std::to_string(ts) : "";
                plain.trade(price, ts);
                plainOther.trade(price / 2, ts);
                events += R"({"price":)" + std::to_string(price) + stamp + "},";
                otherEvents += R"({"price":)" + std::to_string(price / 2) + stamp + "},";
            }
            batch(chart + ":trades", "[" + events + R"({"price":"nan"}])");
            batch(other + ":trades", "[" + otherEvents + "7]");
            ASSERT_EQ(model->bars.candles, plain.bars()) << "step " << step << " at " << std::to_string(after);
            ASSERT_EQ(model->bars.secondaryCandles, plainOther.bars())
                << "step " << step << " at " << std::to_string(after);
        }
        for (const int minutes : {1, 5, 7, 60}) {
            model->setTimeframe(minutes);
            EXPECT_EQ(model->bars.displayCandles.get(), plainAggregate(plain.bars(), minutes));
        }
        EXPECT_EQ(model->bars.candles.size(), 5000u) << "the run is to reach the cap";
        event(chart + ":1m", flatBars(model->bars.candles.back().time + 60, 1));
        EXPECT_EQ(model->sessionLevels.srLines.get(), plainLines(model->bars.candles, {}, model->sessionHHMM()))
            << "the oldest bar is gone";
    }
};

// From 16:40 New York on a Wednesday, through the futures' halt, into the evening.
TEST_F(BarOracle, FuturesAcrossTheHalt) { play("NQ", wednesdayAt10 + 6 * 3600 + 40 * 60, 2500); }

// From 15:40, past the close of the stock market.
TEST_F(BarOracle, AStockAcrossTheClose) { play("AAPL", wednesdayAt10 + 5 * 3600 + 40 * 60, 1500); }

}  // namespace
}  // namespace vmr::test
