// The values at a chart's top left, the time to a bar's close and the New York clock.
#include <gtest/gtest.h>

#include <limits>

#include "chart/ChartContent.h"
#include "chart/HudText.h"
#include "chart/MarketTexts.h"

namespace vmr::test {
namespace {

TEST(HudText, NumbersByTheirSize) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        double value;
        const char *num, *hf;
    };
    for (const Case& c : {Case{1500, "1.5K", "2k"},
                          {-1500, "-1.5K", "-2k"},
                          {0, "0", "–"},
                          {-0.4, "0", "0"},
                          {-0.6, "-1", "-1"},
                          {999, "999", "999"},
                          {1000, "1.0K", "1k"},
                          {-999999, "-1000.0K", "-1000k"},
                          {1e6, "1.0M", "1.00M"},
                          {-2.345e6, "-2.3M", "-2.35M"},
                          {1e9, "1.0B", "1.00B"},
                          {-7.126e9, "-7.1B", "-7.13B"},
                          {1e300, "1.0e+300", "1.0e+300"},
                          {nan, "–", "–"}}) {
        EXPECT_EQ(fmtNum(c.value).text(), c.num) << c.value;
        EXPECT_EQ(fmtHF(c.value).text(), c.hf) << c.value;
    }
}

TEST(HudText, OneBarAndTheOptionsAtOnePrice) {
    const std::vector<Candle> bars{
        {600, 100, 104, 99, 102, 0}, {660, 102, 103, 97, 98, 1500}, {1200, 98, 99, 98, 98.5, 7}};
    // strikes are a tenth of the price, with a wider step above 11
    const std::vector<StrikeRow> rows{
        {.strike = 9.5, .callGex = 2e6, .putGex = -3e6, .callHf = 4000, .putHf = -6500, .callOI = 10, .putOI = 20},
        {.strike = 10, .callOI = 1, .putOI = 1},
        {.strike = 10, .callHf = 1, .callOI = 30, .putOI = 40},
        {.strike = 10.5, .callOI = 50, .putOI = 60},
        {.strike = 12, .callOI = 70, .putOI = 80}};
    ChartContent content;
    content.candles = bars;
    content.strikes = rows;
    content.etfRatio = 10;
    content.totals = {1000, 2000, 3e9, -4e9, 5e6};
    const std::string last = "O 98.00  H 99.00  L 98.00  C 98.50  +0.50 (+0.51%)";
    const std::string first = "O 100.00  H 104.00  L 99.00  C 102.00  +2.00 (+2.00%)";
    const std::string second = "O 102.00  H 103.00  L 97.00  C 98.00  -4.00 (-3.92%)";
    const std::string all = "    OI C 1.0K  P 2.0K    GEX C 3.0B  P -4.0B    HF 5.00M";
    struct Case {
        const char* name;
        std::optional<ChartSpot> pointer;
        std::string line;
    };
    for (const Case& c : {Case{"no pointer", {}, last + all + "    VOL 7"},
                          Case{"the second bar, a strike below", ChartSpot{700, 94},
                               second + "    OI C 10  P 20    GEX C 2.0M  P -3.0M    HF -2k    VOL 1.5K"},
                          Case{"no volume, the later of two rows", ChartSpot{610, 99.9},
                               first + "    OI C 30  P 40    GEX C 0  P 0    HF 1"},
                          Case{"a minute without a bar is the bar's before it", ChartSpot{719, 105},
                               second + "    OI C 50  P 60    GEX C 0  P 0    HF –    VOL 1.5K"},
                          Case{"one step above the last strike", ChartSpot{1200, 135},
                               last + "    OI C 70  P 80    GEX C 0  P 0    HF –    VOL 7"},
                          Case{"beyond it", ChartSpot{1200, 135.1}, last + all + "    VOL 7"},
                          Case{"one step below the first", ChartSpot{1200, 89.9}, last + all + "    VOL 7"},
                          Case{"right of the bars", ChartSpot{9000, 500}, last + all + "    VOL 7"},
                          Case{"left of them", ChartSpot{0, 500}, last + all + "    VOL 7"}}) {
        const HudText hud = hudText(content, c.pointer);
        EXPECT_EQ(hud.text(), c.line) << c.name;
    }
    const auto tones = [&](const std::optional<ChartSpot>& pointer, std::size_t at) {
        return hudText(content, pointer).segments[at].tone;
    };
    EXPECT_EQ(tones(ChartSpot{700, 94}, 0), HudTone::fall);
    EXPECT_EQ(tones(ChartSpot{610, 94}, 4), HudTone::rise);
    EXPECT_EQ(tones(ChartSpot{700, 94}, 9), HudTone::hfRed);
    EXPECT_EQ(tones({}, 9), HudTone::hfBlue);
    EXPECT_EQ(tones(ChartSpot{610, 105}, 9), HudTone::none) << "a dash";

    content.candles = {};
    content.strikes = std::span(rows).first(1);
    content.totals = {};
    EXPECT_EQ(hudText(content, ChartSpot{700, 94}).text(), "O –  H –  L –  C –    OI C –  P –    GEX C –  P –    HF –")
        << "of one strike alone no step is known";
    EXPECT_EQ(hudText(content, ChartSpot{700, 95}).strike, 9.5) << "but it lies right there";
}

