#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>

#include "market/ClockSetting.h"
#include "relay/DerivedBench.h"
#include "relay/MarketTime.h"
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
    // through a session's opening hour, across its change in the evening, and many times as fast
    for (const Case& one : {Case{"day", 1, "2026-06-10T09:28:10", "2026-06-10T09:34:33", 970},
                            Case{"evening", 1, "2026-06-10T16:58:03", "2026-06-10T18:03:41", 4930},
                            Case{"fast", 60, "2026-06-10T09:00:00", "2026-06-10T11:00:07", 4800}}) {
        const std::vector<std::string> channels{
            "derived:QQQ",           "derived:gexBubbles:QQQ", "derived:hfTriangles:QQQ",
            "derived:hfHistory:QQQ", "derived:osc:QQQ",        "derived:srlevels:NQ",
            "derived:AAPL",          "derived:hfHistory:AAPL"};
        DerivedBench bench(1, one.speed), later(1, one.speed);
        Listener early, late;
        EXPECT_TRUE(bench.hub.subscribe(early, channels, ms(one.from)).empty());
        for (std::int64_t now = ms(one.from); now < ms(one.to); now += one.tickMs) bench.hub.tick(now);
        bench.hub.tick(ms(one.to));
        EXPECT_TRUE(later.hub.subscribe(late, channels, ms(one.to)).empty());
        for (const std::string& channel : channels) {
            EXPECT_EQ(late.messages.size(), channels.size());
            EXPECT_EQ(newest(early.state[channel], late.state[channel]), late.state[channel]) << one.name << channel;
        }
        const double seconds = static_cast<double>(ms(one.to) - ms(one.from)) / 1000;
        double patches = 0;
        for (const auto& heard : early.messages) {
            if (heard.type != "event" || heard.channel != "derived:QQQ") continue;
            ++patches;
            const bool rolled = std::count(heard.keys.begin(), heard.keys.end(), "expirations") > 0;
            EXPECT_EQ(rolled, std::count(heard.keys.begin(), heard.keys.end(), "totalCallOI") > 0)
                << "interest stands for the day";
            EXPECT_LE(heard.keys.size(), rolled ? 13u : 9u);
        }
        EXPECT_LE(patches, seconds / one.speed + 1) << one.name;
        EXPECT_GE(patches, 50) << one.name;
        bench.hub.leave(early);
        later.hub.leave(late);
    }
    EXPECT_NE(DerivedBench(2).snapshot("derived:QQQ", 1781100000), DerivedBench(1).snapshot("derived:QQQ", 1781100000));
}

TEST(DerivedChannels, MarkersStandOnWholeMinutesAndListedStrikes) {
    DerivedBench bench;
    for (const char* source : {"NDX", "NVDA"}) {
        const double now = *parseMoment("2026-06-10T15:30:12");
        std::set<double> strikes;
        const json chain = bench.snapshot(std::string("derived:") + source, now);
        for (const json& row : chain["gexByStrike"]) strikes.insert(row["strike"].get<double>());
        const auto today = static_cast<std::int64_t>(*parseMoment("2026-06-09T18:00"));
        const json bubbles = bench.snapshot(std::string("derived:gexBubbles:") + source, now)["bubbles"];
        EXPECT_GE(bubbles.size(), 600u);
        for (const auto& [minute, bubble] : bubbles.items()) {
            EXPECT_EQ(std::stoll(minute) % 60, 0);
            EXPECT_TRUE(bubble["pos"].is_boolean());
            for (const char* dom : {"dom", "dom2", "dom3"}) EXPECT_TRUE(bubble[dom] > 0 && bubble[dom] <= 1) << dom;
            if (std::stoll(minute) < today) continue;
            for (const char* key : {"s", "s2", "s3"}) EXPECT_TRUE(strikes.contains(bubble[key])) << bubble[key];
        }
        const json triangles = bench.snapshot(std::string("derived:hfTriangles:") + source, now)["triangles"];
        EXPECT_GE(triangles.size(), 600u);
        for (const auto& [minute, triangle] : triangles.items()) {
            EXPECT_EQ(std::stoll(minute) % 60, 0);
            ASSERT_EQ(triangle["d"].size(), 4u);
            if (std::stoll(minute) < today) continue;
            for (const json& pair : triangle["d"]) EXPECT_TRUE(strikes.contains(pair[0])) << pair;
        }
    }
}

