// What the pane makes of derived fields: the 3D surface, HF samples and the expirations on offer.
#include <gtest/gtest.h>

#include <cmath>

#include "model/Expirations.h"
#include "model/Gex3D.h"
#include "model/HfpSample.h"
#include "support/SyntheticMarket.h"

namespace vmr {
namespace {

constexpr double mondayNoon = 1'781'539'200;  // 2026-06-15 12:00 New York

DerivedFields fieldsOf(const std::string& text) {
    DerivedFields fields;
    const auto object = Json::parse(text);
    EXPECT_TRUE(object) << text;
    for (const auto& [key, value] : object->members()) fields[std::string(key)] = object->at(value);
    return fields;
}

double moment(unsigned day, int hour, int minute = 0) {
    using namespace date::literals;
    return static_cast<double>(test::newYorkMoment(date::local_days(2026_y / 6 / day), hour, minute));
}

TEST(Gex3D, LaysOutEveryExpiration) {
    const auto fields = fieldsOf(R"({"expirations":["2026-06-17","2026-06-16",5,"2026-06-18"],
        "byExpiration":{"2026-06-17":{"gexByStrike":[{"strike":102,"callGex":5},{"strike":"98","putGex":"2"},{"callGex":1},
                        {"strike":102,"callGex":7,"putGex":3},{"strike":102.001,"callGex":1},{"strike":"nan"}]},
                        "2026-06-18":{"gexByStrike":[{"strike":100},3]}},
        "gexByStrike":[{"strike":99,"callGex":1},{"strike":97.9,"callGex":1},{"strike":100,"callGex":"x","putGex":4}]})");
    const auto data = Gex3D::build(100, fields, mondayNoon);
    ASSERT_TRUE(data);
    EXPECT_EQ(*data, (Gex3DData{100,
                                {98, 99, 100, 102},
                                {"6/16 (1DTE)", "6/17 (2DTE)", "6/18 (3DTE)"},
                                {{0, 1, -4, 0}, {-2, 0, 0, 4}, {0, 0, 0, 0}}}));
}

TEST(Gex3D, NeedsExpirationsAndTwoStrikes) {
    for (const char* none :
         {R"({"gexByStrike":[{"strike":99},{"strike":100}]})", R"({"expirations":["a"],"gexByStrike":[{"strike":99}]})",
          R"({"expirations":["a"],"gexByStrike":[{"strike":99},{"strike":100},1]})"})
        EXPECT_FALSE(Gex3D::build(100, fieldsOf(none), mondayNoon)) << none;
}

std::vector<StrikeRow> rows(std::initializer_list<double> strikes) {
    std::vector<StrikeRow> made;
    for (const double strike : strikes) {
        StrikeRow row{strike};
        row.callHf = static_cast<double>(made.size() + 1);
        row.putHf = -10 * row.callHf;
        made.push_back(row);
    }
    return made;
}

TEST(HfpSample, TakesTheStrikesAroundTheSpot) {
    const auto all = rows({10, 20, 30, 40, 50, 60, 70});
    const struct {
        std::optional<double> spot;
        std::vector<double> band;
    } cases[] = {
        {44, {20, 30, 40, 50, 60}}, {45, {20, 30, 40, 50, 60}}, {19, {10, 20, 30, 40}}, {1e9, {50, 60, 70}}, {0, {}},
        {std::nan(""), {}},         {std::nullopt, {}}};
    for (const auto& c : cases) {
        const auto sample = Hfp::sample(all, c.spot, 100);
        ASSERT_TRUE(sample);
        EXPECT_EQ(sample->call, 28);
        EXPECT_EQ(sample->put, -280);
        EXPECT_EQ(sample->band, c.band) << c.spot.value_or(-1);
        for (const double strike : c.band) {
            ASSERT_TRUE(sample->atmAt(strike));
            EXPECT_EQ(*sample->atmAt(strike), (StrikeFlow{strike, strike / 10, -strike}));
        }
    }
    EXPECT_FALSE(Hfp::sample({}, 44, 100));
    // a repeated strike has one flow, the last; NaN strikes do no harm
    const auto odd = Hfp::sample(rows({30, 30, std::nan(""), std::nan("")}), 30, 0);
    EXPECT_EQ(odd->atmAt(30)->call, 2);
    EXPECT_EQ(odd->band[1], 30);
}

TEST(HfpSample, HistoryIsHalfAnHour) {
    std::deque<HfpSample> samples;
    for (const double t : {0.0, 100.0, 50.0, 1900.0}) samples.push_back({t, 0, 0, {}, {}});
    Hfp::trim(samples, 1800);
    EXPECT_EQ(samples.size(), 4U);
    Hfp::trim(samples, 1890);
    ASSERT_EQ(samples.size(), 2U);
    EXPECT_EQ(samples.front().t, 100);
}

// June 2026: the 15th is a Monday.
TEST(Expirations, OfferThisWeekAndTheNext) {
    std::vector<std::string> list = {"2026-06-9", "x", "", "2026-07-01"};
    for (int day = 30; day > 9; --day) list.push_back("2026-06-" + std::to_string(day));
    const auto days = [&list](double now) {
        std::vector<int> found;
        for (const std::string& iso : computeFutureExps(list, now)) found.push_back(std::stoi(iso.substr(8)));
        return found;
    };
    const std::vector<int> weeks = {15, 16, 17, 18, 19, 22, 23, 24, 25, 26};
    const auto from = [&weeks](std::ptrdiff_t n) { return std::vector<int>(weeks.begin() + n, weeks.end()); };
    EXPECT_EQ(days(moment(15, 0)), weeks);
    EXPECT_EQ(days(moment(14, 10)), weeks);  // Sunday
    EXPECT_EQ(days(moment(17, 19, 59)), from(2));
    EXPECT_EQ(days(moment(17, 20)), from(3));
    EXPECT_EQ(days(moment(19, 19, 59)), from(4));
    EXPECT_EQ(days(moment(19, 20)), from(5));  // Friday night counts as Saturday
    EXPECT_EQ(days(moment(20, 10)), from(5));
    EXPECT_EQ(days(moment(20, 20)).front(), 22);  // Saturday night as Sunday
    EXPECT_EQ(days(moment(20, 20)).back(), 1);    // of July, in the second week now
    EXPECT_EQ(computeFutureExps({"2026-06-16", "2026-06-15", "2026-06-16"}, mondayNoon),
              (std::vector<std::string>{"2026-06-15", "2026-06-16", "2026-06-16"}));
}

TEST(Expirations, CountTradingDays) {
    const struct {
        const char* iso;
        double now;
        const char* label;
        const char* dteLabel;  // in Tokyo, thirteen hours ahead
    } cases[] = {
        {"2026-06-15", moment(12, 9), "6/15 (1DTE)", "1DTE Mon 6/15"},  // asked on Friday
        {"2026-06-15", moment(14, 23), "6/15 (1DTE)", "0DTE Mon 6/15"},
        {"2026-06-15", moment(15, 9), "6/15 (0DTE)", "0DTE Mon 6/15"},
        {"2026-06-01", moment(15, 9), "6/1 (0DTE)", "0DTE Mon 6/1"},
        {"2026-06-20", moment(15, 9), "6/20 (4DTE)", "4DTE Sat 6/20"},
        {"2026-12-31", moment(15, 9), "12/31 (143DTE)", "143DTE Thu 12/31"},
        {"2026-02-30", moment(15, 9), "2026-02-30", "2026-02-30"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(expLabel(c.iso, c.now), c.label) << c.now;
        EXPECT_EQ(expDteLabel(c.iso, c.now, "Asia/Tokyo"), c.dteLabel) << c.now;
    }
    for (const double now : {1e300, std::nan("")}) EXPECT_NE(expLabel("2026-06-15", now), "");
}

}  // namespace
}  // namespace vmr
