// What the exchange calendar says, checked against a walk over the calendar.
#include "market/SessionTime.h"

#include <gtest/gtest.h>

#include "market/ClockSetting.h"

namespace vmr {
namespace {

std::int64_t moment(const char* text) { return static_cast<std::int64_t>(*parseMoment(text)); }

// The first and the last second of each quarter hour, the weekday by counting days one by one from a known Thursday;
// a holiday counts as any weekday.
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
    EXPECT_EQ(lateFirst.offset(after), -4 * 3600);
    EXPECT_EQ(lateFirst.offset(before), -4 * 3600);
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
