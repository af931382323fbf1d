// Where prices and bars lie, and what the axes call them.
#include "chart/AxisScale.h"

#include <gmock/gmock.h>

#include <clocale>
#include <cmath>
#include <limits>

namespace vmr::test {
namespace {

using namespace AxisScale;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<Candle> minuteBars(std::size_t n, std::int64_t from, std::int64_t seconds = 60) {
    std::vector<Candle> list(n);
    for (std::size_t i = 0; i < n; ++i) list[i].time = from + static_cast<std::int64_t>(i) * seconds;
    return list;
}

TEST(AxisScaleTest, PlacesAndBack) {
    const Viewport view{10, 40, 100, 200};
    EXPECT_DOUBLE_EQ(xForIndex(view, 20, 800), 200);
    EXPECT_EQ(xForIndex({10, 0, 1, 2}, 20, 800), 0);
    EXPECT_NEAR(yFor(view, 100, 900), 855, 1e-9);
    EXPECT_NEAR(yFor(view, 200, 900), 45, 1e-9);
    for (const double price : {90.0, 100.0, 163.25})
        EXPECT_NEAR(priceAtY(view, yFor(view, price, 900), 900), price, 1e-9);
    for (const Viewport& bad : {Viewport{0, 1, 2, 2}, Viewport{0, 1, 3, 2}, Viewport{0, 1, nan, 2}}) {
        EXPECT_TRUE(std::isnan(yFor(bad, 1, 100)));
        EXPECT_TRUE(std::isnan(priceAtY(bad, 1, 100)));
    }
    EXPECT_TRUE(std::isnan(priceAtY(view, 1, 0)));
}

TEST(AxisScaleTest, PriceTicksAreRoundAndCoverTheView) {
    struct Case {
        double lo, hi, height, step;
    };
    for (const Case& c : {Case{100, 200, 100, 50},
                          {100, 200, 500, 10},
                          {21000, 21120, 900, 5},
                          {20900, 21310, 900, 20},
                          {0, 1, 20, 0.5},
                          {99999.25, 99999.75, 900, 0.02},
                          {-3, 3, 300, 1}}) {
        const PriceTicks ticks = priceTicks({0, 100, c.lo, c.hi}, c.height);
        SCOPED_TRACE(c.lo);
        EXPECT_NEAR(ticks.step, c.step, c.step * 1e-9);
        ASSERT_GE(ticks.count, 2U);
        EXPECT_LE(ticks.values[0], c.lo);
        EXPECT_GE(ticks.values[ticks.count - 1], c.hi - c.step);
        for (const double value : ticks.span()) {
            EXPECT_NEAR(std::remainder(value, c.step), 0, c.step * 1e-6);
            const double y = yFor({0, 100, c.lo, c.hi}, value, c.height);
            EXPECT_TRUE(y >= -10 && y <= c.height + 10);
        }
    }
    EXPECT_GE(priceTicks({0, 100, 1, 2}, 100000).count, 85U);  // bounded in a view of any height
    const double huge = std::numeric_limits<double>::max();
    for (const Viewport& bad : {Viewport{0, 1, 2, 2}, Viewport{0, 1, nan, 2}, Viewport{0, 1, -huge, huge}}) {
        EXPECT_EQ(priceTicks(bad, 900).count, 0U);
    }
    EXPECT_EQ(priceTicks({0, 1, 1, 2}, 0).count, 0U);
}

TEST(AxisScaleTest, TimeTicksFallOnMultiplesOfHalfHours) {
    const std::int64_t noon = 1781107200;  // on a multiple of 48 hours plus 16
    struct Case {
        double count, width, timeframe;
        std::int64_t step;
    };
    for (const Case& c : {Case{100, 1000, 1, 1800},
                          {600, 1000, 1, 3600},
                          {5000, 1000, 1, 16 * 1800},
                          {50000, 1000, 1, 96 * 1800},
                          {100, 1000, 60, 8 * 1800 * 2},
                          {100, 1000, 0, 1800},
                          {100, 0, 1, 1800}}) {
        EXPECT_EQ(timeTickStep({0, c.count, 0, 1}, c.width, c.timeframe), c.step) << c.count << " " << c.timeframe;
    }
    std::vector<std::size_t> ticks{7};
    const auto find = [&](const Viewport& view, const std::vector<Candle>& list, double timeframe = 1) {
        timeTickIndices(view, 1000, list, timeframe, ticks);
        return ticks;
    };
    using testing::ElementsAre;
    EXPECT_THAT(find({0, 100, 0, 1}, minuteBars(100, noon)), ElementsAre(0, 30, 60, 90));
    EXPECT_THAT(find({0, 100, 0, 1}, minuteBars(100, noon + 60)), ElementsAre(29, 59, 89))
        << "not merely the first bar";
    EXPECT_THAT(find({30.9, 29, 0, 1}, minuteBars(100, noon)), ElementsAre(30));
    EXPECT_THAT(find({-50, 100, 0, 1}, minuteBars(100, noon)), ElementsAre(0, 30));
    EXPECT_THAT(find({0, 0, 0, 1}, minuteBars(100, noon)), ElementsAre());
    EXPECT_THAT(find({0, nan, 0, 1}, minuteBars(100, noon)), ElementsAre());
    EXPECT_THAT(find({200, 50, 0, 1}, minuteBars(100, noon)), ElementsAre());
    EXPECT_THAT(find({0, 100, 0, 1}, {}), ElementsAre());
    EXPECT_THAT(find({0, 100, 0, 1}, minuteBars(100, noon + 7, 60)), ElementsAre());
}

TEST(AxisScaleTest, PricesReadTheSameInAnyLocale) {
    const char* before = std::setlocale(LC_ALL, nullptr);
    const std::string restore = before ? before : "C";
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8"}) std::setlocale(LC_ALL, name);
    for (const auto& [value, text] : {std::pair{0.0, "0.00"},
                                      {-0.0, "0.00"},
                                      {-0.001, "0.00"},
                                      {7.5, "7.50"},
                                      {999.999, "1,000.00"},
                                      {21000.25, "21,000.25"},
                                      {-1234.5, "-1,234.50"},
                                      {-123.0, "-123.00"},
                                      {1234567.0, "1,234,567.00"},
                                      {123456789012345.0, "123,456,789,012,345.00"},
                                      {1e15, "1.00e+15"},
                                      {-1e300, "-1.00e+300"},
                                      {nan, "--"},
                                      {-std::numeric_limits<double>::infinity(), "--"}}) {
        EXPECT_EQ(fmtPrice(value).text(), text);
    }
    std::setlocale(LC_ALL, restore.c_str());
}

TEST(AxisScaleTest, TimesReadAsNewYorkDoes) {
    SessionTime session;
    struct Case {
        std::int64_t time;
        const char *clock, *date;
    };
    for (const Case& c : {Case{1781098200, "09:30", "Jun 10"},
                          {1781063999, "23:59", "Jun 9"},
                          {1781064000, "00:00", "Jun 10"},
                          {1767301200, "16:00", "Jan 1"},
                          {1798779540, "23:59", "Dec 31"},
                          {-60, "18:59", "Dec 31"}}) {
        EXPECT_EQ(fmtTime(session, c.time, false).text(), c.clock) << c.time;
        EXPECT_EQ(fmtTime(session, c.time, true).text(), c.date) << c.time;
    }
    EXPECT_EQ(dayNumber(session, 1781064000), dayNumber(session, 1781063999) + 1);
}

}  // namespace
}  // namespace vmr::test
