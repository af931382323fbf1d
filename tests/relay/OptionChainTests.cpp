#include <gtest/gtest.h>

#include "market/ClockSetting.h"
#include "relay/DerivedBench.h"

namespace vmr::relay {
namespace {

using test::DerivedBench;
using test::json;

const double morning = *parseMoment("2026-06-10T10:00:20");  // a Wednesday
constexpr std::array sums{"callGex", "putGex", "callDex", "putDex", "callHf", "putHf", "callOI", "putOI"};

/// Totals, walls and flip must follow from the rows beside them.
void expectConsistent(const json& fields, double spot, const std::string& where) {
    std::map<std::string, std::int64_t> total;
    std::int64_t mostCall = 0, mostPut = 0, lastNet = 1;
    double callWall = 0, putWall = 0, flip = 0, lastStrike = 0;
    for (const json& row : fields["gexByStrike"]) {
        for (const char* key : sums) total[key] += row[key].get<std::int64_t>();
        const double strike = row["strike"];
        EXPECT_GT(strike, lastStrike) << where;
        lastStrike = strike;
        if (row["callGex"] > mostCall) mostCall = row["callGex"], callWall = strike;
        if (row["putGex"] > mostPut) mostPut = row["putGex"], putWall = strike;
        const std::int64_t net = row["callGex"].get<std::int64_t>() - row["putGex"].get<std::int64_t>();
        if (lastNet <= 0 && net > 0 && (flip == 0 || std::abs(strike - spot) < std::abs(flip - spot))) flip = strike;
        lastNet = net;
        EXPECT_GE(row["callDex"], 0) << where;
        EXPECT_LE(row["putDex"], 0) << where;
    }
    EXPECT_EQ(fields["totalCallOI"], total["callOI"]) << where;
    EXPECT_EQ(fields["totalPutOI"], total["putOI"]) << where;
    EXPECT_EQ(fields["totalCallGex"], total["callGex"]) << where;
    EXPECT_EQ(fields["totalPutGex"], total["putGex"]) << where;
    EXPECT_EQ(fields["hfTotal"], total["callHf"] + total["putHf"]) << where;
    EXPECT_EQ(fields["callWallStrike"], callWall) << where;
    EXPECT_EQ(fields["putWallStrike"], putWall) << where;
    EXPECT_EQ(fields["gammaFlipStrike"], flip > 0 ? json(flip) : json(nullptr)) << where;
}

TEST(OptionChain, EverySourceAddsUp) {
    DerivedBench bench;
    for (const OptionSource& source : optionSources()) {
        const std::string name(source.name);
        const json all = bench.snapshot("derived:" + name, morning);
        const double spot = all["spot"];
        const double price =
            bench.market.path(source.instrument()).at(static_cast<std::int64_t>(morning) * 1000)->price;
        EXPECT_NEAR(spot * all["etfRatio"].get<double>(), price, price * 1e-5) << name;
        EXPECT_GE(all["gexByStrike"].size(), 60u) << name;
        EXPECT_LT(all["gexByStrike"].front()["strike"], spot * 0.95) << name;
        EXPECT_GT(all["gexByStrike"].back()["strike"], spot * 1.05) << name;
        EXPECT_NEAR(all["gammaFlipStrike"].get<double>() / spot, 1, 0.05) << name;
        expectConsistent(all, spot, name);

        std::map<double, std::map<std::string, std::int64_t>> sum;
        ASSERT_EQ(all["byExpiration"].size(), all["expirations"].size()) << name;
        for (const auto& [date, slice] : all["byExpiration"].items()) {
            expectConsistent(slice, spot, name + " " + date);
            for (const json& row : slice["gexByStrike"])
                for (const char* key : sums) sum[row["strike"]][key] += row[key].get<std::int64_t>();
        }
        for (const json& row : all["gexByStrike"])
            for (const char* key : sums) EXPECT_EQ(row[key], sum[row["strike"]][key]) << name << row["strike"] << key;
    }
}

}  // namespace
}  // namespace vmr::relay
