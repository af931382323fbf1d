// The lines of a session, by hand and against a plain computation over weekends and clock changes.
#include "market/SessionLines.h"

#include <gmock/gmock.h>

#include <limits>

#include "market/SessionTime.h"
#include "support/PlainSessionLines.h"

namespace vmr {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SessionLines, DrawsEachDayAndTheDayBefore) {
    using namespace date::literals;
    const date::local_days monday(2026_y / 6 / 8);
    const std::int64_t a = test::newYorkMoment(monday, 18), b = a + 86400;
    const std::vector<Candle> bars = {{a + 60, 10, 12, 9, 11, 0},
                                      {a + 120, 11, 12, 8, 9, 0},
                                      {a + 180, 9, 11, 8, 10, 0},
                                      {b + 60, 20, 22, 19, 21, 0},
                                      {b + 120, 21, 30, 20, 29, 0}};
    const SRSessions levels = {{a, {a, 10, {{2, "", 14, a + 30}, {1, "top", 15, a + 150}}, {{2, "", 5, 0}}}},
                               {b, {b, 20, {}, {{7, "", 17, b + 90}}}},
                               {b + 1, {b + 1, 20, {{1, "", 1, 0}}, {}}}};
    const auto none = std::nullopt;
    EXPECT_THAT(
        SessionLines::build(bars, levels, 1800),
        ElementsAre(OverlayLine{10, a + 60, b + 60, "Open", true}, OverlayLine{14, a + 60, a + 180, "R2", true},
                    OverlayLine{15, a + 150, a + 180, "top", true}, OverlayLine{5, a + 60, a + 180, "S2", true},
                    OverlayLine{20, b + 60, none, "Open", true}, OverlayLine{10, a + 180, none, "Prev Close", true},
                    OverlayLine{12, a + 60, none, "Prev High", false}, OverlayLine{8, a + 120, none, "Prev Low", false},
                    OverlayLine{17, b + 90, none, "S7", true}));
    EXPECT_THAT(SessionLines::build({bars[0]}, levels, 1800), IsEmpty());
    EXPECT_EQ(SessionLines::build({bars[0], bars[1]}, {}, 1800).size(), 1U);
}

TEST(SessionLines, AgreeWithAPlainComputation) {
    for (const auto& [from, to] : test::stretches())
        for (const int hhmm : {1800, 930, 0, 2359}) {
            const auto bars = test::futuresMinutes(from, to, 7, 21000);
            SRSessions sessions;
            for (std::int64_t t = from; t < to; t += 40'000) {
                const std::int64_t open = test::plainSessionOpen(t, hhmm);
                sessions[open] = {open, 21000, {{1, "up", 21050, open + 3600}}, {{2, "", 20950, open - 60}}};
            }
            const auto lines = SessionLines::build(bars, sessions, hhmm);
            EXPECT_GE(std::count_if(lines.begin(), lines.end(), [](const auto& line) { return line.label == "Open"; }),
                      5);
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
    const std::vector<Candle> bars = {{lowest, 1, 1, 1, 1, 0},
                                      {-899'999'999'940, 2, 2, 2, 2, 0},
                                      {0, 3, 3, 3, 3, 0},
                                      {899'999'999'940, 4, 4, 4, 4, 0},
                                      {highest, 5, 5, 5, 5, 0}};
    const auto lines = SessionLines::build(bars, {}, 1800);
    EXPECT_EQ(lines.size(), 5U + 4 * 3);
    EXPECT_EQ(SessionLines::sessionOpenSec(highest, 1800), highest);
}

}  // namespace
}  // namespace vmr
