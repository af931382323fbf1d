// What the pane makes of derived fields: the 3D surface, HF samples and the expirations on offer.
#include <gtest/gtest.h>

#include "model/Expirations.h"
#include "model/Gex3D.h"
#include "model/HfpSample.h"
#include "support/market/SyntheticMarket.h"

namespace vmr {
namespace {

double june(unsigned day, int hour, int minute = 0) {
    using namespace date::literals;
    return static_cast<double>(test::newYorkMoment(date::local_days(2026_y / 6 / day), hour, minute));
}

TEST(Gex3D, LaysOutEveryExpiration) {
    const auto object = Json::parse(R"({"expirations":["2026-06-17","2026-06-16",5,"2026-06-18"],
        "byExpiration":{"2026-06-17":{"gexByStrike":[{"strike":102,"callGex":5},{"strike":"98","putGex":"2"},{"callGex":1},
                        {"strike":102,"callGex":7,"putGex":3},{"strike":102.001,"callGex":1},{"strike":"nan"},
                        {"strike":101,"callGex":1e308,"putGex":-1e308},{"strike":98,"callGex":"inf"}]},
                        "2026-06-18":{"gexByStrike":[{"strike":100},3]}},
        "gexByStrike":[{"strike":99,"callGex":1},{"strike":97.9,"callGex":1},{"strike":100,"callGex":"x","putGex":4}]})");
    DerivedFields fields;
    for (const auto& [key, value] : object->members()) fields[std::string(key)] = object->at(value);
    EXPECT_EQ(Gex3D::build(100, fields, june(15, 12)), (Gex3DData{100,
                                                                  {98, 99, 100, 102},
                                                                  {"2026-06-16", "2026-06-17", "2026-06-18"},
                                                                  {"6/16 (1DTE)", "6/17 (2DTE)", "6/18 (3DTE)"},
                                                                  {{0, 1, -4, 0}, {-2, 0, 0, 4}, {0, 0, 0, 0}}}));
}

TEST(HfpSample, TakesTheStrikesAroundTheSpotAndLastsHalfAnHour) {
    std::vector<StrikeRow> rows;
    for (const double strike : {10, 20, 30, 40, 50, 60, 70})
        rows.push_back({.strike = strike, .callHf = strike / 10, .putHf = -strike});
    const std::pair<std::optional<double>, std::vector<double>> cases[] = {
        {44, {20, 30, 40, 50, 60}}, {45, {20, 30, 40, 50, 60}}, {19, {10, 20, 30, 40}}, {1e9, {50, 60, 70}}, {0, {}},
        {std::nullopt, {}}};
    for (const auto& [spot, band] : cases) {
        const auto sample = Hfp::sample(rows, spot, 100);
        EXPECT_EQ(std::pair(sample->call, sample->put), std::pair(28.0, -280.0));
        EXPECT_EQ(sample->band, band) << spot.value_or(-1);
        for (const double strike : band) EXPECT_EQ(*sample->atmAt(strike), (StrikeFlow{strike, strike / 10, -strike}));
    }

    std::deque<HfpSample> samples;
    for (const double t : {0.0, 100.0, 50.0, 90.0, 1900.0}) samples.push_back({t, 0, 0, {}, {}});
    Hfp::trim(samples, 1890);
    EXPECT_EQ(samples.size(), 3U);
}

// June 2026: the 15th is a Monday.
TEST(Expirations, OfferThisWeekAndTheNext) {
    std::vector<std::string> list = {"2026-06-9", "x", "", "2026-07-01"};
    for (int day = 30; day > 9; --day) list.push_back("2026-06-" + std::to_string(day));
    const std::vector<int> weeks = {15, 16, 17, 18, 19, 22, 23, 24, 25, 26};
    const std::pair<double, std::ptrdiff_t> cases[] = {
        {june(15, 0), 0},  {june(14, 10), 0},  // Sunday
        {june(17, 20), 3}, {june(17, 19, 59), 2}, {june(19, 19, 59), 4},
        {june(19, 20), 5}, {june(20, 10), 5}};  // Friday night counts as Saturday
    for (const auto& [now, passed] : cases) {
        std::vector<int> days;
        for (const std::string& iso : computeFutureExps(list, now)) days.push_back(std::stoi(iso.substr(8)));
        EXPECT_EQ(days, std::vector(weeks.begin() + passed, weeks.end())) << now;
    }
    EXPECT_EQ(computeFutureExps(list, june(20, 20)).back(), "2026-07-01") << "Saturday night counts as Sunday";
}

TEST(Expirations, CountTradingDays) {
    const struct {
        const char* iso;
        double now;
        const char* label;
        const char* dteLabel;  // in Tokyo, thirteen hours ahead
    } cases[] = {
        {"2026-06-15", june(12, 9), "6/15 (1DTE)", "1DTE Mon 6/15"},  // asked on Friday
        {"2026-06-15", june(14, 23), "6/15 (1DTE)", "0DTE Mon 6/15"},
        {"2026-06-01", june(15, 9), "6/1 (0DTE)", "0DTE Mon 6/1"},
        {"2026-12-31", june(15, 9), "12/31 (143DTE)", "143DTE Thu 12/31"},
        {"2026-02-30", june(15, 9), "2026-02-30", "2026-02-30"},
    };
    setenv("TZ", "Asia/Tokyo", 1);  // before the machine's own setting
    tzset();
    for (const auto& c : cases) {
        EXPECT_EQ(expLabel(c.iso, c.now), c.label) << c.now;
        EXPECT_EQ(expDteLabel(c.iso, c.now), c.dteLabel) << c.now;
    }
    unsetenv("TZ");
    tzset();
}

}  // namespace
}  // namespace vmr
