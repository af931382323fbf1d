// What the exchange calendar says, and the lines of its sessions, against the date library's calendar.
#include <gtest/gtest.h>

#include "market/ClockSetting.h"
#include "market/SessionLines.h"
#include "market/SessionTime.h"
#include "support/market/SyntheticMarket.h"

namespace vmr::test {
namespace {

using namespace date::literals;

// The first and the last second of each quarter hour of two winters, one of them before 1970.
TEST(SessionTime, AgreesWithThePlainCalendar) {
    SessionTime session;
    for (const date::local_days start : {date::local_days(1969_y / 1 / 2), date::local_days(2026_y / 1 / 1)}) {
        const std::int64_t from = newYorkMoment(start, 0);
        for (std::int64_t quarter = from; quarter < from + 60 * 86400; quarter += 900)
            for (const std::int64_t t : {quarter, quarter + 899}) {
                ASSERT_EQ(session.marketOpen(t, true), stocksOpen(t)) << t;
                ASSERT_EQ(session.marketOpen(t, false), futuresOpen(t)) << t;
                for (const int hhmm : {0, 930, 1800}) {
                    const std::int64_t open = plainSessionOpen(t, hhmm);
                    ASSERT_EQ(session.sessionOpenSec(t, hhmm), open) << t << " " << hhmm;
                    ASSERT_EQ(SessionTime::calendarSessionOpenSec(t, hhmm), open) << t << " " << hhmm;
                }
            }
    }
}

TEST(SessionTime, OnAClockChangeTheFirstQuestionDecidesTheDay) {
    const auto moment = [](const char* text) { return static_cast<std::int64_t>(*parseMoment(text)); };
    const std::int64_t before = moment("2026-03-08T01:59:59-05:00"), after = before + 1;
    SessionTime earlyFirst, lateFirst;
    EXPECT_EQ(earlyFirst.offset(before), -5 * 3600);
    EXPECT_EQ(earlyFirst.offset(after), -5 * 3600);
    EXPECT_EQ(lateFirst.offset(after), -4 * 3600);
    EXPECT_EQ(lateFirst.offset(before), -4 * 3600);
    EXPECT_EQ(lateFirst.sessionOpenSec(moment("2026-03-08T14:30:00-04:00"), 930), moment("2026-03-08T09:30:00-04:00"));
    // a day back is 86400 seconds, also across the change
    EXPECT_EQ(SessionTime::calendarSessionOpenSec(moment("2026-03-08T12:00:00-04:00"), 1800),
              moment("2026-03-08T18:00:00-04:00") - 86400);
}

TEST(SessionLines, AgreeWithAPlainComputation) {
    for (const auto& [from, to] : stretches())
        for (const int hhmm : {1800, 930, 0, 2359}) {
            const Bars bars = futuresMinutes(from, to, 7, 21000);
            SRSessions sessions;
            for (std::int64_t t = from; t < to; t += 40'000) {
                const std::int64_t open = plainSessionOpen(t, hhmm);
                sessions[open] = {
                    open, 21000, {{1, "up", 21050, open + 3600}, {3, "", 21090, open}}, {{2, "", 20950, open - 60}}};
            }
            const auto lines = SessionLines::build(bars, sessions, hhmm);
            EXPECT_GE(lines.size(), 20U);
            EXPECT_EQ(lines, plainLines(bars, sessions, hhmm)) << from << " " << hhmm;
        }
}

// Every minute over both clock changes, market open or not.
TEST(SessionLines, GroupAsTheCalendarDoesOnChangeDays) {
    for (const date::local_days day : {date::local_days(2026_y / 3 / 8), date::local_days(2025_y / 11 / 2)})
        for (const int hhmm : {1800, 930, 0, 130, 230, 300, 2359, 2430, 9900, -100}) {
            Bars bars;
            const std::int64_t middle = newYorkMoment(day, 0);
            for (std::int64_t t = middle - 90'000; t < middle + 190'000; t += 60) bars.push_back({t, 1, 1, 1, 1, 0});
            EXPECT_EQ(SessionLines::build(bars, {}, hhmm), plainLines(bars, {}, hhmm)) << hhmm;
        }
}

}  // namespace
}  // namespace vmr::test
