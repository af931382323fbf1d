#include <gtest/gtest.h>

#include "market/ClockSetting.h"
#include "relay/FrontMonth.h"
#include "relay/SessionCalendar.h"

namespace vmr {
namespace {

std::int64_t at(const std::string& moment) { return static_cast<std::int64_t>(*parseMoment(moment)); }

TEST(SessionCalendar, CountsMinutesFromTheEveningOpenWithoutWeekends) {
    SessionCalendar calendar;
    const std::int64_t day = calendar.place(at("2026-06-10T00:00"))->day;
    const struct {
        const char* moment;
        std::optional<SessionPlace> place;
    } cases[] = {
        {"2026-06-09T18:00:00", SessionPlace{day, 0}},
        {"2026-06-10T09:30:59", SessionPlace{day, 930}},
        {"2026-06-10T17:00:00", std::nullopt},
        {"2026-06-12T16:59:00", SessionPlace{day + 2, 1379}},
        {"2026-06-14T17:59:00", std::nullopt},
        {"2026-06-14T18:00:00", SessionPlace{day + 3, 0}},
        {"2026-06-15T09:30:00", SessionPlace{day + 3, 930}},
    };
    for (const auto& one : cases) EXPECT_EQ(calendar.place(at(one.moment)), one.place) << one.moment;
    EXPECT_EQ(calendar.dayStart(day + 3), at("2026-06-14T18:00"));
    EXPECT_EQ(calendar.historyStart(at("2026-06-13T12:00")), at("2026-06-04T18:00"));
}

TEST(SessionCalendar, AClockChangeSundayDoesNotDependOnWhatWasAskedFirst) {
    for (const std::string change : {"2026-03-08", "2026-11-01"}) {
        SessionCalendar early, late;
        early.place(at(change + "T00:30Z"));
        const std::int64_t open = at(change + "T18:00");
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
        {"NQ", "2026-06-10", "NQM6"}, {"NQ", "2026-06-11", "NQU6"}, {"ES", "2026-12-10", "ESH7"},
        {"YM", "2029-12-31", "YMH0"}, {"GC", "2026-05-26", "GCM6"}, {"GC", "2026-05-27", "GCQ6"},
        {"CL", "2026-06-10", "CLN6"}, {"CL", "2026-12-19", "CLG7"}, {"SI", "2026-06-10", ""},
    };
    SessionCalendar calendar;
    for (const auto& one : cases)
        EXPECT_EQ(frontContract(one.root, calendar.date(at(one.date))), one.contract) << one.root << one.date;
}

}  // namespace
}  // namespace vmr
