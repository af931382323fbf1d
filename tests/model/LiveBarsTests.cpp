// Bars that live: trades, the clock's roll, the display series and its pace.
#include <cmath>
#include <random>

#include "model/BarRollSelfTest.h"
#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LiveBars : public PaneFixture {
 protected:
    using PaneFixture::PaneFixture;
    void openWithBars(int count = 1, const std::string& symbol = "NQ") {
        openSymbol(symbol);
        snapshot(model->chartChannel, flatBars(minute - (count - 1) * 60, count));
        takeLog();
        time.advance(0.1);
    }
    void trade(double price, double seconds) { model->applyTrade(price, seconds * 1000); }
};

TEST_F(LiveBars, TradesStartNoHistory) {
    openSymbol("NQ");
    const auto version = model->chartVersion;
    trade(5, minute);
    model->applySecondaryTrade(5, minute * 1000.0);
    time.advance(0.5);
    EXPECT_THAT(model->candles, IsEmpty());
    EXPECT_THAT(model->secondaryCandles, IsEmpty());
    EXPECT_EQ(model->chartVersion, version) << "nothing was scheduled";
}

TEST_F(LiveBars, ATradeBelongsToItsMinute) {
    openWithBars();
    trade(103, minute + 59.999);
    EXPECT_THAT(model->candles, ElementsAre(Candle{minute, 100, 103, 100, 103, 1}));
    trade(103, minute + 59.999);
    EXPECT_THAT(model->candles, ElementsAre(Candle{minute, 100, 103, 100, 103, 1}));
    trade(99, minute + 60.0);
    EXPECT_THAT(model->candles,
                ElementsAre(Candle{minute, 100, 103, 100, 103, 1}, Candle{minute + 60, 103, 103, 99, 99, 0}));
    trade(110, minute + 300.0);
    EXPECT_EQ(model->candles.back(), (Candle{minute + 300, 99, 110, 99, 110, 0})) << "the gap stays";
    const auto bars = model->candles;
    const auto version = model->chartVersion;
    time.advance(0.5);
    const auto rebuilt = model->chartVersion;
    EXPECT_GT(rebuilt, version);
    trade(1, minute + 299.999);
    trade(1, minute - 1000.0);
    trade(1, -1.0);
    EXPECT_EQ(model->candles, bars) << "too old";
    time.advance(0.4);
    EXPECT_EQ(model->chartVersion, rebuilt + 1) << "but the display is rebuilt";
}

