#include <gtest/gtest.h>

#include <chrono>

#include "market/ClockSetting.h"
#include "relay/DerivedBench.h"

namespace vmr {
namespace {

using test::DerivedBench;
using test::json;

const double morning = *parseMoment("2026-06-10T10:00:20");  // a Wednesday
constexpr std::array sums{"callGex", "putGex", "callDex", "putDex", "callHf", "putHf", "callOI", "putOI"};

/// Totals, walls and flip must follow from the rows beside them.
void expectConsistent(const json& fields, double spot, const std::string& where) {
    std::map<std::string, std::int64_t> total;
    std::int64_t mostCall = 0, mostPut = 0;
    double callWall = 0, putWall = 0, flip = 0, lastStrike = 0;
    std::int64_t lastNet = 1;
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
        EXPECT_LE(all["gexByStrike"].size(), 250u) << name;
        EXPECT_LT(all["gexByStrike"].front()["strike"], spot * 0.95) << name;
        EXPECT_GT(all["gexByStrike"].back()["strike"], spot * 1.05) << name;
        EXPECT_FALSE(all["gammaFlipStrike"].is_null()) << name;
        EXPECT_NEAR(all["gammaFlipStrike"].get<double>() / spot, 1, 0.05) << name;
        expectConsistent(all, spot, name);

        std::map<double, std::map<std::string, std::int64_t>> sum;
        ASSERT_EQ(all["byExpiration"].size(), all["expirations"].size()) << name;
        for (const json& date : all["expirations"]) {
            const json& slice = all["byExpiration"].at(date.get<std::string>());
            expectConsistent(slice, spot, name + " " + date.dump());
            for (const json& row : slice["gexByStrike"]) {
                for (const char* key : sums) sum[row["strike"]][key] += row[key].get<std::int64_t>();
            }
        }
        for (const json& row : all["gexByStrike"]) {
            for (const char* key : sums) EXPECT_EQ(row[key], sum[row["strike"]][key]) << name << row["strike"] << key;
        }
    }
}

TEST(OptionChain, ExpiresOnWeekdaysOfThreeWeeksAndStocksOnFridays) {
    DerivedBench bench;
    const json dates = bench.snapshot("derived:QQQ", morning)["expirations"];
    EXPECT_EQ(dates.size(), 15u);
    EXPECT_EQ(dates.front(), "2026-06-10");
    EXPECT_EQ(dates[3], "2026-06-15");
    EXPECT_EQ(dates.back(), "2026-06-30");
    EXPECT_EQ(bench.snapshot("derived:AAPL", morning)["expirations"],
              json::parse(R"(["2026-06-12","2026-06-19","2026-06-26"])"));
    EXPECT_EQ(bench.snapshot("derived:SPX", morning + 10 * 3600)["expirations"].front(), "2026-06-11")
        << "the evening session is the next day's";
}

TEST(OptionChain, RoundStrikesHoldMoreInterestAndGammaPeaksAtTheMoney) {
    DerivedBench bench;
    const json all = bench.snapshot("derived:SPY", morning);
    const double spot = all["spot"];
    double round = 0, other = 0, roundCount = 0, otherCount = 0;
    for (const json& row : all["gexByStrike"]) {
        const double strike = row["strike"];
        if (std::abs(strike / spot - 1) > 0.05) continue;
        const double interest = row["callOI"].get<double>() + row["putOI"].get<double>();
        const bool isRound = std::fmod(strike, 10) == 0;
        (isRound ? round : other) += interest;
        (isRound ? roundCount : otherCount) += 1;
    }
    EXPECT_GT(round / roundCount, 2 * other / otherCount);
    const json& today = all["byExpiration"]["2026-06-10"];
    for (const char* wall : {"callWallStrike", "putWallStrike"})
        EXPECT_NEAR(today[wall].get<double>() / spot, 1, 0.02) << wall;
    EXPECT_LT(all["gexByStrike"].front()["callDex"].get<double>() / all["gexByStrike"].front()["callOI"].get<double>(),
              100 * spot * 1.0001)
        << "a delta is at most 1";
}

TEST(OptionChain, TheFlowLeansWithThePriceAndMakesTheHistory) {
    DerivedBench bench;
    for (const char* name : {"QQQ", "IWM", "TSLA"}) {
        const OptionSource& source = *findOptionSource(name);
        const double end = *parseMoment("2026-06-10T15:45:00");
        const json candles = bench.snapshot(std::string("derived:hfHistory:") + name, end)["candles"];
        double agree = 0, count = 0, previous = 0;
        std::int64_t lastMinute = 0;
        const auto minutes = bench.market.path(source.instrument()).closed(static_cast<std::int64_t>(end) * 1000);
        for (const PriceMinute& minute : minutes) {
            const auto found = candles.find(std::to_string(minute.minute));
            if (found == candles.end()) continue;
            const MarketSession session =
                *bench.market.session(source.instrument(), minute.minute, minute.minute * 1000);
            const double close = (*found)["c"];
            EXPECT_LE((*found)["l"], (*found)["o"]);
            EXPECT_GE((*found)["h"], close);
            if (minute.minute == lastMinute + 60 && minute.minute != session.start) {
                EXPECT_EQ((*found)["o"], previous);
            }
            previous = close;
            lastMinute = minute.minute;
            const double reach = session.up[0] - session.open;
            if (std::abs(minute.last - session.open) < reach) continue;
            agree += (close > 0) == (minute.last > session.open);
            ++count;
        }
        EXPECT_EQ(agree, count) << name;
        const double total = bench.snapshot(std::string("derived:") + name, end)["hfTotal"];
        EXPECT_NEAR(total, previous, 0.02 * std::abs(previous)) << name;
    }
}

TEST(OptionChain, ARestingMarketStaysAsItWas) {
    DerivedBench bench;
    const double saturday = *parseMoment("2026-06-13T12:00:00");
    const json first = bench.snapshot("derived:QQQ", saturday);
    EXPECT_EQ(first["expirations"].front(), "2026-06-12");
    test::Listener listener;
    bench.hub.subscribe(listener, {"derived:QQQ", "derived:osc:QQQ", "derived:srlevels:NQ"},
                        static_cast<std::int64_t>(saturday) * 1000);
    for (int i = 1; i < 20; ++i) bench.hub.tick(static_cast<std::int64_t>(saturday + i * 60) * 1000);
    EXPECT_EQ(listener.messages.size(), 3u) << "nothing but the snapshots";
    bench.hub.leave(listener);
}

}  // namespace
}  // namespace vmr
