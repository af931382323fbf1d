#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numeric>

#include "market/ClockSetting.h"
#include "relay/BarBook.h"
#include "relay/Feed.h"
#include "relay/MarketTime.h"
#include "relay/SimulatedMarket.h"

namespace vmr {
namespace {

std::int64_t at(const char* moment) { return static_cast<std::int64_t>(*parseMoment(moment)); }

const Instrument& instrument(Family family, const char* symbol) { return *findInstrument(family, symbol); }

struct Market {
    explicit Market(std::uint64_t seed) : simulated(seed, calendar) {}
    std::vector<Candle> bars(Family family, const char* symbol, const char* from, const char* end) {
        const auto source = simulated.source(instrument(family, symbol));
        return BarBook(*source).closed(at(from), at(end));
    }
    SessionCalendar calendar;
    SimulatedMarket simulated;
};

double correlation(const std::vector<double>& a, const std::vector<double>& b) {
    const auto n = static_cast<double>(a.size());
    const double meanA = std::accumulate(a.begin(), a.end(), 0.0) / n;
    const double meanB = std::accumulate(b.begin(), b.end(), 0.0) / n;
    double ab = 0, aa = 0, bb = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        ab += (a[i] - meanA) * (b[i] - meanB);
        aa += (a[i] - meanA) * (a[i] - meanA);
        bb += (b[i] - meanB) * (b[i] - meanB);
    }
    return ab / std::sqrt(aa * bb);
}

/// Close-to-close returns of the minutes that both series have.
std::pair<std::vector<double>, std::vector<double>> jointReturns(const std::vector<Candle>& a,
                                                                 const std::vector<Candle>& b) {
    std::map<std::int64_t, double> closes;
    for (const Candle& bar : b) closes[bar.time] = bar.close;
    std::pair<std::vector<double>, std::vector<double>> out;
    for (std::size_t i = 1; i < a.size(); ++i) {
        const auto now = closes.find(a[i].time), before = closes.find(a[i - 1].time);
        if (now == closes.end() || before == closes.end() || a[i].time - a[i - 1].time != 60) continue;
        out.first.push_back(std::log(a[i].close / a[i - 1].close));
        out.second.push_back(std::log(now->second / before->second));
    }
    return out;
}

TEST(SimulatedMarket, TradesOnTheGridInOrderWithinTheirMinuteAndHours) {
    Market market(1);
    std::vector<Trade> trades;
    for (const Instrument& one : instruments()) {
        const auto source = market.simulated.source(one);
        std::size_t openMinutes = 0, traded = 0;
        for (std::int64_t minute = at("2026-06-12T06:00"); minute < at("2026-06-15T12:00"); minute += 60) {
            source->minuteTrades(minute, trades);
            const bool open = market.calendar.open(minute, one.family);
            ASSERT_TRUE(open || trades.empty()) << one.symbol << minute;
            openMinutes += open;
            traded += !trades.empty();
            std::int64_t last = minute * 1000;
            for (const Trade& trade : trades) {
                ASSERT_GE(trade.timeMs, last);
                last = trade.timeMs;
                const double ticks = trade.price * one.ticksPerPoint;
                ASSERT_NEAR(ticks, std::round(ticks), 1e-6) << one.symbol << trade.price;
                ASSERT_EQ(trade.price, std::round(ticks) / one.ticksPerPoint);
                ASSERT_TRUE(trade.price == trade.bid || trade.price == trade.ask);
                ASSERT_LT(trade.bid, trade.ask);
                ASSERT_EQ(trade.size > 0, one.family != Family::indices);
            }
            ASSERT_LT(last, (minute + 60) * 1000);
        }
        EXPECT_GT(openMinutes, 300u);
        EXPECT_EQ(traded, openMinutes) << one.symbol;
    }
}

TEST(SimulatedMarket, IsAFunctionOfSeedAndMinuteAlone) {
    Market market(5), again(5), other(6);
    const auto late = market.bars(Family::futures, "ES", "2026-06-10T09:30", "2026-06-10T11:00");
    const auto whole = again.bars(Family::futures, "ES", "2026-06-01T09:30", "2026-06-10T11:00");
    ASSERT_EQ(late.size(), 90u);
    ASSERT_GT(whole.size(), late.size());
    EXPECT_TRUE(std::equal(late.begin(), late.end(), whole.end() - 90));
    EXPECT_NE(other.bars(Family::futures, "ES", "2026-06-10T09:30", "2026-06-10T11:00"), late);
}

TEST(SimulatedMarket, BarsJoinAcrossMinutesDaysAndWeekends) {
    Market market(2);
    const auto bars = market.bars(Family::futures, "NQ", "2026-06-08T00:00", "2026-06-16T00:00");
    for (std::size_t i = 1; i < bars.size(); ++i) {
        ASSERT_LT(std::abs(std::log(bars[i].open / bars[i - 1].close)), 0.004) << bars[i].time;
        ASSERT_TRUE(bars[i].low <= bars[i].open && bars[i].open <= bars[i].high);
    }
    const auto [low, high] =
        std::minmax_element(bars.begin(), bars.end(), [](auto& a, auto& b) { return a.close < b.close; });
    EXPECT_GT(high->close / low->close, 1.003);
    EXPECT_LT(high->close / low->close, 1.25);
}

TEST(SimulatedMarket, AbsoluteReturnsClusterAndReturnsDoNot) {
    for (const std::uint64_t seed : {1u, 2u, 3u}) {
        Market market(seed);
        std::vector<double> now, before, absNow, absBefore;
        double previous = 0;
        // the quiet middle of the day, so that the day's own curve does not pass for clustering
        for (const char* day :
             {"2026-06-08", "2026-06-09", "2026-06-10", "2026-06-11", "2026-06-12", "2026-06-15", "2026-06-16"}) {
            const auto bars = market.bars(Family::futures, "ES", (std::string(day) + "T10:30").c_str(),
                                          (std::string(day) + "T15:00").c_str());
            for (std::size_t i = 1; i < bars.size(); ++i) {
                const double move = std::log(bars[i].close / bars[i - 1].close);
                if (i > 1) {
                    now.push_back(move);
                    before.push_back(previous);
                    absNow.push_back(std::abs(move));
                    absBefore.push_back(std::abs(previous));
                }
                previous = move;
            }
        }
        EXPECT_GT(correlation(absNow, absBefore), 0.08) << seed;
        EXPECT_LT(std::abs(correlation(now, before)), 0.08) << seed;
    }
}

TEST(SimulatedMarket, EquitiesMoveTogetherAndVolatilityAgainstThem) {
    Market market(3);
    const auto bars = [&](Family family, const char* symbol) {
        return market.bars(family, symbol, "2026-06-08T09:30", "2026-06-12T16:00");
    };
    const auto es = bars(Family::futures, "ES");
    const struct {
        Family family;
        const char* symbol;
        double least, most;
    } cases[] = {
        {Family::futures, "NQ", 0.7, 1},        {Family::futures, "RTY", 0.5, 1},
        {Family::futures, "YM", 0.6, 1},        {Family::stocks, "NVDA", 0.3, 1},
        {Family::futures, "GC", -0.15, 0.15},   {Family::indices, "I:VIX", -1, -0.5},
        {Family::indices, "I:VIX1D", -1, -0.4},
    };
    for (const auto& one : cases) {
        const auto [a, b] = jointReturns(es, bars(one.family, one.symbol));
        ASSERT_GT(a.size(), 1500u) << one.symbol;
        EXPECT_GT(correlation(a, b), one.least) << one.symbol;
        EXPECT_LT(correlation(a, b), one.most) << one.symbol;
    }
}

TEST(SimulatedMarket, VolumeIsHighAtTheEdgesOfTheDayAndLowAtNight) {
    Market market(4);
    const auto volume = [&](const char* symbol, const char* from, const char* to) {
        double sum = 0, minutes = 0;
        for (const char* day : {"2026-06-08", "2026-06-09", "2026-06-10", "2026-06-11"}) {
            for (const Candle& bar : market.bars(Family::futures, symbol, (std::string(day) + from).c_str(),
                                                 (std::string(day) + to).c_str())) {
                sum += bar.volume;
                ++minutes;
            }
        }
        return sum / minutes;
    };
    const double open = volume("ES", "T09:30", "T10:30"), noon = volume("ES", "T12:30", "T13:30");
    const double close = volume("ES", "T15:00", "T16:00"), night = volume("ES", "T00:00", "T03:00");
    EXPECT_GT(open, 1.4 * noon);
    EXPECT_GT(close, 1.2 * noon);
    EXPECT_GT(noon, 5 * night);
    EXPECT_GT(night, 1);
    EXPECT_GT(volume("GC", "T08:30", "T10:30"), 2 * volume("GC", "T14:30", "T16:00"));
}

struct Tally final : FeedListener {
    void onTrades(std::span<const Trade> fresh) override { trades.insert(trades.end(), fresh.begin(), fresh.end()); }
    void onClosedBar(const Candle& bar) override { closed.push_back(bar); }
    std::vector<Trade> trades;
    std::vector<Candle> closed;
};

TEST(Feed, JoinsOntoTheBarsOfItsStartWithoutGapOrOverlap) {
    Market market(1);
    for (const double step : {0.05, 0.9, 7.0, 61.0, 700.0}) {
        const auto source = market.simulated.source(instrument(Family::futures, "NQ"));
        const std::int64_t start = at("2026-06-10T16:41") * 1000 + 23456;  // runs into the daily pause
        BarBook book(*source);
        const std::int64_t historyStart = source->historyStart(minuteOf(start));
        std::vector<Candle> bars = book.upTo(start);
        Feed feed(*source, start);
        Tally tally;
        std::int64_t now = start;
        const std::int64_t end = at("2026-06-10T18:03") * 1000 + 59999;
        const std::int64_t shown = step < 1 ? start + 180000 : end;
        while (now < shown) feed.advance(now += static_cast<std::int64_t>(step * 1000), tally);
        for (const Trade& trade : tally.trades) {
            ASSERT_GT(trade.timeMs, start);
            const std::int64_t minute = minuteOf(trade.timeMs);
            std::optional<Candle> bar;
            if (bars.back().time == minute) bar = bars.back();
            addTrade(bar, minute, trade);
            if (bars.back().time == minute) bars.pop_back();
            bars.push_back(*bar);
        }
        if (bars.back().time == minuteOf(now)) {
            EXPECT_EQ(bars.back(), book.upTo(now).back()) << step;
            bars.pop_back();
        }
        EXPECT_TRUE(bars == book.closed(historyStart, minuteOf(now))) << step;
        EXPECT_TRUE(tally.closed == book.closed(minuteOf(start), minuteOf(now))) << step;
    }
}

}  // namespace
}  // namespace vmr
