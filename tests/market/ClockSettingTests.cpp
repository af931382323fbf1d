// The text that sets the program's clock, and where practice starts.
#include "market/ClockSetting.h"

#include <gtest/gtest.h>

namespace vmr {
namespace {

TEST(ClockSetting, ReadsAMomentAndASpeedBehindIt) {
    const std::pair<const char*, ClockSetting> good[] = {
        {"1969-12-31T23:59:59Z", {-1, 1}},           {"2013-10-07T13:00:30.25Z", {1381150830.25, 1}},
        {"2013-10-07 09:00", {1381150800, 1}},       {"2013-10-07T15:00+02", {1381150800, 1}},
        {"2013-10-07T07:30-05:30", {1381150800, 1}}, {"2013-10-07", {1381118400, 1}},
        {"2024-02-29T00:00Z", {1709164800, 1}},      {"2013-10-06T24:00Z", {1381104000, 1}},
        {"2026-06-10T10:00:00@60", {1781100000, 60}}};
    for (const auto& [text, setting] : good) EXPECT_EQ(parseClockSetting(text), setting) << text;
    for (const char* text : {"", "now", "2013-10", "2013-13-01", "2023-02-29T00:00Z", "2013-10-07T", "2013-10-07T24:01",
                             "2013-10-07T09:60", "2013-10-07T09:00Zx", "2013-10-07T09:00+15:00", "@60", "2026-06-10@",
                             "2026-06-10@0", "2026-06-10@inf", "2026-06-10@1@2", "60"})
        EXPECT_EQ(parseClockSetting(text), std::nullopt) << text;
}

TEST(ClockSetting, PracticeStartsWhereTheMarketIsOrWasOpen) {
    const std::pair<const char*, const char*> cases[] = {
        {"2026-06-10T11:00:00.5", "2026-06-10T11:00:00.5"},                                            // open: now
        {"2026-06-07T18:00", "2026-06-07T18:00"},           {"2026-06-10T17:30", "2026-06-10T10:00"},  // the daily halt
        {"2026-06-12T17:00", "2026-06-12T10:00"},           {"2026-06-14T17:59:59", "2026-06-12T10:00"},  // the weekend
        {"2026-03-08T09:00", "2026-03-06T10:00"},           {"2026-11-01T17:00", "2026-10-30T10:00"},  // clock changes
    };
    for (const auto& [now, start] : cases) EXPECT_EQ(practiceStart(*parseMoment(now)), *parseMoment(start)) << now;
}

}  // namespace
}  // namespace vmr
