#include <gtest/gtest.h>

#include <set>

#include "base/Json.h"
#include "market/CandleParser.h"
#include "market/ClockSetting.h"
#include "relay/HandClock.h"
#include "relay/RelayProbe.h"

namespace vmr {
namespace {

using nlohmann::json;
using test::RelayProbe;

struct RelayFaults : testing::Test {
    void SetUp() override {
        const auto wrong = relay.start();
        ASSERT_FALSE(wrong) << *wrong;
        token = test::signedIn(relay);
    }
    std::unique_ptr<RelayProbe> greeted() {
        auto probe = std::make_unique<RelayProbe>(relay, token);
        EXPECT_EQ(probe->next("hello")["type"], "hello");
        return probe;
    }
    test::HandClock clock{*parseMoment("2026-06-10T10:00:20")};
    PracticeRelay relay{clock, {}};
    std::string token;
};

TEST_F(RelayFaults, DropEndsWithoutAndCloseWithACloseFrame) {
    auto probe = greeted();
    EXPECT_EQ(relay.command("drop"), "ok dropped 1 socket");
    const auto dropped = probe->read();
    EXPECT_TRUE(dropped.ended && !dropped.timedOut);
    EXPECT_EQ(dropped.closeCode, 0);
    auto closed = greeted();
    EXPECT_EQ(relay.command("close 4321"), "ok closing 1 socket");
    EXPECT_EQ(closed->read().closeCode, 4321);
}

TEST_F(RelayFaults, MuteStallAndDelayHoldBackWhatTheySay) {
    auto probe = greeted();
    EXPECT_EQ(relay.command("mute on"), "ok on");
    probe->send(R"({"type":"ping"})");
    probe->send(R"({"action":"dance"})");
    EXPECT_EQ(json::parse(probe->read().text)["type"], "error") << "the ping before it stays unanswered";
    relay.command("mute off");
    probe->send(R"({"type":"ping"})");
    EXPECT_EQ(probe->next("pong")["type"], "pong");

    relay.command("stall on");
    RelayProbe stalled(relay, token);
    EXPECT_EQ(stalled.status(), 101);
    relay.command("stall off");
    greeted();  // a greeting of the stalled socket would have come before this one's
    stalled.send(R"({"type":"ping"})");
    const auto silence = stalled.read(0.2);
    EXPECT_TRUE(silence.timedOut) << silence.text << silence.closeCode;

    relay.command("delay 0.3");
    const auto before = std::chrono::steady_clock::now();
    token = test::signedIn(relay);
    greeted();
    EXPECT_GT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(590));
}

TEST_F(RelayFaults, RefusalAndExpiryReachTheEndpoints) {
    relay.command("expire");
    EXPECT_EQ(RelayProbe(relay, token).status(), 401);
    relay.command("refuse on");
    EXPECT_EQ(test::signedIn(relay), "");
    relay.command("refuse off");
    EXPECT_EQ(RelayProbe(relay, test::signedIn(relay)).status(), 101);
    EXPECT_EQ(relay.command("expire-refresh"), "ok all tokens expired");
    EXPECT_EQ(test::post(relay, "/v1/nothing", "{}").first, 404);
}

TEST_F(RelayFaults, MalformedFramesAreNoMessagesAndOfManyKinds) {
    auto probe = greeted();
    EXPECT_EQ(relay.command("malformed 12"), "ok to 1 socket");
    std::set<std::string> kinds;
    for (int i = 0; i < 12; ++i) {
        const auto heard = probe->read();
        ASSERT_FALSE(heard.ended);
        kinds.insert(heard.text);
        const auto message = Json::parse(heard.text);
        if (!message || !message->isObject()) continue;
        const auto type = (*message)["type"].string();
        const bool named = (*message)["channel"].isString();
        EXPECT_FALSE(named && (type == "snapshot" || type == "event")) << heard.text;
        EXPECT_FALSE(named && type == "batch" && (*message)["events"].isArray()) << heard.text;
        EXPECT_FALSE(type == "hello" || type == "pong" || type == "error") << heard.text;
    }
    EXPECT_EQ(kinds.size(), 12u);
}

TEST_F(RelayFaults, WrongShapesStayOnSubscribedChannelsAndHoldNothingUsable) {
    auto probe = greeted();
    const std::set<std::string> channels{"meta:contracts", "futures:NQM6", "futures:NQM6:trades"};
    probe->subscribe({channels.begin(), channels.end()});
    probe->next("snapshot", "meta:contracts");
    EXPECT_EQ(relay.command("wrong 60"), "ok to 1 socket");
    std::set<std::string> types;
    for (int i = 0; i < 60; ++i) {
        const json message = probe->next([](const json&) { return true; });
        ASSERT_TRUE(message.is_object());
        types.insert(message["type"]);
        EXPECT_TRUE(channels.contains(message["channel"]));
        const json payloads =
            message["type"] == "batch" ? message["events"] : json::array({message.value("data", message["payload"])});
        for (const json& payload : payloads) {
            EXPECT_TRUE(CandleParser::parse(*Json::parse(payload.dump())).empty()) << payload;
            EXPECT_FALSE(payload.is_object() && payload.contains("price") && payload["price"].is_number()) << payload;
        }
    }
    EXPECT_EQ(types.size(), 3u);
}

TEST_F(RelayFaults, BigSnapshotsHaveTheSizeAskedForAndRealBarsAtTheEnd) {
    auto probe = greeted();
    probe->subscribe({"futures:NQM6", "derived:QQQ"});
    probe->next("snapshot", "derived:QQQ");
    EXPECT_EQ(relay.command("big-bars 3000000 futures:NQM6"), "ok 3000000 bytes to 1 socket");
    auto heard = probe->read();
    EXPECT_EQ(heard.text.size(), 3000000u);
    const auto bars = CandleParser::parse((*Json::parse(heard.text))["data"]);
    const auto ledger = relay.ledger("futures:NQM6");
    ASSERT_GT(bars.size(), 25000u);
    EXPECT_TRUE(std::equal(ledger.begin(), ledger.end(), bars.end() - static_cast<std::ptrdiff_t>(ledger.size())));
    for (std::size_t i = 1; i < bars.size(); ++i) ASSERT_LT(bars[i - 1].time, bars[i].time);
    EXPECT_EQ(relay.command("big-derived 2000000 derived:QQQ"), "ok 2000000 bytes to 1 socket");
    heard = probe->read();
    EXPECT_EQ(heard.text.size(), 2000000u);
    EXPECT_GT(json::parse(heard.text)["data"]["gexByStrike"].size(), 10000u);
}

TEST_F(RelayFaults, ASocketThatDoesNotReadIsDroppedBeforeItsQueueGrowsOn) {
    auto probe = greeted();
    probe->subscribe({"derived:QQQ"});
    probe->send(R"({"type":"ping"})");
    probe->next("pong");
    EXPECT_EQ(relay.command("big-derived 150000000 derived:QQQ").substr(0, 2), "ok");
    EXPECT_EQ(relay.command("status").find("ok 1 socket,"), 0u);
    relay.command("big-derived 150000000 derived:QQQ");
    for (int tries = 0; relay.command("status").find("ok 0 sockets") != 0; ++tries) ASSERT_LT(tries, 1000000);
}

TEST_F(RelayFaults, CommandsThatMakeNoSenseAreErrors) {
    for (const char* line : {"",
                             "   ",
                             "dance",
                             "drop 1",
                             "close",
                             "close 1006",
                             "close 5000",
                             "close x",
                             "mute",
                             "mute maybe",
                             "delay -1",
                             "delay soon",
                             "malformed 0",
                             "wrong x",
                             "big-bars 5 futures:NQM6",
                             "big-bars 5000 derived:QQQ",
                             "big-bars 5000 futures:NQM6",
                             "big-derived 5000 futures:NQM6",
                             "contract SI SIN6",
                             "contract NQ ESM6"}) {
        EXPECT_EQ(relay.command(line).find("error: "), 0u) << line;
    }
    EXPECT_EQ(relay.command(" help\r").find("ok drop; close CODE; mute on|off;"), 0u);
}

}  // namespace
}  // namespace vmr
