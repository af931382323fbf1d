#include <set>

#include "base/Json.h"
#include "market/CandleParser.h"
#include "relay/RelayProbe.h"

namespace vmr {
namespace {

using test::json;
using test::RelayProbe;

struct RelayFaults : test::RunningRelay {};

TEST_F(RelayFaults, CommandsDoWhatTheySay) {
    const auto dropped = greeted();
    EXPECT_EQ(relay->command("drop"), "ok dropped 1 socket");
    const auto end = dropped->read();
    EXPECT_TRUE(end.ended && !end.timedOut);
    EXPECT_EQ(end.closeCode, 0);
    const auto closed = greeted();
    EXPECT_EQ(relay->command("close 4321"), "ok closing 1 socket");
    EXPECT_EQ(closed->read().closeCode, 4321);

    auto probe = greeted();
    EXPECT_EQ(relay->command("mute on"), "ok on");
    probe->send(R"({"type":"ping"})");
    probe->send(R"({"action":"dance"})");
    EXPECT_EQ(json::parse(probe->read().text)["type"], "error") << "the ping before it stays unanswered";
    relay->command("mute off");
    EXPECT_TRUE(probe->answers());

    relay->command("stall on");
    RelayProbe stalled(*relay, token);
    EXPECT_EQ(stalled.status(), 101);
    relay->command("stall off");
    greeted();  // a greeting of the stalled socket would have come before this one's
    EXPECT_TRUE(stalled.read(0.1).timedOut);

    relay->command("delay 0.3");
    const auto before = std::chrono::steady_clock::now();
    greeted();
    EXPECT_GT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(290));

    relay->command("expire");
    EXPECT_EQ(RelayProbe(*relay, token).status(), 401);
    relay->command("refuse on");
    EXPECT_EQ(test::signedIn(*relay), "");
    relay->command("refuse off");
    EXPECT_EQ(RelayProbe(*relay, test::signedIn(*relay)).status(), 101);
}

TEST_F(RelayFaults, BadFramesAreOfManyKindsAndHoldNothingUsable) {
    auto probe = greeted();
    const std::set<std::string> channels{"meta:contracts", "futures:NQM6", "futures:NQM6:trades"};
    probe->subscribe({channels.begin(), channels.end()});
    probe->next("snapshot", "meta:contracts");
    EXPECT_EQ(relay->command("malformed 12"), "ok to 1 socket");
    std::set<std::string> kinds;
    for (int i = 0; i < 12; ++i) {
        const auto heard = probe->read();
        ASSERT_FALSE(heard.ended);
        kinds.insert(heard.text);
        const auto message = Json::parse(heard.text);
        if (!message || !(*message)["channel"].isString()) continue;
        const auto type = (*message)["type"].string();
        EXPECT_FALSE(type == "snapshot" || type == "event") << heard.text;
        EXPECT_FALSE(type == "batch" && (*message)["events"].isArray()) << heard.text;
    }
    EXPECT_EQ(kinds.size(), 12u);
    EXPECT_EQ(relay->command("wrong 60"), "ok to 1 socket");
    for (int i = 0; i < 60; ++i) {
        const json message = json::parse(probe->read().text);
        EXPECT_TRUE(channels.contains(message["channel"]));
        const json payloads =
            message["type"] == "batch" ? message["events"] : json::array({message.value("data", message["payload"])});
        for (const json& payload : payloads) {
            EXPECT_TRUE(CandleParser::parse(*Json::parse(payload.dump())).empty()) << payload;
            EXPECT_FALSE(payload.is_object() && payload.contains("price") && payload["price"].is_number()) << payload;
        }
    }
}

TEST_F(RelayFaults, ASocketThatDoesNotReadIsDroppedBeforeItsQueueGrowsOn) {
    auto probe = greeted();
    probe->subscribe({"derived:QQQ"});
    probe->answers();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(relay->command("status").find("ok 1 socket,"), 0u);
        EXPECT_EQ(relay->command("big-derived 150000000 derived:QQQ").substr(0, 2), "ok");
    }
    for (int tries = 0; relay->command("status").find("ok 0 sockets") != 0; ++tries) ASSERT_LT(tries, 1000000);
}

TEST_F(RelayFaults, CommandsThatMakeNoSenseAreErrors) {
    for (const char* line : {"", "dance", "drop 1", "close", "close 1006", "mute maybe", "delay -1", "malformed 0",
                             "big-bars 5 futures:NQM6", "big-bars 5000 derived:QQQ", "big-bars 5000 futures:NQM6",
                             "contract SI SIN6", "contract NQ ESM6"})
        EXPECT_EQ(relay->command(line).find("error: "), 0u) << line;
}

}  // namespace
}  // namespace vmr
