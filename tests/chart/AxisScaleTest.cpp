// Where prices and bars lie, and what the axes call them.
#include "chart/AxisScale.h"

#include <gmock/gmock.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <tuple>

namespace vmr::test {
namespace {

using namespace AxisScale;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(AxisScaleTest, PriceTicksAreRoundAndCoverTheView) {
    struct Case {
        double lo, hi, height, step;
    };
    for (const Case& c : {Case{100, 200, 100, 50},
                          {21000, 21120, 900, 5},
                          {20900, 21310, 900, 20},
                          {99999.25, 99999.75, 900, 0.02},
                          {-3, 3, 300, 1}}) {
        const PriceTicks ticks = priceTicks({0, 100, c.lo, c.hi}, c.height);
        SCOPED_TRACE(c.lo);
        EXPECT_NEAR(ticks.step, c.step, c.step * 1e-9);
        ASSERT_GE(ticks.count, 2U);
        EXPECT_LE(ticks.values[0], c.lo);
        EXPECT_GE(ticks.values[ticks.count - 1], c.hi - c.step);
        for (const double value : ticks.span()) EXPECT_NEAR(std::remainder(value, c.step), 0, c.step * 1e-6);
    }
    EXPECT_GE(priceTicks({0, 100, 1, 2}, 100000).count, 85U);  // bounded in a view of any height
    EXPECT_EQ(priceTicks({0, 1, nan, 2}, 900).count, 0U);
}

TEST(AxisScaleTest, TimeTicksFallOnMultiplesOfHalfHours) {
    for (const auto& [count, timeframe, step] :
         {std::tuple{100.0, 1.0, 1800}, {600.0, 1.0, 3600}, {100.0, 60.0, 28800}})
        EXPECT_EQ(timeTickStep({0, count, 0, 1}, 1000, timeframe), step) << count << " " << timeframe;
    const std::int64_t noon = 1781107200;  // on a multiple of 48 hours plus 16
    struct Ticks {
        double first, count;
        std::int64_t start;
        std::vector<std::size_t> at;
    };
    for (const Ticks& c : {Ticks{0, 100, noon, {0, 30, 60, 90}},
                           {0, 100, noon + 60, {29, 59, 89}},  // not merely the first bar
                           {30.9, 29, noon, {30}},
                           {-50, 100, noon, {0, 30}},
                           {200, 50, noon, {}},
                           {0, nan, noon, {}}}) {
        std::vector<Candle> list(100);
        for (std::size_t i = 0; i < list.size(); ++i) list[i].time = c.start + static_cast<std::int64_t>(i) * 60;
        std::vector<std::size_t> ticks{7};
        timeTickIndices({c.first, c.count, 0, 1}, 1000, list, 1, ticks);
        EXPECT_EQ(ticks, c.at);
    }
}

TEST(AxisScaleTest, PricesReadTheSameInAnyLocale) {
    const char* before = std::setlocale(LC_ALL, nullptr);
    const std::string restore = before ? before : "C";
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8"}) std::setlocale(LC_ALL, name);
    for (const auto& [value, text] : {std::pair{-0.001, "0.00"},
                                      {7.5, "7.50"},
                                      {999.999, "1,000.00"},
                                      {-1234.5, "-1,234.50"},
                                      {-123.0, "-123.00"},
                                      {123456789012345.0, "123,456,789,012,345.00"},
                                      {1e15, "1.00e+15"},
                                      {nan, "--"}}) {
        EXPECT_EQ(fmtPrice(value).text(), text);
    }
    std::setlocale(LC_ALL, restore.c_str());
}

TEST(AxisScaleTest, TimesReadAsNewYorkDoes) {
    SessionTime session;
    for (const auto& [time, clock, date] :
         {std::tuple{1781098200, "09:30", "Jun 10"}, {1781063999, "23:59", "Jun 9"}, {-60, "18:59", "Dec 31"}}) {
        EXPECT_EQ(fmtTime(session, time, false).text(), clock) << time;
        EXPECT_EQ(fmtTime(session, time, true).text(), date) << time;
    }
    EXPECT_EQ(dayNumber(session, 1781064000), dayNumber(session, 1781063999) + 1);
}

}  // namespace
}  // namespace vmr::test