TEST(DerivedChannels, TheOscillatorFitsItsScaleAndVixRestsAtNight) {
    DerivedBench bench;
    const json points = bench.snapshot("derived:osc:QQQ", *parseMoment("2026-06-10T15:30:12"))["points"];
    std::map<std::string, std::pair<double, double>> range;
    for (const auto& [minute, values] : points.items()) {
        for (const auto& [name, value] : values.items()) {
            range[name].first = std::min(range[name].first, value.get<double>());
            range[name].second = std::max(range[name].second, value.get<double>());
        }
    }
    ASSERT_EQ(range.size(), 6u);
    for (const auto& [name, span] : range) {
        EXPECT_GT(span.first, -150) << name;
        EXPECT_LT(span.second, 150) << name;
        EXPECT_GT(span.second - span.first, 60) << name << " moves";
    }
    EXPECT_TRUE(points[std::to_string(ms("2026-06-10T11:00") / 1000)].contains("vix"));
    const json& night = points[std::to_string(ms("2026-06-10T02:00") / 1000)];
    EXPECT_FALSE(night.contains("vix"));
    EXPECT_TRUE(night.contains("nq") && night.contains("es") && night.contains("net"));
}

TEST(DerivedChannels, LevelsComeIntoForceWhenThePriceReachesTheOneBefore) {
    DerivedBench bench;
    std::size_t reached = 0;
    for (const char* root : {"NQ", "ES", "RTY", "YM", "GC", "CL"}) {
        const Instrument& instrument = *findTradable(root);
        const double now = *parseMoment("2026-06-12T16:30:00");
        const json sessions = bench.snapshot(std::string("derived:srlevels:") + root, now)["sessions"];
        EXPECT_EQ(sessions.size(), 6u) << root;
        for (const auto& [start, session] : sessions.items()) {
            const std::int64_t open = session["sessionOpenTs"];
            EXPECT_EQ(std::to_string(open), start);
            std::vector<Trade> all, minute;
            for (std::int64_t t = open; t < open + 23 * 3600; t += 60) {
                bench.source(instrument).minuteTrades(t, minute);
                for (const Trade& trade : minute) {
                    if (trade.timeMs <= now * 1000) all.push_back(trade);
                }
            }
            EXPECT_EQ(session["openPrice"], all.front().price);
            for (const char* key : {"up", "dn"}) {
                const double sign = key[0] == 'u' ? 1 : -1;
                const json& levels = session[key];
                ASSERT_GE(levels.size(), 1u);
                EXPECT_EQ(levels[0]["triggerTime"], all.front().timeMs / 1000);
                double before = all.front().price * sign;
                for (std::size_t i = 0; i < levels.size(); ++i) {
                    EXPECT_EQ(levels[i]["i"], i + 1);
                    const double price = levels[i]["price"].get<double>() * sign;
                    EXPECT_GT(price, before);
                    before = price;
                    const auto crossing = std::find_if(all.begin(), all.end(),
                                                       [&](const Trade& trade) { return trade.price * sign >= price; });
                    if (i + 1 < levels.size()) {
                        ASSERT_NE(crossing, all.end());
                        EXPECT_EQ(levels[i + 1]["triggerTime"], crossing->timeMs / 1000) << root << key << i;
                        ++reached;
                    } else if (i + 1 < MarketSession::levels) {
                        EXPECT_EQ(crossing, all.end()) << root << key << i;
                    }
                }
            }
        }
    }
    EXPECT_GT(reached, 10u);
}

TEST(DerivedChannels, OnATapeTheyFollowTheTapesPrice) {
    const std::string file = testing::TempDir() + "/relay_derived_tape.csv";
    std::ofstream out(file);
    out << "timestamp,price,size\n";
    for (int i = 0; i < 600; ++i) {
        const int second = i * 7;
        out << "2013-10-07T1" << 2 + second / 3600 << ":" << (second / 60 % 60 < 10 ? "0" : "") << second / 60 % 60
            << ":" << (second % 60 < 10 ? "0" : "") << second % 60 << "Z," << 1310 + i * 0.05 << ",1\n";
    }
    out.close();
    std::string error;
    const auto tape = Tape::load(file, 0.1, error);
    ASSERT_TRUE(tape) << error;
    DerivedBench bench(1, 1, {{"GC", tape.get()}});
    const double now = *parseMoment("2013-10-07T12:30:00Z");
    const json all = bench.snapshot("derived:GLD", now);
    EXPECT_NEAR(all["spot"].get<double>() * all["etfRatio"].get<double>(), 1310 + 1800 / 7 * 0.05, 0.06);
    EXPECT_NEAR(all["spot"].get<double>(), 121, 2);
    EXPECT_EQ(all["expirations"].front(), "2013-10-07");
    EXPECT_EQ(bench.snapshot("derived:hfHistory:GLD", now)["candles"].size(), 30u);
    EXPECT_GT(bench.snapshot("derived:hfHistory:GLD", now)["candles"]["1381148940"]["c"], 1e7)
        << "a rising price draws buyers of calls";
    EXPECT_EQ(bench.snapshot("derived:srlevels:GC", now)["sessions"].begin().value()["openPrice"], 1310);
    EXPECT_TRUE(bench.snapshot("derived:GLD", *parseMoment("2013-10-07T11:59:00Z")).is_null())
        << "before its first trade there is nothing to tell";
}

}  // namespace
}  // namespace vmr
