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

}  // namespace
}  // namespace vmr::relay
