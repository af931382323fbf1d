#include <gtest/gtest.h>

#include <algorithm>

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
