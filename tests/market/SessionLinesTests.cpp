// The lines of a session against a plain computation over weekends and clock changes.
#include "market/SessionLines.h"

#include <gtest/gtest.h>

#include <limits>

#include "market/SessionTime.h"
#include "support/PlainSessionLines.h"

namespace vmr {
namespace {

TEST(SessionLines, AgreeWithAPlainComputation) {
    for (const auto& [from, to] : test::stretches())
        for (const int hhmm : {1800, 930, 0, 2359}) {
            const auto bars = test::futuresMinutes(from, to, 7, 21000);
            SRSessions sessions;
            for (std::int64_t t = from; t < to; t += 40'000) {
                const std::int64_t open = test::plainSessionOpen(t, hhmm);
                sessions[open] = {
                    open, 21000, {{1, "up", 21050, open + 3600}, {3, "", 21090, open}}, {{2, "", 20950, open - 60}}};
            }
            const auto lines = SessionLines::build(bars, sessions, hhmm);
            EXPECT_GE(lines.size(), 20U);
            EXPECT_EQ(lines, test::plainLines(bars, sessions, hhmm)) << from << " " << hhmm;
        }
}

// Every minute over both clock changes, market open or not: the first and the last bar of each session.
TEST(SessionLines, GroupAsTheCalendarDoesOnChangeDays) {
    using namespace date::literals;
    using Spans = std::vector<std::pair<std::int64_t, std::int64_t>>;
    for (const date::local_days day : {date::local_days(2026_y / 3 / 8), date::local_days(2025_y / 11 / 2)})
        for (const int hhmm : {1800, 930, 0, 130, 230, 300, 2359, 2430, 9900, -100}) {
            std::vector<Candle> bars;
            std::map<std::int64_t, std::pair<std::int64_t, std::int64_t>> byOpen;
            const std::int64_t middle = test::newYorkMoment(day, 0);
            for (std::int64_t t = middle - 90'000; t < middle + 190'000; t += 60) {
                const std::int64_t open = SessionTime::calendarSessionOpenSec(t, hhmm);
                EXPECT_EQ(SessionLines::sessionOpenSec(t, hhmm), open);
                byOpen.try_emplace(open, t, t).first->second.second = t;
                bars.push_back({t, 1, 1, 1, 1, 0});
            }
            Spans expected, drawn;
            for (const auto& [open, span] : byOpen) expected.push_back(span);
            for (const OverlayLine& line : SessionLines::build(bars, {}, hhmm)) {
                if (line.label == "Prev Close") drawn[drawn.size() - 2].second = line.startTime;
                if (line.label == "Open") drawn.emplace_back(line.startTime, expected.back().second);
            }
            EXPECT_EQ(drawn, expected) << hhmm;
        }
}

TEST(SessionLines, TakeAnyBarTime) {
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min(),
                           highest = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(
        SessionLines::build({{lowest, 1, 1, 1, 1, 0}, {0, 3, 3, 3, 3, 0}, {highest, 5, 5, 5, 5, 0}}, {}, 1800).size(),
        3U + 2 * 3);
}

}  // namespace
}  // namespace vmr
