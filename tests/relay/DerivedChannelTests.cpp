#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "market/ClockSetting.h"
#include "relay/DerivedBench.h"

namespace vmr::relay {
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
        DerivedBench bench(one.speed), later(one.speed);
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

TEST(DerivedChannels, ALevelIsInForceFromTheSecondThatReachedTheOneBefore) {
    for (const char* root : {"NQ", "CL"}) {
        DerivedBench bench;
        const Instrument& instrument = *findTradable(root);
        const double now = *parseMoment("2026-06-10T11:00:00");
        const json sessions = bench.snapshot("derived:srlevels:" + std::string(root), now)["sessions"];
        EXPECT_EQ(sessions.size(), 6u) << root;
        for (const auto& [start, session] : sessions.items()) {
            const std::int64_t open = std::stoll(start);
            std::vector<Trade> trades, minute;
            for (std::int64_t t = open; t < std::min(open + 82800, static_cast<std::int64_t>(now)); t += 60) {
                bench.source(instrument).minuteTrades(t, minute);
                trades.insert(trades.end(), minute.begin(), minute.end());
            }
            EXPECT_EQ(session["sessionOpenTs"], open);
            EXPECT_EQ(session["openPrice"], trades.front().price) << root;
            for (const int side : {1, -1}) {
                const json& levels = session[side > 0 ? "up" : "dn"];
                std::size_t reached = 0;
                std::int64_t trigger = trades.front().timeMs / 1000;
                for (std::size_t i = 0; i < levels.size(); ++i) {
                    const double price = levels[i]["price"];
                    EXPECT_EQ(levels[i]["label"], (side > 0 ? "R" : "S") + std::to_string(i + 1));
                    EXPECT_EQ(levels[i]["triggerTime"], trigger) << root << start << i;
                    const auto at = std::find_if(trades.begin(), trades.end(),
                                                 [&](const Trade& one) { return side * one.price >= side * price; });
                    if (at == trades.end()) continue;
                    trigger = at->timeMs / 1000;
                    ++reached;
                }
                EXPECT_EQ(levels.size(), std::min<std::size_t>(reached + 1, 4)) << root << start;
            }
        }
    }
}

TEST(DerivedChannels, MinutesFollowFromTheChainAndTheFlow) {
    DerivedBench bench;
    const double now = *parseMoment("2026-06-10T10:30:00");
    const json bubbles = bench.snapshot("derived:gexBubbles:SPY", now)["bubbles"],
               triangles = bench.snapshot("derived:hfTriangles:SPY", now)["triangles"],
               candles = bench.snapshot("derived:hfHistory:SPY", now)["candles"],
               points = bench.snapshot("derived:osc:SPY", now)["points"];
    EXPECT_EQ(bubbles.size(), 600u);
    const OptionSource& source = *findOptionSource("SPY");
    PricePath& path = bench.market.path(source.instrument());
    std::vector<double> gamma, start, end;
    json before;
    for (const auto& [text, bubble] : bubbles.items()) {
        const std::int64_t minute = std::stoll(text), endMs = (minute + 60) * 1000;
        const MarketSession& session = *bench.market.session(source.instrument(), minute, endMs);
        const OptionChain& chain = bench.chains.chain(source, session);
        const PriceMinute prices = *path.minute(minute, endMs);
        chain.netGamma(prices.last, endMs, gamma);
        const auto at = [&](double strike) {
            const auto& all = chain.strikes();
            return static_cast<std::size_t>(std::find(all.begin(), all.end(), strike) - all.begin());
        };
        for (const char* number : {"", "2", "3"}) {
            const double strike = bubble[std::string("s") + number];
            EXPECT_NEAR(strike * chain.ratio() / prices.last, 1, 0.02);
            EXPECT_EQ(bubble[std::string("pos") + number], gamma[at(strike)] > 0) << text << number;
        }
        const json& candle = candles[text];
        const OptionFlow flow = bench.market.flow(source, session, prices.last, endMs);
        EXPECT_EQ(candle["c"], std::round(flow.net())) << text;
        for (const char* key : {"o", "c"}) {
            EXPECT_GE(candle["h"], candle[key]);
            EXPECT_LE(candle["l"], candle[key]);
        }
        const json last = std::exchange(before, candle);
        if (minute == session.start || last.is_null()) continue;
        EXPECT_EQ(candle["o"], last["c"]) << text;
        chain.netFlow(prices.before, minute * 1000, bench.market.flow(source, session, prices.before, minute * 1000),
                      start);
        chain.netFlow(prices.last, endMs, flow, end);
        std::multimap<double, double> largest;  // all net flows by their size
        for (std::size_t i = 0; i < end.size(); ++i) {
            const double net = std::round(end[i] - start[i]);
            largest.emplace(-std::abs(net), net);
        }
        ASSERT_EQ(triangles[text]["d"].size(), 4u);
        auto next = largest.begin();
        for (const json& one : triangles[text]["d"]) {
            EXPECT_EQ(one[1], std::round(end[at(one[0])] - start[at(one[0])])) << text;
            EXPECT_EQ(std::abs(one[1].get<double>()), -next++->first) << text;
        }
    }
    double most = 0;
    for (const auto& [text, point] : points.items()) {
        const bool day = SessionCalendar().open(std::stoll(text), Family::indices);
        EXPECT_EQ(point.contains("vix"), day) << text;
        for (const auto& [key, value] : point.items()) most = std::max(most, std::abs(value.get<double>()));
        EXPECT_NEAR(point["nq"], point["es"].get<double>(), 1e-9) << "SPY's own future is ES";
    }
    EXPECT_LE(most, 120);
    EXPECT_GT(most, 100);
}

TEST(DerivedChannels, EventsGoToTheirOwnSourceOnly) {
    DerivedBench bench;
    test::Inbox inbox;
    bench.hub.subscribe(inbox, {"derived:QQQ", "derived:AAPL", "derived:gexBubbles:NDX"}, ms("2026-06-10T16:00:30"));
    inbox.messages.clear();
    for (std::int64_t now = ms("2026-06-10T16:00:30"); now <= ms("2026-06-10T16:01:10"); now += 500)
        bench.hub.tick(now);
    const auto patches = inbox.of("derived:QQQ", "event");
    EXPECT_EQ(patches.size(), 40u);
    EXPECT_TRUE(inbox.of("derived:AAPL").empty()) << "its market has closed";
    EXPECT_FALSE(patches[0]["payload"].contains("etfRatio")) << "nor is sent what has not changed";
    bench.hub.unsubscribe(inbox, {"derived:QQQ"});
    inbox.messages.clear();
    bench.hub.tick(ms("2026-06-10T16:02:00"));
    EXPECT_FALSE(inbox.of("derived:gexBubbles:NDX").empty());
    EXPECT_EQ(bench.snapshot("derived:gexBubbles:NDX", *parseMoment("2026-06-10T16:02:00"))["bubbles"].size(), 600u);
    bench.hub.tick(ms("2026-06-11T16:02:01"));
    EXPECT_EQ(inbox.messages.back()["type"], "snapshot") << "in place of a day of minutes";
    EXPECT_EQ(inbox.of("derived:QQQ").size(), 0u);
}

TEST(DerivedChannels, AfterTheClockWasSetBackAllIsAsIfTheMarketHadOnlyJustCome) {
    const std::vector<std::string> channels{
        "derived:QQQ",           "derived:gexBubbles:QQQ", "derived:hfTriangles:QQQ",
        "derived:hfHistory:QQQ", "derived:osc:QQQ",        "derived:srlevels:NQ"};
    const char* const start = "2026-06-10T09:34:33";
    DerivedBench bench;
    Listener early;
    EXPECT_TRUE(bench.hub.subscribe(early, channels, ms(start)).empty());
    for (const char* back : {"2026-06-10T09:34:31", "2026-06-10T09:29:59", "2026-05-27T18:00:05"}) {
        bench.hub.tick(ms(start));
        early.state.clear();
        bench.hub.tick(ms(back));
        DerivedBench fresh;
        Listener late;
        EXPECT_TRUE(fresh.hub.subscribe(late, channels, ms(back)).empty());
        for (const std::string& channel : channels)
            EXPECT_EQ(early.state[channel], late.state[channel]) << back << channel;
        fresh.hub.leave(late);
    }
    bench.hub.leave(early);
}

TEST(DerivedChannels, AFasterOrSlowerClockNeverShowsAnEarlierState) {
    DerivedBench bench;
    Listener one;
    const std::vector<std::string> channels{"derived:QQQ", "derived:hfHistory:QQQ"};
    EXPECT_TRUE(bench.hub.subscribe(one, channels, ms("2026-06-10T10:00:20")).empty());
    bench.hub.tick(ms("2026-06-10T10:00:50"));
    const auto before = one.state;
    bench.clock.setSpeed(60);
    bench.hub.tick(ms("2026-06-10T10:00:59"));
    EXPECT_EQ(one.state, before) << "the grid of a fast clock begins with the next minute";
    bench.hub.tick(ms("2026-06-10T10:01:05"));
    EXPECT_NE(one.state["derived:QQQ"], before.at("derived:QQQ"));
    const int heard = one.heard["derived:QQQ"];
    bench.clock.setSpeed(1);
    bench.hub.tick(ms("2026-06-10T10:01:06"));
    EXPECT_GT(one.heard["derived:QQQ"], heard);
    bench.hub.leave(one);
}

}  // namespace
}  // namespace vmr::relay