constexpr double wednesdayAt10 = 1781100000;  // 2026-06-10, New York

TEST(MarketTexts, TheTimeToABarsClose) {
    SessionTime session;
    constexpr double saturday = wednesdayAt10 + 3 * 86400, atFive = wednesdayAt10 + 7 * 3600;
    struct Case {
        double now;
        int timeframe;
        bool isStock;
        const char* text;
    };
    for (const Case& c : {Case{wednesdayAt10, 1, false, "1:00"},
                          {wednesdayAt10 + 0.25, 1, false, "1:00"},
                          {wednesdayAt10 + 1, 1, true, "0:59"},
                          {wednesdayAt10 + 59.5, 1, false, "0:01"},
                          {wednesdayAt10 + 61, 5, false, "3:59"},
                          {wednesdayAt10, 0, false, "1:00"},
                          {wednesdayAt10 + 1, 60, false, "59:59"},
                          {wednesdayAt10 + 1, 240, false, "1:59:59"},
                          {wednesdayAt10, 1440, false, "10:00:00"},
                          {wednesdayAt10, 20160, false, "7d 10h"},
                          {saturday, 1, false, "closed"},
                          {saturday, 1, true, "closed"},
                          {atFive - 1, 1, true, "closed"},
                          {atFive - 1, 1, false, "0:01"},
                          {atFive, 1, false, "closed"},
                          {atFive + 3600, 1, false, "1:00"}})
        EXPECT_EQ(countdownText(c.now, c.timeframe, c.isStock, session).text(), c.text) << c.now << " " << c.timeframe;
}

TEST(MarketTexts, NewYorksClockAndThePracticeMark) {
    struct Case {
        double now;
        const char *clock, *mark;
    };
    constexpr double spring = 1772953200;  // 2026-03-08 07:00 UTC, when 02:00 becomes 03:00
    constexpr double autumn = 1793512800;  // 2026-11-01 06:00 UTC, when 02:00 becomes 01:00
    for (const Case& c : {Case{wednesdayAt10, "NY 10:00", "practice"},
                          {wednesdayAt10 + 59.9, "NY 10:00", "practice"},
                          {wednesdayAt10 + 14 * 3600 - 1, "NY 23:59", "practice"},
                          {wednesdayAt10 + 14 * 3600, "NY 00:00", "practice Jun 11"},
                          {spring - 1, "NY 01:59", "practice Mar 8"},
                          {spring, "NY 03:00", "practice Mar 8"},
                          {autumn - 1, "NY 01:59", "practice Nov 1"},
                          {autumn, "NY 01:00", "practice Nov 1"},
                          {-1, "NY 18:59", "practice Dec 31"}}) {
        EXPECT_EQ(newYorkClock(c.now).text(), c.clock) << c.now;
        EXPECT_EQ(practiceMark(c.now, wednesdayAt10).text(), c.mark) << c.now;
    }
}

}  // namespace
}  // namespace vmr::test