TEST_F(LiveBars, TheSecondInstrumentFollowsTheSameRule) {
    openSymbol("NQ");
    snapshot("futures:ESM6", flatBars(minute, 1));
    const auto version = model->chartVersion;
    model->applySecondaryTrade(103, minute * 1000.0 + 59'999);
    model->applySecondaryTrade(99, minute * 1000.0 + 60'000);
    model->applySecondaryTrade(5, minute * 1000.0 + 59'999);
    EXPECT_THAT(model->secondaryCandles,
                ElementsAre(Candle{minute, 100, 103, 100, 103, 1}, Candle{minute + 60, 103, 103, 99, 99, 0}));
    time.advance(0.5);
    EXPECT_EQ(model->chartVersion, version);
    snapshot("futures:ESM6", flatBars(minute - 4999 * 60, 5000));
    model->applySecondaryTrade(7, minute * 1000.0 + 120'000);
    EXPECT_EQ(model->secondaryCandles.size(), 5000u);
    EXPECT_EQ(model->secondaryCandles.front().time, minute - 4997 * 60);
}

TEST_F(LiveBars, SeriesStayAtTheirCap) {
    openWithBars(5000);
    trade(101, minute + 60);
    EXPECT_EQ(model->candles.size(), 5000u);
    EXPECT_EQ(model->candles.front().time, minute - 4998 * 60);
    model->candles.insert(model->candles.begin(), 3, Candle{1, 1, 1, 1, 1, 1});
    time.advance(120);  // two rolls
    EXPECT_EQ(model->candles.size(), 5000u);
    EXPECT_EQ(model->candles.front().time, minute - 4997 * 60);
    EXPECT_EQ(model->candles.back(), (Candle{minute + 120, 101, 101, 101, 101, 0}));
}

TEST_F(LiveBars, ABurstCostsOneRebuild) {
    openWithBars();
    const auto version = model->chartVersion;
    int signals = 0;
    const auto watching = model->chartVersionChanged.connect([&] { ++signals; });
    for (int i = 0; i < 100; ++i) trade(100 + i, minute);
    EXPECT_EQ(model->chartVersion, version);
    EXPECT_EQ(model->displayCandles->back().close, 100);
    time.advance(1.0 / 120 - 0.0001);
    EXPECT_EQ(model->chartVersion, version);
    trade(250, minute);
    time.advance(0.0002);
    EXPECT_EQ(model->chartVersion, version + 1);
    EXPECT_EQ(signals, 1);
    EXPECT_EQ(model->displayCandles->back().close, 250);
    trade(251, minute);
    time.advance(1.0 / 120);
    EXPECT_EQ(model->chartVersion, version + 2);
}

TEST_F(LiveBars, AFlatBarComesOnceAMinuteWhileConnectedAndOpen) {
    openWithBars();
    time.advance(59.8);
    EXPECT_EQ(model->candles.size(), 1u);
    time.advance(0.1);
    EXPECT_THAT(model->candles,
                ElementsAre(Candle{minute, 100, 100, 100, 100, 1}, Candle{minute + 60, 100, 100, 100, 100, 0}));
    EXPECT_EQ(model->displayCandles->size(), 2u) << "at once, not paced";
    const auto version = model->chartVersion;
    for (int i = 0; i < 3; ++i) model->rollForwardBarIfNeeded();
    time.advance(59);
    EXPECT_EQ(model->candles.size(), 2u);
    EXPECT_EQ(model->chartVersion, version);

    sockets.last().close(1006);
    time.advance(0.5);
    time.setNow(minute + 300);
    model->rollForwardBarIfNeeded();
    EXPECT_EQ(model->candles.size(), 2u) << "not while the connection is down";
    time.advance(0.5);
    greet();
    EXPECT_EQ(model->candles.size(), 2u);
    event("any", "1");
    EXPECT_EQ(model->candles.size(), 3u) << "with the first message after it";
    EXPECT_EQ(model->candles.back().time, minute + 300) << "one bar; the missing minutes stay missing";
}

TEST_F(LiveBars, EveryMessageRollsFirst) {
    openWithBars();
    for (int round = 1; round < 4; ++round) {  // the clock jumps ahead of the timer
        time.setNow(wednesdayAt10 + round * 120);
        batch("any", "[1,2]");
        EXPECT_EQ(model->candles.back().time, minute + round * 120);
        time.setNow(wednesdayAt10 + round * 120 + 60);
        event("any", "1");
        EXPECT_EQ(model->candles.back().time, minute + round * 120 + 60);
    }
    EXPECT_EQ(model->candles.size(), 7u);
}

TEST_F(LiveBars, AClosedMarketInventsNoBarsButTradesStillMakeThem) {
    const double day = wednesdayAt10 - 10 * 3600;  // New York midnight
    const struct {
        const char* symbol;
        double at;  // seconds from midnight
        bool rolls;
    } cases[] = {{"AAPL", 16 * 3600 + 30, false},
                 {"AAPL", 15 * 3600 + 59 * 60 + 30, true},
                 {"NQ", 17.5 * 3600, false},
                 {"NQ", 16 * 3600 + 30, true},
                 {"NQ", 18 * 3600, true},
                 {"AAPL", 9 * 3600, false},
                 {"NQ", 3 * 86400 + 12 * 3600, false}};  // a Saturday
    for (const auto& c : cases) {
        openWithBars(1, c.symbol);
        model->candles = {{minute - 86400, 100, 100, 100, 100, 1}};
        time.setNow(day + c.at);
        model->rollForwardBarIfNeeded();
        EXPECT_EQ(model->candles.size(), c.rolls ? 2u : 1u) << c.symbol << " " << c.at;
        trade(101, day + c.at + 60);
        EXPECT_EQ(model->candles.size(), c.rolls ? 3u : 2u) << c.symbol << " " << c.at;
        time.setNow(wednesdayAt10);
    }
}

class OffTheSecond : public LiveBars {
 protected:
    OffTheSecond() : LiveBars(wednesdayAt10 + 58.25) {}
};

TEST_F(OffTheSecond, TheRollTimerFiresOnWholeSeconds) {
    openWithBars();  // a tenth of a second passes
    time.advance(1.6);
    EXPECT_EQ(model->candles.size(), 1u);
    time.advance(0.06);
    EXPECT_EQ(model->candles.size(), 2u);
    model->candles.pop_back();
    time.advance(0.97);
    EXPECT_EQ(model->candles.size(), 1u) << "and not between them";
    time.advance(0.03);
    EXPECT_EQ(model->candles.size(), 2u);
}

class FastClock : public LiveBars {
 protected:
    FastClock() : LiveBars(wednesdayAt10 + 0.5, 60) {}
};

TEST_F(FastClock, AScaledClockRollsOnItsOwnWholeSeconds) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    time.advance(59.49 / 60);
    EXPECT_EQ(model->candles.size(), 1u);
    time.advance(0.02 / 60);
    EXPECT_EQ(model->candles.size(), 2u);
    time.advance(9);
    EXPECT_EQ(model->candles.size(), 11u) << "a minute of the market each second";
}

TEST_F(LiveBars, PriceRisingComparesClosesOfRebuilds) {
    openSymbol("NQ");
    model->priceRising = false;
    snapshot("futures:NQM6", flatBars(minute, 1));
    EXPECT_FALSE(model->priceRising) << "nothing to compare with yet";
    model->rebuildDisplay();
    EXPECT_TRUE(model->priceRising) << "equal counts as rising";
    trade(99, minute);
    EXPECT_TRUE(model->priceRising);
    time.advance(0.1);
    EXPECT_FALSE(model->priceRising);
    model->reloadChart();
    snapshot("futures:NQM6", flatBars(minute, 1, 500));
    EXPECT_FALSE(model->priceRising) << "a new chart starts anew";
    model->candles.clear();
    model->rebuildDisplay();
    EXPECT_THAT(model->displayCandles.get(), IsEmpty());
}

TEST_F(LiveBars, TheTimeframeIsStoredAndAppliedAtOnce) {
    openWithBars(12);
    const auto version = model->chartVersion;
    model->setTimeframe(5);
    EXPECT_EQ(model->chartVersion, version + 1);
    EXPECT_THAT(model->displayCandles.get(),
                ElementsAre(Candle{minute - 900, 100, 100, 100, 100, 1}, Candle{minute - 600, 100, 100, 100, 100, 5},
                            Candle{minute - 300, 100, 100, 100, 100, 5}, Candle{minute, 100, 100, 100, 100, 1}));
    EXPECT_EQ(preferences.get("gex-timeframe"), "5");
    for (const auto& [asked, stored] :
         {std::pair<std::int64_t, const char*>{0, "1"}, {-7, "1"}, {INT64_MAX, "2147483647"}}) {
        model->setTimeframe(asked);
        EXPECT_EQ(preferences.get("gex-timeframe"), stored);
    }
    EXPECT_EQ(model->candles.size(), 12u);
}

TEST(Aggregate, EqualsGroupingByDivision) {
    std::mt19937 random(5);
    std::vector<Candle> out;
    for (int round = 0; round < 500; ++round) {
        std::vector<Candle> bars;
        std::int64_t at = round % 3 == 0 ? -120'000 : round % 3 == 1 ? 1'781'100'000 : 0;
        for (auto left = random() % 200; left > 0; --left) {
            at += 60 * static_cast<std::int64_t>(1 + (random() % 4 == 0 ? random() % 30 : 0));
            const auto p = [&] { return static_cast<double>(random() % 1000) / 4; };
            bars.push_back({at, p(), p(), p(), p(), p()});
        }
        const int tf = static_cast<int>(random() % 20) - 2;
        std::vector<Candle> expected = bars;
        if (tf >= 2) {
            expected.clear();
            for (const Candle& bar : bars) {
                const std::int64_t bucket = bar.time / (tf * 60) * (tf * 60);
                if (expected.empty() || expected.back().time != bucket) {
                    expected.push_back(bar);
                    expected.back().time = bucket;
                } else {
                    Candle& one = expected.back();
                    one = {bucket,
                           one.open,
                           std::max(one.high, bar.high),
                           std::min(one.low, bar.low),
                           bar.close,
                           one.volume + bar.volume};
                }
            }
        }
        aggregate(bars, tf, out);
        ASSERT_EQ(out, expected) << "tf " << tf;
    }
    const std::vector<Candle> bars{{43380, 1, 5, 1, 2, 1}, {43440, 2, 3, 0, 3, 2}, {43500, 3, 3, 3, 3, 4}};
    aggregate(bars, 5, out);  // 12:03, 12:04, 12:05
    EXPECT_THAT(out, ElementsAre(Candle{43200, 1, 5, 0, 3, 3}, Candle{43500, 3, 3, 3, 3, 4}));
}

TEST(Aggregate, TimesAtTheEndsOfTheirRangeAreHarmless) {
    std::vector<Candle> out;
    const std::vector<Candle> bars{{INT64_MIN, 1, 1, 1, 1, 1}, {0, 1, 1, 1, 1, 1}, {INT64_MAX, 1, 1, 1, 1, 1}};
    for (const int tf : {2, 1440, INT32_MAX}) {
        aggregate(bars, tf, out);
        EXPECT_EQ(out.size(), 3u);
    }
}

TEST(BarRollSelfTest, PassesWithItsText) {
    const BarRollResult result = runBarRollSelfTest();
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.summary,
              "futuros quieto: OK — 121 barras em 120 min\n"
              "  futuros ativo: OK — 121 barras em 120 min\n"
              "  ações quieto: OK — 301 barras em 300 min\n"
              "  ações ativo: OK — 301 barras em 300 min");
}

}  // namespace
}  // namespace vmr::test
