// The lines of a session against a plain computation over weekends and clock changes.
#include "market/SessionLines.h"

#include <gtest/gtest.h>

#include "support/market/SyntheticMarket.h"

namespace vmr::test {
namespace {

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
    using namespace date::literals;
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
