#include <gtest/gtest.h>

#include "market/ClockSetting.h"
#include "relay/ChannelName.h"
#include "relay/FrontMonth.h"
#include "relay/SessionCalendar.h"

namespace vmr {
namespace {

std::int64_t at(const char* moment) { return static_cast<std::int64_t>(*parseMoment(moment)); }

TEST(SessionCalendar, CountsMinutesFromTheEveningOpenWithoutWeekends) {
    SessionCalendar calendar;
    const auto wednesday = calendar.place(at("2026-06-10T00:00"));
    ASSERT_TRUE(wednesday);
    const std::int64_t day = wednesday->day;
    const struct {
        const char* moment;
        std::optional<SessionPlace> place;
    } cases[] = {
        {"2026-06-09T18:00:00", SessionPlace{day, 0}},
        {"2026-06-10T09:30:59", SessionPlace{day, 930}},
        {"2026-06-10T16:59:59", SessionPlace{day, 1379}},
        {"2026-06-10T17:00:00", std::nullopt},
        {"2026-06-12T16:59:00", SessionPlace{day + 2, 1379}},
        {"2026-06-12T18:00:00", std::nullopt},
        {"2026-06-13T12:00:00", std::nullopt},
        {"2026-06-14T17:59:00", std::nullopt},
        {"2026-06-14T18:00:00", SessionPlace{day + 3, 0}},
        {"2026-06-15T09:30:00", SessionPlace{day + 3, 930}},
    };
    for (const auto& one : cases) EXPECT_EQ(calendar.place(at(one.moment)), one.place) << one.moment;
    EXPECT_EQ(calendar.dayStart(day), at("2026-06-09T18:00"));
    EXPECT_EQ(calendar.dayStart(day + 3), at("2026-06-14T18:00"));
    EXPECT_EQ(calendar.historyStart(at("2026-06-13T12:00")), at("2026-06-04T18:00"));
    EXPECT_EQ(calendar.historyStart(at("2026-06-10T10:00")), at("2026-06-02T18:00"));
}

TEST(SessionCalendar, APlaceExistsExactlyWhenFuturesTrade) {
    SessionCalendar calendar;
    for (std::int64_t t = at("2026-06-05T00:00"); t < at("2026-06-16T00:00"); t += 600) {
        ASSERT_EQ(calendar.place(t).has_value(), calendar.open(t, Family::futures)) << t;
    }
}

TEST(SessionCalendar, AClockChangeSundayDoesNotDependOnWhatWasAskedFirst) {
    for (const char* change : {"2026-03-08", "2026-11-01"}) {
        SessionCalendar early, late;
        early.place(at((std::string(change) + "T00:30Z").c_str()));
        const std::int64_t open = at((std::string(change) + "T18:00").c_str());
        ASSERT_TRUE(late.place(open));
        EXPECT_EQ(late.place(open)->minute, 0);
        EXPECT_EQ(early.place(open), late.place(open));
    }
}

TEST(FrontMonth, FollowsTheRollDates) {
    const struct {
        const char* root;
        const char* date;
        const char* contract;
    } cases[] = {
        {"NQ", "2026-06-10", "NQM6"}, {"NQ", "2026-06-11", "NQU6"},   {"ES", "2026-12-09", "ESZ6"},
        {"ES", "2026-12-10", "ESH7"}, {"RTY", "2026-01-02", "RTYH6"}, {"YM", "2029-12-31", "YMH0"},
        {"GC", "2026-06-10", "GCQ6"}, {"GC", "2026-05-26", "GCM6"},   {"GC", "2026-05-27", "GCQ6"},
        {"GC", "2026-11-27", "GCG7"}, {"CL", "2026-06-10", "CLN6"},   {"CL", "2026-06-19", "CLQ6"},
        {"CL", "2026-12-19", "CLG7"}, {"SI", "2026-06-10", ""},
    };
    SessionCalendar calendar;
    for (const auto& one : cases) {
        EXPECT_EQ(frontContract(one.root, calendar.date(at(one.date))), one.contract) << one.root << one.date;
    }
    EXPECT_EQ(frontContracts(calendar.date(at("2026-06-10"))).size(), 6u);
}

TEST(ChannelName, KnowsEveryMarketChannelAndNoOther) {
    using Kind = MarketChannel::Kind;
    const struct {
        const char* name;
        const char* symbol;
        const char* base;
        Kind kind;
    } good[] = {
        {"futures:NQU6", "NQ", "futures:NQU6", Kind::history},
        {"futures:RTYM26:1m", "RTY", "futures:RTYM26", Kind::minutes},
        {"futures:CLZ2026:quote", "CL", "futures:CLZ2026", Kind::quote},
        {"stocks:AAPL:trades", "AAPL", "stocks:AAPL", Kind::trades},
        {"indices:I:VIX1D:1m", "I:VIX1D", "indices:I:VIX1D", Kind::minutes},
        {"indices:I:VIX", "I:VIX", "indices:I:VIX", Kind::history},
    };
    for (const auto& one : good) {
        const auto channel = marketChannel(one.name);
        ASSERT_TRUE(channel) << one.name;
        EXPECT_EQ(channel->instrument->symbol, one.symbol) << one.name;
        EXPECT_EQ(channel->base, one.base);
        EXPECT_EQ(channel->kind, one.kind) << one.name;
    }
    for (const char* name : {"", "futures:", "futures:NQ", "futures:NQA6", "futures:NQM20261", "futures:SIN6",
                             "stocks:XYZ", "stocks:AAPL:quote", "indices:I:VIX:trades", "derived:QQQ", "NQM6"}) {
        EXPECT_FALSE(marketChannel(name)) << name;
    }
}

}  // namespace
}  // namespace vmr
