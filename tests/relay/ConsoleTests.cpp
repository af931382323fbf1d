#include <chrono>

#include "base/Json.h"
#include "market/CandleParser.h"
#include "relay/RelayProbe.h"

namespace vmr::relay {
namespace {

using test::json;
using test::RelayProbe;

struct RelayConsole : test::RunningRelay {};

TEST_F(RelayConsole, AnswersEveryLine) {
    const auto idle = greeted(), busy = greeted();
    busy->subscribe({"futures:ESM6", "derived:SPY"});
    EXPECT_TRUE(busy->next("snapshot", "derived:SPY").is_object());
    for (const auto& [line, answer] :
         {std::pair(" \t\r", "error: say what to do, or help"),
          {"Drop", "error: unknown command Drop; say help"},
          {"mute on off", "error: it is mute on|off"},
          {"close 1006", "error: 1006 is no close code"},
          {"delay nan", "error: the delay is 0 to 3600 seconds"},
          {"big-bars 999 futures:ESM6", "error: the size is 1000 to 200000000 bytes"},
          {"big-bars 2000 futures:NQM6", "error: nobody has subscribed to futures:NQM6"},
          {"contract NQ ESZ6", "error: ESZ6 is no contract of NQ"},
          {"contract NQ auto", "ok NQ is NQM6"},
          {" malformed\t1 ", "ok to 2 sockets"},
          {"stall on", "ok on"},
          {"delay 0.5", "ok 0.5"},
          {"status", "ok 2 sockets, 2 channels, mute off, stall on, refuse off, delay 0.5, time 1781100020"},
          {"drop", "ok dropped 2 sockets"}})
        EXPECT_EQ(relay->command(line), answer) << line;
}

TEST_F(RelayConsole, SwitchesHoldForEverySocketUntilTheyAreSetBack) {
    const auto first = greeted(), second = greeted();
    relay->command("mute on");
    for (RelayProbe* one : {first.get(), second.get()}) {
        one->send(R"({"type":"ping"})");
        one->send("{");
        EXPECT_EQ(json::parse(one->read())["type"], "error") << "the ping before it was left unanswered";
    }
    relay->command("mute off");
    relay->command("stall on");
    RelayProbe stalled(*relay, token);
    EXPECT_EQ(stalled.status, 101u);
    EXPECT_TRUE(first->answers() && second->answers()) << "older sockets go on";
    relay->command("stall off");
    greeted();
    relay->command("malformed 1");
    relay->command("close 4100");
    EXPECT_EQ(stalled.read(), "") << "no greeting and no frame";
    EXPECT_EQ(stalled.closeCode, 4100);
    while (!first->read().empty()) continue;
    EXPECT_EQ(first->closeCode, 4100);

    relay->command("delay 0.03");
    const auto start = std::chrono::steady_clock::now();
    test::signedIn(*relay);
    greeted();
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60)) << "an answer and a greeting";
}

TEST_F(RelayConsole, RefusesSignInAndExpiresTokens) {
    const auto open = greeted();
    const json tokens = test::signedIn(*relay);
    std::string form = "grant_type=refresh_token&refresh_token=" + tokens["refreshToken"].get<std::string>();
    form.replace(form.find('+'), 1, "%2B");
    const auto refreshed = [&] { return test::posted(*relay, "/v1/token", form); };
    relay->command("refuse on");
    EXPECT_EQ(test::signedIn(*relay)["error"]["message"], "USER_DISABLED");
    EXPECT_EQ(refreshed()["error"]["message"], "USER_DISABLED");
    relay->command("refuse off");
    relay->command("expire");
    for (const std::string& one : {token, tokens["idToken"].get<std::string>()})
        EXPECT_EQ(RelayProbe(*relay, one).status, 401u);
    token = refreshed()["id_token"];
    greeted();
    relay->command("expire-refresh");
    EXPECT_EQ(RelayProbe(*relay, token).status, 401u);
    EXPECT_EQ(refreshed()["error"]["message"], "TOKEN_EXPIRED");
    token = test::signedIn(*relay)["idToken"];
    greeted();
    EXPECT_TRUE(open->answers()) << "an open socket outlives its token";
}

TEST_F(RelayConsole, SendsBadFramesToThoseThatItNames) {
    const auto idle = greeted(), busy = greeted();
    busy->subscribe({"futures:ESM6", "derived:SPY", "meta:contracts"});
    EXPECT_TRUE(busy->next("snapshot", "derived:SPY").is_object());
    relay->command("wrong 40");
    std::map<std::string, std::set<std::string>> types;
    for (int i = 0; i < 40; ++i) {
        const json message = json::parse(busy->read());
        types[message["channel"]].insert(message["type"]);
    }
    EXPECT_EQ(types.size(), 3u);
    for (const auto& [channel, kinds] : types) EXPECT_EQ(kinds.size(), 3u) << channel;

    relay->command("malformed 13");
    for (RelayProbe* one : {idle.get(), busy.get()}) {
        std::set<std::string> frames;
        for (int i = 0; i < 13; ++i) frames.insert(one->read());
        EXPECT_EQ(frames.size(), 12u) << "the last is the first again";
        EXPECT_TRUE(one->answers());
    }
    const auto ledger = relay->ledger("futures:ESM6");
    relay->command("big-bars 900000 futures:ESM6");
    std::string text = busy->read();
    EXPECT_EQ(text.size(), 900000u);
    const auto bars = CandleParser::parse(*Json::parse(json::parse(text)["data"].dump()));
    ASSERT_GE(bars.size(), 9000u);
    EXPECT_TRUE(std::equal(ledger.begin(), ledger.end(), bars.end() - static_cast<std::ptrdiff_t>(ledger.size())));
    relay->command("big-derived 50000 derived:SPY");
    text = busy->read();
    EXPECT_EQ(text.size(), 50000u);
    EXPECT_GE(json::parse(text)["data"]["gexByStrike"].size(), 250u);
}

}  // namespace
}  // namespace vmr::relay
