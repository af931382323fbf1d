#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "relay/DerivedBench.h"

namespace vmr::relay {
namespace {

using test::DerivedBench;
using test::json;
using test::Listener;
using test::msOf;

const std::vector<std::string> channels{"derived:QQQ",           "derived:gexBubbles:QQQ", "derived:hfTriangles:QQQ",
                                        "derived:hfHistory:QQQ", "derived:osc:QQQ",        "derived:srlevels:NQ"};

/// A snapshot holds the newest minutes only, a listener all that it has heard.
json newest(const json& all, const json& like) {
    json kept = like;
    for (const auto& [key, value] : all.items()) {
        if (!value.is_object() || key == "byExpiration") {
            kept[key] = value;
            continue;
        }
        kept[key] = json::object();
        for (auto at = value.rbegin(); at != value.rend() && kept[key].size() < like[key].size(); ++at)
            kept[key][at.key()] = at.value();
    }
    return kept;
}

TEST(DerivedChannels, EventsOnTheSnapshotMakeTheLaterSnapshotWhoeverAsksAndWhen) {
    struct Case {
        const char* name;
        double speed;
        const char *from, *to;
        std::int64_t tickMs;
    };
    for (const Case& one : {Case{"opening", 1, "2026-06-10T09:28:10", "2026-06-10T09:34:33", 970},
                            Case{"evening", 1, "2026-06-10T16:58:03", "2026-06-10T18:03:41", 4930},
                            Case{"fast", 60, "2026-06-10T09:00:00", "2026-06-10T11:00:07", 4800}}) {
        DerivedBench bench(one.speed), later(one.speed);
        Listener early;
        EXPECT_TRUE(bench.hub.subscribe(early, channels, msOf(one.from)).empty());
        for (std::int64_t now = msOf(one.from); now < msOf(one.to); now += one.tickMs) bench.hub.tick(now);
        bench.hub.tick(msOf(one.to));
        for (const std::string& channel : channels) {
            const json late = later.snapshot(channel, msOf(one.to));
            EXPECT_EQ(newest(early.state[channel], late), late) << one.name << channel;
        }
        const auto seconds = static_cast<double>(msOf(one.to) - msOf(one.from)) / 1000;
        EXPECT_LE(early.heard["derived:QQQ"], seconds / one.speed + 2) << "once a second of real time";
        EXPECT_GE(early.heard["derived:QQQ"], 50) << one.name;
        bench.hub.leave(early);
    }
}

TEST(DerivedChannels, MinutesFollowFromTheChainAndTheFlow) {
    DerivedBench bench;
    const std::int64_t now = msOf("2026-06-10T10:30:00");
    const json triangles = bench.snapshot("derived:hfTriangles:SPY", now)["triangles"],
               candles = bench.snapshot("derived:hfHistory:SPY", now)["candles"];
    const Instrument& instrument = findOptionSource("SPY")->instrument();
    std::vector<double> start, end;
    json before;
    for (const auto& [text, candle] : candles.items()) {
        const std::int64_t minute = std::stoll(text), endMs = (minute + 60) * 1000;
        const MarketSession& session = *bench.market.session(instrument, minute, endMs);
        const OptionChain& chain = bench.chains.chain(*findOptionSource("SPY"), session);
        const PriceMinute prices = *bench.market.path(instrument).minute(minute, endMs);
        const auto at = [&](double strike) {
            const auto& all = chain.strikes();
            return static_cast<std::size_t>(std::find(all.begin(), all.end(), strike) - all.begin());
        };
        const OptionFlow flow = bench.market.flow(*findOptionSource("SPY"), session, prices.last, endMs);
        EXPECT_EQ(candle["c"], std::round(flow.net())) << text;
        const json last = std::exchange(before, candle);
        if (minute == session.start || last.is_null() || !triangles.contains(text)) continue;  // flow goes further back
        EXPECT_EQ(candle["o"], last["c"]) << text;
        chain.netFlow(prices.before, minute * 1000,
                      bench.market.flow(*findOptionSource("SPY"), session, prices.before, minute * 1000), start);
        chain.netFlow(prices.last, endMs, flow, end);
        ASSERT_EQ(triangles[text]["d"].size(), 4u);
        double least = HUGE_VAL;
        for (const json& one : triangles[text]["d"]) {
            EXPECT_EQ(one[1], std::round(end[at(one[0])] - start[at(one[0])])) << text;
            EXPECT_LE(std::abs(one[1].get<double>()), least) << "the largest first";
            least = std::abs(one[1].get<double>());
        }
        std::size_t larger = 0;
        for (std::size_t i = 0; i < end.size(); ++i) larger += std::abs(std::round(end[i] - start[i])) > least;
        EXPECT_LE(larger, 3u) << text;
    }
}

TEST(DerivedChannels, AfterTheClockWasSetBackAllIsAsIfTheMarketHadOnlyJustCome) {
    const char* const start = "2026-06-10T09:34:33";
    DerivedBench bench;
    Listener early;
    EXPECT_TRUE(bench.hub.subscribe(early, channels, msOf(start)).empty());
    for (const char* back : {"2026-06-10T09:34:31", "2026-06-10T09:29:59", "2026-05-27T18:00:05"}) {
        bench.hub.tick(msOf(start));
        early.state.clear();
        bench.hub.tick(msOf(back));
        DerivedBench fresh;
        for (const std::string& channel : channels)
            EXPECT_EQ(early.state[channel], fresh.snapshot(channel, msOf(back))) << back << channel;
    }
    bench.hub.leave(early);
}

}  // namespace
}  // namespace vmr::relay
