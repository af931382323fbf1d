#include <gtest/gtest.h>

#include <cmath>

#include "market/ClockSetting.h"
#include "relay/BarBook.h"
#include "relay/SessionCalendar.h"
#include "relay/SimulatedMarket.h"

namespace vmr::relay {
namespace {

std::int64_t at(const std::string& moment) { return static_cast<std::int64_t>(*parseMoment(moment)); }

TEST(SessionCalendar, CountsMinutesFromTheEveningOpenWithoutWeekends) {
    SessionCalendar calendar;
    const std::int64_t day = calendar.place(at("2026-06-10T00:00"))->day;
    for (const auto& [moment, place] : {std::pair("2026-06-09T18:00:00", std::optional(SessionPlace{day, 0})),
                                        {"2026-06-10T17:00:00", std::nullopt},
                                        {"2026-06-12T16:59:00", SessionPlace{day + 2, 1379}},
                                        {"2026-06-14T17:59:00", std::nullopt},
                                        {"2026-06-15T09:30:00", SessionPlace{day + 3, 930}}})
        EXPECT_EQ(calendar.place(at(moment)), place) << moment;
    EXPECT_EQ(calendar.dayStart(day + 3), at("2026-06-14T18:00"));
    EXPECT_EQ(calendar.historyStart(at("2026-06-13T12:00")), at("2026-06-04T18:00"));
}

TEST(SessionCalendar, KeepsTheEveningOpenAcrossAClockChangeWhoeverAskedBefore) {
    for (const auto& [sunday, friday, shift] :
         {std::tuple("2026-03-08", "2026-03-06", -3600), {"2026-11-01", "2026-10-30", 3600}}) {
        for (const bool early : {true, false}) {
            SessionCalendar calendar;
            const std::int64_t open = at(sunday + std::string("T18:00"));
            if (early) calendar.place(at(sunday + std::string("T00:30")));
            const std::int64_t before = calendar.place(at(friday + std::string("T16:59:59")))->day;
            EXPECT_EQ(calendar.place(open), (SessionPlace{before + 1, 0})) << sunday;
            EXPECT_FALSE(calendar.place(open - 60)) << sunday;
            EXPECT_EQ(open - calendar.dayStart(before), 3 * 86400 + shift) << sunday;
        }
    }
}

struct Market {
    explicit Market(std::uint64_t seed) : simulated(seed, calendar) {}
    std::vector<Candle> bars(Family family, const char* symbol, const std::string& from, const std::string& end) {
        const auto source = simulated.source(*findInstrument(family, symbol));
        return BarBook(*source).closed(at(from), at(end));
    }
    SessionCalendar calendar;
    SimulatedMarket simulated;
};

TEST(SimulatedMarket, TradesOnTheGridInOrderWithinTheirMinuteAndHours) {
    Market market(1);
    std::vector<Trade> trades;
    for (const Instrument& one : instruments()) {
        const auto source = market.simulated.source(one);
        for (std::int64_t minute = at("2026-06-12T15:00"); minute < at("2026-06-15T11:00"); minute += 60) {
            source->minuteTrades(minute, trades);
            ASSERT_EQ(!trades.empty(), market.calendar.open(minute, one.family)) << one.symbol << minute;
            std::int64_t last = minute * 1000;
            for (const Trade& trade : trades) {
                ASSERT_GE(trade.timeMs, last);
                last = trade.timeMs;
                const double ticks = trade.price * one.ticksPerPoint;
                ASSERT_EQ(trade.price, std::round(ticks) / one.ticksPerPoint) << one.symbol;
                ASSERT_TRUE(trade.price == trade.bid || trade.price == trade.ask);
                ASSERT_LT(trade.bid, trade.ask);
                ASSERT_EQ(trade.size > 0, one.family != Family::indices);
            }
            ASSERT_LT(last, (minute + 60) * 1000);
        }
    }
}

TEST(SimulatedMarket, IsAFunctionOfSeedAndMinuteAloneAndJoinsAcrossDays) {
    Market market(5), again(5), other(6);
    const auto late = market.bars(Family::futures, "ES", "2026-06-10T09:30", "2026-06-10T11:00");
    const auto whole = again.bars(Family::futures, "ES", "2026-06-05T09:30", "2026-06-10T11:00");
    ASSERT_EQ(late.size(), 90u);
    ASSERT_GT(whole.size(), late.size());
    EXPECT_TRUE(std::equal(late.begin(), late.end(), whole.end() - 90));
    EXPECT_NE(other.bars(Family::futures, "ES", "2026-06-10T09:30", "2026-06-10T11:00"), late);
    const auto source = market.simulated.source(*findInstrument(Family::futures, "ES"));
    BarBook book(*source);
    EXPECT_EQ(book.closed(at("2026-06-10T09:00"), at("2026-06-10T10:30")).size(), 90u);
    EXPECT_EQ(book.closed(at("2026-06-10T09:30"), at("2026-06-10T11:00")), late) << "from what it has kept";
    for (std::size_t i = 1; i < whole.size(); ++i)
        ASSERT_LT(std::abs(std::log(whole[i].open / whole[i - 1].close)), 0.004) << whole[i].time;
}

}  // namespace
}  // namespace vmr::relay
