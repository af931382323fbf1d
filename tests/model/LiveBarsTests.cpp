// Bars that live: the clock's roll, the display series and its pace.
#include "model/BarRollSelfTest.h"
#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

class LiveBars : public PaneFixture {
 protected:
    using PaneFixture::PaneFixture;
    void openWithBars(int count = 1) {
        openSymbol("NQ");
        snapshot(model->chartChannel, flatBars(minute - (count - 1) * 60, count));
        time.advance(0.1);
    }
    void trade(double price, double seconds) { model->applyTrade(price, seconds * 1000); }
};

TEST_F(LiveBars, TradesStartNoHistory) {
    openSymbol("NQ");
    trade(5, minute);
    model->applySecondaryTrade(5, minute * 1000.0);
    EXPECT_TRUE(model->candles.empty() && model->secondaryCandles.empty());
}

TEST_F(LiveBars, ABurstCostsOneRebuild) {
    openWithBars();
    const auto version = model->chartVersion;
    int signals = 0;
    const auto watching = model->chartVersionChanged.connect([&] { ++signals; });
    for (int i = 0; i < 100; ++i) trade(100 + i, minute);
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

TEST_F(LiveBars, AFlatBarComesOnceAMinuteWhileConnected) {
    openWithBars();
    time.advance(59.8);
    EXPECT_EQ(model->candles.size(), 1u);
    time.advance(0.1);
    EXPECT_THAT(model->candles,
                ElementsAre(Candle{minute, 100, 100, 100, 100, 1}, Candle{minute + 60, 100, 100, 100, 100, 0}));
    EXPECT_EQ(model->displayCandles->size(), 2u) << "at once, not paced";
    sockets.last().close(1006);
    time.advance(0.5);
    time.setNow(minute + 300);
    model->rollForwardBarIfNeeded();
    EXPECT_EQ(model->candles.size(), 2u) << "not while the connection is down";
    time.advance(0.5);
    greet();
    event("any", "1");
    EXPECT_EQ(model->candles.size(), 3u) << "with the first message after it";
    EXPECT_EQ(model->candles.back().time, minute + 300) << "one bar; the missing minutes stay missing";
    time.setNow(minute + 360);  // the clock jumps ahead of the timer
    batch("any", "[1,2]");
    EXPECT_EQ(model->candles.back().time, minute + 360);
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
    time.advance(0.1);
    EXPECT_FALSE(model->priceRising);
}

TEST_F(LiveBars, TheTimeframeIsStoredAndAppliedAtOnce) {
    openWithBars(12);
    model->setTimeframe(5);
    EXPECT_EQ(model->displayCandles->size(), 4u);
    for (const auto& [asked, stored] :
         {std::pair<std::int64_t, const char*>{5, "5"}, {-7, "1"}, {INT64_MAX, "2147483647"}}) {
        model->setTimeframe(asked);
        EXPECT_EQ(preferences.get("gex-timeframe"), stored);
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
