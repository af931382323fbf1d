#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

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

struct ChainAt {
    ChainAt(DerivedBench& bench, const char* name, const char* moment)
        : source(*findOptionSource(name)), nowMs(static_cast<std::int64_t>(*parseMoment(moment) * 1000)) {
        session = bench.market.session(source.instrument(), nowMs / 1000, nowMs);
        price = bench.market.path(source.instrument()).at(nowMs)->price;
        flow = bench.market.flow(source, *session, price, nowMs);
        chain = &bench.chains.chain(source, *session);
    }
    ChainState state(double atPrice) const {
        ChainState made;
        chain->state(atPrice, nowMs, flow, made);
        return made;
    }
    const OptionSource& source;
    std::int64_t nowMs;
    const MarketSession* session;
    double price;
    OptionFlow flow;
    const OptionChain* chain;
};

TEST(OptionChain, ExposuresAreThoseOfOneModel) {
    DerivedBench bench;
    for (const char* name : {"SPX", "USO", "NVDA"}) {
        const ChainAt at(bench, name, "2026-06-10T12:00:00");
        const ChainState here = at.state(at.price), above = at.state(at.price * 1.0001),
                         below = at.state(at.price * 0.9999);
        for (std::size_t e : {std::size_t{0}, here.byExpiration.size() - 1}) {
            double lastDelta = 1;
            for (std::size_t i = 0; i < here.byExpiration[e].rows.size(); ++i) {
                const StrikeSums& row = here.byExpiration[e].rows[i];
                const auto calls = static_cast<double>(row.callOI), puts = static_cast<double>(row.putOI);
                if (calls < 50 || puts < 50) continue;
                const double shares = 100 * here.spot;
                const double delta = static_cast<double>(row.callDex) / calls / shares;
                EXPECT_NEAR(delta - static_cast<double>(row.putDex) / puts / shares, 1, 1e-3) << name << i;
                EXPECT_LT(delta, lastDelta + 1e-3) << name << " falls with the strike " << i;
                lastDelta = delta;
                const auto deltaOf = [&](const ChainState& state) {
                    return static_cast<double>(state.byExpiration[e].rows[i].callDex) / calls / 100 / state.spot;
                };
                // dollars of delta that a move of 1% adds
                const double gamma = (deltaOf(above) - deltaOf(below)) / 0.0002 * 0.01 * shares;
                EXPECT_NEAR(static_cast<double>(row.callGex) / calls, gamma, 0.02 * gamma + 2) << name << i;
                EXPECT_NEAR(static_cast<double>(row.putGex) / puts, gamma, 0.02 * gamma + 2) << name << i;
            }
        }
        std::vector<double> gammas, flows;
        at.chain->netGamma(at.price, at.nowMs, gammas);
        at.chain->netFlow(at.price, at.nowMs, at.flow, flows);
        ASSERT_EQ(gammas.size(), here.all.rows.size());
        double sum = 0;
        for (std::size_t i = 0; i < gammas.size(); ++i) {
            EXPECT_NEAR(gammas[i], static_cast<double>(here.all.rows[i].netGex()), 60) << name << i;
            sum += flows[i];
        }
        EXPECT_NEAR(sum, at.flow.net(), 1e-6 * std::abs(at.flow.call));
        const StrikeSums total = totalOf(here.all);
        EXPECT_NEAR(static_cast<double>(total.callHf), at.flow.call, 2000) << name;
        EXPECT_NEAR(static_cast<double>(total.putHf), at.flow.put, 2000) << name;
    }
}

TEST(OptionChain, ListsThreeWeeksOfDatesWhoseInterestOutlivesTheDay) {
    DerivedBench bench;
    const ChainAt daily(bench, "QQQ", "2026-06-10T12:00:00"), weekly(bench, "TSLA", "2026-06-10T12:00:00"),
        evening(bench, "QQQ", "2026-06-10T18:30:00");
    EXPECT_EQ(daily.chain->expirations().size(), 15u);
    EXPECT_EQ(daily.chain->expirations().front(), "2026-06-10");
    EXPECT_EQ(daily.chain->expirations().back(), "2026-06-30");
    EXPECT_EQ(weekly.chain->expirations(), (std::vector<std::string>{"2026-06-12", "2026-06-19", "2026-06-26"}));
    EXPECT_EQ(evening.chain->expirations().front(), "2026-06-11") << "the next day's session";
    EXPECT_NE(evening.chain->ratio(), daily.chain->ratio());
    EXPECT_NEAR(evening.chain->ratio() / 41.2, 1, 0.002);

    // both tables are of the coming Friday's options
    const StrikeTable before = daily.state(daily.price).byExpiration[2],
                      after = evening.state(daily.price).byExpiration[1];
    std::map<double, double> open;
    for (std::size_t i = 0; i < before.rows.size(); ++i)
        open[daily.chain->strikes()[before.first + i]] = static_cast<double>(before.rows[i].callOI);
    std::vector<double> changes;
    for (std::size_t i = 0; i < after.rows.size(); ++i) {
        const double was = open[evening.chain->strikes()[after.first + i]];
        if (was > 500) changes.push_back(std::abs(static_cast<double>(after.rows[i].callOI) / was - 1));
    }
    ASSERT_GE(changes.size(), 30u);
    std::sort(changes.begin(), changes.end());
    EXPECT_GT(changes[changes.size() / 2], 0);
    EXPECT_LT(changes[changes.size() / 2], 0.3) << "a little of it changes from day to day";

    const ChainAt close(bench, "QQQ", "2026-06-10T15:30:00"), opening(bench, "QQQ", "2026-06-10T14:00:00");
    const auto gamma = [&](const ChainAt& at) {
        const StrikeTable table = at.state(daily.price).byExpiration[0];
        std::int64_t most = 0;
        for (const StrikeSums& row : table.rows) most = std::max(most, row.callGex);
        return static_cast<double>(most);
    };
    EXPECT_GT(gamma(close) / gamma(opening), 1.4) << "it grows towards the close of its day";
}

}  // namespace
}  // namespace vmr::relay
