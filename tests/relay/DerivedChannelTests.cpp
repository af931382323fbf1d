#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "market/ClockSetting.h"
#include "relay/DerivedBench.h"
#include "relay/Tape.h"

namespace vmr {
namespace {

using test::DerivedBench;
using test::json;
using test::Listener;

std::int64_t ms(const char* moment) { return static_cast<std::int64_t>(*parseMoment(moment) * 1000); }

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
        const std::vector<std::string> channels{
            "derived:QQQ",           "derived:gexBubbles:QQQ", "derived:hfTriangles:QQQ",
            "derived:hfHistory:QQQ", "derived:osc:QQQ",        "derived:srlevels:NQ"};
        DerivedBench bench(1, one.speed), later(1, one.speed);
        Listener early, late;
        EXPECT_TRUE(bench.hub.subscribe(early, channels, ms(one.from)).empty());
        for (std::int64_t now = ms(one.from); now < ms(one.to); now += one.tickMs) bench.hub.tick(now);
        bench.hub.tick(ms(one.to));
        EXPECT_TRUE(later.hub.subscribe(late, channels, ms(one.to)).empty());
        for (const std::string& channel : channels)
            EXPECT_EQ(newest(early.state[channel], late.state[channel]), late.state[channel]) << one.name << channel;
        const auto seconds = static_cast<double>(ms(one.to) - ms(one.from)) / 1000;
        EXPECT_LE(early.heard["derived:QQQ"], seconds / one.speed + 2) << "once a second of real time";
        EXPECT_GE(early.heard["derived:QQQ"], 50) << one.name;
        bench.hub.leave(early);
        later.hub.leave(late);
    }
}

TEST(DerivedChannels, LevelsComeIntoForceWhenThePriceReachesTheOneBefore) {
    DerivedBench bench;
    std::size_t reached = 0;
    const double now = *parseMoment("2026-06-12T16:30:00");
    const json sessions = bench.snapshot("derived:srlevels:NQ", now)["sessions"];
    EXPECT_EQ(sessions.size(), 6u);
    for (const auto& [start, session] : sessions.items()) {
        const std::int64_t open = session["sessionOpenTs"];
        std::vector<Trade> all, minute;
        for (std::int64_t t = open; t < open + 23 * 3600 && static_cast<double>(t) < now; t += 60) {
            bench.source(*findTradable("NQ")).minuteTrades(t, minute);
            all.insert(all.end(), minute.begin(), minute.end());
        }
        EXPECT_EQ(session["openPrice"], all.front().price);
        for (const auto& [key, sign] : {std::pair("up", 1.0), {"dn", -1.0}}) {
            double before = all.front().price * sign;
            std::int64_t inForce = all.front().timeMs / 1000;
            for (const json& level : session[key]) {
                EXPECT_EQ(level["triggerTime"], inForce) << start << level;
                const double price = level["price"].get<double>() * sign;
                EXPECT_GT(price, before);
                before = price;
                const auto crossing = std::find_if(all.begin(), all.end(), [price, sign = sign](const Trade& trade) {
                    return trade.price * sign >= price;
                });
                inForce = crossing == all.end() ? 0 : crossing->timeMs / 1000;
                reached += inForce > 0;
            }
        }
    }
    EXPECT_GT(reached, 3u);
}

TEST(DerivedChannels, OnATapeTheyFollowTheTapesPrice) {
    const std::string file = testing::TempDir() + "/relay_derived_tape.csv";
    std::ofstream out(file);
    out << "timestamp,price,size\n";
    for (int i = 0; i < 600; ++i) out << 1381147200 + i * 7 << "," << 1310 + i * 0.05 << ",1\n";
    out.close();
    std::string error;
    const auto tape = Tape::load(file, 0.1, error);
    ASSERT_TRUE(tape) << error;
    DerivedBench bench(1, 1, {{"GC", tape.get()}});
    const double now = *parseMoment("2013-10-07T12:30:00Z");
    const json all = bench.snapshot("derived:GLD", now);
    EXPECT_NEAR(all["spot"].get<double>() * all["etfRatio"].get<double>(), 1310 + 1800 / 7 * 0.05, 0.06);
    const json flow = bench.snapshot("derived:hfHistory:GLD", now)["candles"];
    EXPECT_EQ(flow.size(), 30u);
    EXPECT_GT(flow["1381148940"]["c"], 1e7) << "a rising price draws buyers of calls";
    EXPECT_TRUE(bench.snapshot("derived:GLD", *parseMoment("2013-10-07T11:59:00Z")).is_null())
        << "before its first trade there is nothing to tell";
}

}  // namespace
}  // namespace vmr
