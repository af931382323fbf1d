// What the exchange calendar says, checked against the date library's.
#include "market/SessionTime.h"

#include <gtest/gtest.h>

#include "market/ClockSetting.h"
#include "support/market/SyntheticMarket.h"

namespace vmr {
namespace {

// The first and the last second of each quarter hour of two winters, one of them before 1970.
TEST(SessionTime, AgreesWithThePlainCalendar) {
    using namespace date::literals;
    SessionTime session;
    for (const date::local_days start : {date::local_days(1969_y / 1 / 2), date::local_days(2026_y / 1 / 1)}) {
        const std::int64_t from = test::newYorkMoment(start, 0);
        for (std::int64_t quarter = from; quarter < from + 60 * 86400; quarter += 900)
            for (const std::int64_t t : {quarter, quarter + 899}) {
                ASSERT_EQ(session.marketOpen(t, true), test::stocksOpen(t)) << t;
                ASSERT_EQ(session.marketOpen(t, false), test::futuresOpen(t)) << t;
                for (const int hhmm : {0, 930, 1800}) {
                    const std::int64_t open = test::plainSessionOpen(t, hhmm);
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

}  // namespace
}  // namespace vmr
