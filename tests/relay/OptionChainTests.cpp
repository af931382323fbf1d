#include <gtest/gtest.h>

#include <cmath>

#include "relay/DerivedBench.h"

namespace vmr::relay {
namespace {

using test::DerivedBench;
using test::json;
using test::msOf;

const std::int64_t morning = msOf("2026-06-10T10:00:20");  // a Wednesday
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
        const double price = bench.market.path(source.instrument()).at(morning)->price;
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

TEST(OptionChain, ExposuresAreThoseOfOneModel) {
    DerivedBench bench;
    const OptionSource& source = *findOptionSource("SPX");
    const MarketSession& session = *bench.market.session(source.instrument(), morning / 1000, morning);
    const double price = bench.market.path(source.instrument()).at(morning)->price;
    const OptionFlow flow = bench.market.flow(source, session, price, morning);
    const OptionChain& chain = bench.chains.chain(source, session);
    EXPECT_EQ(chain.expirations().size(), 14u) << "of three weeks, with a holiday";
    ChainState here, above, below;
    chain.state(price, morning, flow, here);
    chain.state(price * 1.0001, morning, flow, above);
    chain.state(price * 0.9999, morning, flow, below);
    for (std::size_t e : {std::size_t{0}, here.byExpiration.size() - 1}) {
        double lastDelta = 1;
        for (std::size_t i = 0; i < here.byExpiration[e].rows.size(); ++i) {
            const StrikeSums& row = here.byExpiration[e].rows[i];
            const auto calls = static_cast<double>(row.callOI), puts = static_cast<double>(row.putOI);
            if (calls < 50 || puts < 50) continue;
            const auto deltaOf = [&](const ChainState& state) {
                return static_cast<double>(state.byExpiration[e].rows[i].callDex) / calls / 100 / state.spot;
            };
            const double delta = deltaOf(here), shares = 100 * here.spot;
            EXPECT_NEAR(delta - static_cast<double>(row.putDex) / puts / shares, 1, 1e-3) << i;
            EXPECT_LT(delta, lastDelta + 1e-3) << "falls with the strike " << i;
            lastDelta = delta;
            // dollars of delta that a move of 1% adds
            const double gamma = (deltaOf(above) - deltaOf(below)) / 0.0002 * 0.01 * shares;
            EXPECT_NEAR(static_cast<double>(row.callGex) / calls, gamma, 0.02 * gamma + 2) << i;
            EXPECT_NEAR(static_cast<double>(row.putGex) / puts, gamma, 0.02 * gamma + 2) << i;
        }
    }
    const StrikeSums total = totalOf(here.all);
    EXPECT_NEAR(static_cast<double>(total.callHf), flow.call, 2000);
    EXPECT_NEAR(static_cast<double>(total.putHf), flow.put, 2000);
}

TEST(OptionChain, TheFlowHasBurstsOfCallsAndOfPutsApart) {
    DerivedBench bench;
    for (const char* name : {"QQQ", "SPX", "AAPL"}) {
        const OptionSource& source = *findOptionSource(name);
        const MarketSession& session = *bench.market.session(source.instrument(), morning / 1000, morning);
        const double large = 0.03 * DerivedMarket::flowUnit(source, session);
        int calls = 0, puts = 0, quiet = 0;
        OptionFlow before = bench.market.flow(source, session, session.open, morning);
        for (int i = 1; i <= 1440; ++i) {  // two hours at one price
            const OptionFlow flow = bench.market.flow(source, session, session.open, morning + i * 5000);
            ASSERT_GE(flow.call, 0) << name << i;
            ASSERT_LE(flow.put, 0) << name << i;
            const double call = flow.call - before.call, put = before.put - flow.put;
            calls += call > large && put < large / 2;
            puts += put > large && call < large / 2;
            quiet += std::abs(call) < large / 6 && std::abs(put) < large / 6;
            before = flow;
        }
        EXPECT_GT(calls, 8) << name;
        EXPECT_GT(puts, 8) << name;
        EXPECT_GT(quiet, 700) << name << ": most of the time nothing of the kind happens";
    }
}

// Gamma over the strikes within a share of the spot.
double gammaWithin(const OptionChain& chain, const ChainState& state, std::size_t expiration, double share) {
    const StrikeTable& table = state.byExpiration[expiration];
    double sum = 0;
    for (std::size_t i = 0; i < table.rows.size(); ++i)
        if (std::abs(chain.strikes()[table.first + i] / state.spot - 1) <= share)
            sum += static_cast<double>(table.rows[i].callGex + table.rows[i].putGex);
    return sum;
}

TEST(OptionChain, GammaGathersInFrontAndNearTheMoneyFollowsTheSpotAndDecays) {
    DerivedBench bench;
    for (const char* name : {"QQQ", "SPX", "SPY"}) {
        const OptionSource& source = *findOptionSource(name);
        const MarketSession& session = *bench.market.session(source.instrument(), morning / 1000, morning);
        const OptionChain& chain = bench.chains.chain(source, session);
        const std::size_t last = chain.expirations().size() - 1;
        const auto at = [&](double share, const char* time) {
            ChainState state;
            chain.state(session.open * share, msOf(std::string("2026-06-10T") + time), {}, state);
            return state;
        };
        const ChainState now = at(1, "10:00"), up = at(1.01, "10:00"), late = at(1, "15:30");
        const auto nearShare = [&](const ChainState& state, std::size_t expiration) {
            return gammaWithin(chain, state, expiration, 0.005) / gammaWithin(chain, state, expiration, 0.02);
        };
        EXPECT_GT(nearShare(now, 0), 0.5) << name;
        EXPECT_GT(nearShare(now, 0), 1.5 * nearShare(now, last)) << name;
        EXPECT_GT(nearShare(up, 0), 0.5) << name << ": around the other spot";
        EXPECT_GT(nearShare(late, 0), nearShare(now, 0)) << name << ": what is off the money decays";
        EXPECT_LT(gammaWithin(chain, late, 0, 0.02) - gammaWithin(chain, late, 0, 0.01),
                  0.1 * (gammaWithin(chain, now, 0, 0.02) - gammaWithin(chain, now, 0, 0.01)))
            << name;
        double front = 0, all = 0;
        for (std::size_t e = 0; e <= last; ++e) {
            const double sum = gammaWithin(chain, now, e, 0.02);
            all += sum;
            if (e < 3) front += sum;
        }
        EXPECT_GT(front, 0.4 * all) << name;
    }
}

// In its last 20 minutes an option's gamma changes no more.
TEST(OptionChain, ExpirationsEndAtFourAlsoAcrossAClockChange) {
    DerivedBench bench;
    const OptionSource& source = *findOptionSource("SPX");
    for (const auto& [friday, monday] : {std::pair<std::string, std::string>("2026-06-05", "2026-06-08"),
                                         {"2026-10-30", "2026-11-02"},
                                         {"2026-03-06", "2026-03-09"}}) {
        const std::int64_t now = msOf(friday + "T10:00");
        const MarketSession& session = *bench.market.session(source.instrument(), now / 1000, now);
        const OptionChain& chain = bench.chains.chain(source, session);
        ASSERT_EQ(chain.expirations().at(1), monday);
        const auto gammaAt = [&, day = monday](const char* time) {
            ChainState state;
            chain.state(session.open, msOf(day + time), {}, state);
            return totalOf(state.byExpiration[1]).callGex;
        };
        EXPECT_NE(gammaAt("T15:30"), gammaAt("T15:41")) << monday;
        EXPECT_EQ(gammaAt("T15:41"), gammaAt("T16:00")) << monday;
    }
}

TEST(OptionChain, ExpirationsKeepTheExchangesHolidays) {
    DerivedBench bench;
    const std::tuple<const char*, const char*, std::vector<std::string>> cases[] = {
        {"SPY", "2026-11-24", {"2026-11-24", "2026-11-25", "2026-11-27", "2026-11-30"}},  // Thanksgiving
        {"AAPL", "2026-03-30", {"2026-04-02", "2026-04-10", "2026-04-17"}},               // Good Friday
        {"AAPL", "2026-06-29", {"2026-07-02", "2026-07-10", "2026-07-17"}},  // a Fourth of July on Saturday
        {"GLD", "2027-12-22", {"2027-12-22", "2027-12-23", "2027-12-27"}},   // Christmas on Saturday
        {"GLD", "2027-12-30", {"2027-12-30", "2027-12-31", "2028-01-03"}},   // New Year on Saturday
        {"GLD", "2026-01-16", {"2026-01-16", "2026-01-20"}},                 // the third Monday
    };
    for (const auto& [source, day, dates] : cases) {
        const json all = bench.snapshot(std::string("derived:") + source, msOf(std::string(day) + "T10:00"));
        for (std::size_t i = 0; i < dates.size(); ++i) EXPECT_EQ(all["expirations"][i], dates[i]) << source << day;
    }
}

}  // namespace
}  // namespace vmr::relay
