// What the exchange calendar says, checked against tables and against a walk over the calendar.
#include "market/SessionTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <set>

#include "market/ClockSetting.h"

namespace vmr {
namespace {

// 2026-06-07 is a Sunday; New York is four hours behind UTC.
std::int64_t june(int day, int hour, int minute = 0, int second = 0) {
    const std::chrono::sys_days date = std::chrono::year(2026) / 6 / day;
    return std::chrono::duration_cast<std::chrono::seconds>(date.time_since_epoch()).count() + (hour + 4) * 3600 +
           minute * 60 + second;
}

std::int64_t moment(const char* text) { return static_cast<std::int64_t>(*parseMoment(text)); }

TEST(SessionTime, OpensAndClosesOnTheSecond) {
    struct Case {
        std::int64_t t;
        bool stock;
        bool future;
    };
    const Case cases[] = {
        {june(7, 10), false, false},         {june(7, 17, 59, 59), false, false}, {june(7, 18), false, true},
        {june(7, 23, 59, 59), false, true},  {june(8, 0), false, true},           {june(8, 9, 29, 59), false, true},
        {june(8, 9, 30), true, true},        {june(10, 15, 59, 59), true, true},  {june(10, 16), false, true},
        {june(10, 16, 59, 59), false, true}, {june(10, 17), false, false},        {june(10, 17, 59, 59), false, false},
        {june(10, 18), false, true},         {june(11, 17, 30), false, false},    {june(12, 9, 30), true, true},
        {june(12, 16, 59, 59), false, true}, {june(12, 17), false, false},        {june(12, 18), false, false},
        {june(13, 0), false, false},         {june(13, 10), false, false},        {june(13, 23, 59, 59), false, false},
        {june(19, 12), true, true},  // a holiday counts as any weekday
    };
    SessionTime session;
    for (const Case& c : cases) {
        EXPECT_EQ(session.marketOpen(c.t, true), c.stock) << c.t;
        EXPECT_EQ(session.marketOpen(c.t, false), c.future) << c.t;
    }
}

TEST(SessionTime, FindsTheLatestOpen) {
    const struct {
        std::int64_t t;
        int hhmm;
        std::int64_t open;
    } cases[] = {
        {june(9, 10), 1800, june(8, 18)},      {june(9, 19), 1800, june(9, 18)},
        {june(9, 18), 1800, june(9, 18)},      {june(9, 17, 59, 59), 1800, june(8, 18)},
        {june(8, 9, 29), 930, june(7, 9, 30)}, {june(8, 9, 30), 930, june(8, 9, 30)},
        {june(8, 0), 0, june(8, 0)},           {june(8, 12), 2359, june(7, 23, 59)},
        {june(9, 1), 1800, june(8, 18)},       {june(8, 12), 999999, june(7, 0) + 9999 * 3600 + 99 * 60},
    };
    SessionTime session;
    for (const auto& c : cases) {
        EXPECT_EQ(session.sessionOpenSec(c.t, c.hhmm), c.open) << c.t << " " << c.hhmm;
        EXPECT_EQ(SessionTime::calendarSessionOpenSec(c.t, c.hhmm), c.open) << c.t << " " << c.hhmm;
    }
    // a setting may hold anything; what comes out means nothing, but it comes
    for (const int hhmm : {INT32_MAX, INT32_MIN, -1}) session.sessionOpenSec(june(8, 12), hhmm);
}

// The weekday and the seconds of the day by counting days one by one from a known Thursday.
TEST(SessionTime, AgreesWithAWalkOverTheCalendar) {
    SessionTime session;
    for (const char* start : {"1969-01-02T00:00", "2026-01-01T00:00"}) {  // both Thursdays, before any clock change
        const std::int64_t from = moment(start);
        int weekday = 4;
        for (std::int64_t day = 0; day < 60; ++day, weekday = (weekday + 1) % 7) {
            for (std::int64_t s = 0; s < 86400; s += 900) {
                for (const std::int64_t t : {from + day * 86400 + s, from + day * 86400 + s + 899}) {
                    const std::int64_t inDay = t - from - day * 86400;
                    const bool weekend = weekday == 0 || weekday == 6;
                    const bool stock = !weekend && inDay >= 9 * 3600 + 1800 && inDay < 16 * 3600;
                    bool future = inDay < 17 * 3600 || inDay >= 18 * 3600;
                    if (weekday == 5) future = inDay < 17 * 3600;
                    if (weekday == 6) future = false;
                    if (weekday == 0) future = inDay >= 18 * 3600;
                    ASSERT_EQ(session.weekday(t), weekday) << t;
                    ASSERT_EQ(session.marketOpen(t, true), stock) << t;
                    ASSERT_EQ(session.marketOpen(t, false), future) << t;
                    for (const int hhmm : {0, 930, 1800}) {
                        std::int64_t open = t;  // back, second by second from the last quarter hour
                        open -= inDay % 900;
                        while ((open - from + 86400) % 86400 != (hhmm / 100) * 3600 + (hhmm % 100) * 60) open -= 900;
                        ASSERT_EQ(session.sessionOpenSec(t, hhmm), open) << t << " " << hhmm;
                        ASSERT_EQ(SessionTime::calendarSessionOpenSec(t, hhmm), open) << t << " " << hhmm;
                    }
                }
            }
        }
    }
}

TEST(SessionTime, OnAClockChangeTheFirstQuestionDecidesTheDay) {
    const std::int64_t before = moment("2026-03-08T01:59:59-05:00");
    const std::int64_t after = moment("2026-03-08T03:00:00-04:00");
    ASSERT_EQ(after, before + 1);
    SessionTime earlyFirst, lateFirst;
    EXPECT_EQ(earlyFirst.offset(before), -5 * 3600);
    EXPECT_EQ(earlyFirst.offset(after), -5 * 3600);
    EXPECT_EQ(earlyFirst.offset(before - 86400), -5 * 3600);
    EXPECT_EQ(earlyFirst.offset(before), -5 * 3600);
    EXPECT_EQ(lateFirst.offset(after), -4 * 3600);
    EXPECT_EQ(lateFirst.offset(before), -4 * 3600);
    EXPECT_EQ(lateFirst.offset(after + 86400), -4 * 3600);
    // futures open at 18:00 of the new time; the cached answer may be an hour off, the calendar never is
    const std::int64_t evening = moment("2026-03-08T18:30:00-04:00");
    EXPECT_EQ(SessionTime::calendarSessionOpenSec(evening, 1800), moment("2026-03-08T18:00:00-04:00"));
    EXPECT_EQ(lateFirst.sessionOpenSec(evening - 4 * 3600, 930), moment("2026-03-08T09:30:00-04:00"));
    EXPECT_EQ(SessionTime::calendarSessionOpenSec(moment("2026-11-01T18:30:00-05:00"), 1800),
              moment("2026-11-01T18:00:00-05:00"));
    // a day back is 86400 seconds, also across the change
    EXPECT_EQ(SessionTime::calendarSessionOpenSec(moment("2026-03-08T12:00:00-04:00"), 1800),
              moment("2026-03-08T18:00:00-04:00") - 86400);
}

}  // namespace
}  // namespace vmr
