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
    busy->subscribe({"futures:ESM6", "stocks:AAPL", "derived:SPY"});
    EXPECT_TRUE(busy->next("snapshot", "derived:SPY").is_object());
    busy->send(R"({"action":"unsubscribe","channels":["stocks:AAPL"]})");
    EXPECT_TRUE(busy->answers());
    struct Case {
        const char* answer;
        std::vector<const char*> lines;
    };
    for (const auto& [answer, lines] : {
             Case{"error: say what to do, or help", {"", " \t\r"}},
             {"error: unknown command Drop; say help", {"Drop"}},
             {"error: it is drop", {"drop now"}},
             {"error: it is mute on|off", {"mute", "mute on off"}},
             {"error: say on or off", {"mute yes", "stall ON", "refuse 1"}},
             {"error: 1006 is no close code", {"close 1006"}},
             {"error: 2999 is no close code", {"close 2999"}},
             {"error: 5000 is no close code", {"close 5000"}},
             {"error: the delay is 0 to 3600 seconds", {"delay -0.1", "delay 3600.5", "delay nan"}},
             {"error: the count is 1 to 100000", {"malformed 0", "malformed 100001", "wrong 0", "wrong x"}},
             {"error: the size is 1000 to 200000000 bytes",
              {"big-bars 999 futures:ESM6", "big-derived 200000001 derived:SPY"}},
             {"error: futures:ESM6:trades does not carry that", {"big-bars 2000 futures:ESM6:trades"}},
             {"error: futures:ESM6 does not carry that", {"big-derived 2000 futures:ESM6"}},
             {"error: nobody has subscribed to futures:NQM6", {"big-bars 2000 futures:NQM6"}},
             {"error: AAPL is no futures root", {"contract AAPL AAPLM6"}},
             {"error: ESZ6 is no contract of NQ", {"contract NQ ESZ6"}},
             {"ok NQ is NQZ6", {"contract NQ NQZ6"}},
             {"ok NQ is NQM6", {"contract NQ auto"}},
             {"ok to 2 sockets", {" malformed\t1 "}},
             {"ok to 1 socket", {"wrong 1"}},
             {"ok 2 sockets, 2 channels, mute off, stall off, refuse off, delay 0, time 1781100020", {"status"}},
             {"ok on", {"stall on"}},
             {"ok 0.5", {"delay 0.5"}},
             {"ok 2 sockets, 2 channels, mute off, stall on, refuse off, delay 0.5, time 1781100020", {"status"}},
             {"ok dropped 2 sockets", {"drop"}},
             {"ok 0 sockets, 0 channels, mute off, stall on, refuse off, delay 0.5, time 1781100020", {"status"}},
             {"ok closing 0 sockets", {"close 4001"}},
         })
        for (const char* line : lines) EXPECT_EQ(relay->command(line), answer) << line;
    EXPECT_TRUE(relay->command("help").starts_with("ok drop; close CODE; mute on|off; stall on|off; ref"));
}

TEST_F(RelayConsole, EndsEverySocketWithAResetOrWithTheCode) {
    for (const auto& [line, code] : {std::pair("drop", 0), {"close 1012", 1012}, {"close 4999", 4999}}) {
        const auto first = greeted(), second = greeted();
        relay->command(line);
        for (RelayProbe* one : {first.get(), second.get()}) {
            EXPECT_EQ(one->read(), "") << line;
            EXPECT_EQ(one->closeCode, code) << line;
        }
    }
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
    EXPECT_TRUE(first->answers() && second->answers());

    relay->command("stall on");
    RelayProbe stalled(*relay, token);
    EXPECT_EQ(stalled.status, 101u);
    EXPECT_TRUE(first->answers()) << "an older socket goes on";
    relay->command("stall off");
    greeted();
    EXPECT_EQ(relay->command("malformed 1").substr(0, 5), "ok to");
    relay->command("close 4100");
    EXPECT_EQ(stalled.read(), "") << "no greeting and no frame";
    EXPECT_EQ(stalled.closeCode, 4100);

    relay->command("delay 0.03");
    const auto start = std::chrono::steady_clock::now();
    const auto passed = [&] { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); };
    test::signedIn(*relay);
    EXPECT_GE(passed(), 0.03) << "an answer of the sign-in";
    greeted();
    EXPECT_GE(passed(), 0.06) << "a greeting";
}

TEST_F(RelayConsole, RefusesSignInAndExpiresTokens) {
    const auto open = greeted();
    const auto refreshed = [&](const json& tokens) {
        const std::string form = "grant_type=refresh_token&refresh_token=" + tokens["refreshToken"].get<std::string>();
        return test::posted(*relay, "/v1/token", form);
    };
    const json tokens = test::signedIn(*relay);
    relay->command("refuse on");
    EXPECT_EQ(test::signedIn(*relay)["error"]["message"], "USER_DISABLED");
    EXPECT_EQ(RelayProbe(*relay, refreshed(tokens)["id_token"]).status, 101u);
    relay->command("refuse off");
    const json others = test::signedIn(*relay);

    relay->command("expire");
    for (const json& one : {tokens, others}) EXPECT_EQ(RelayProbe(*relay, one["idToken"]).status, 401u);
    token = refreshed(others)["id_token"];
    greeted();
    relay->command("expire-refresh");
    EXPECT_EQ(RelayProbe(*relay, token).status, 401u);
    for (const json& one : {tokens, others}) EXPECT_EQ(refreshed(one)["error"]["message"], "TOKEN_EXPIRED");
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
        std::vector<std::string> frames;
        for (int i = 0; i < 13; ++i) frames.push_back(one->read());
        EXPECT_EQ(std::set<std::string>(frames.begin(), frames.end()).size(), 12u);
        EXPECT_EQ(frames.front(), frames.back());
        EXPECT_TRUE(one->answers());
    }

    const auto ledger = relay->ledger("futures:ESM6");
    for (const unsigned bytes : {1000u, 60001u, 900000u}) {
        relay->command("big-bars " + std::to_string(bytes) + " futures:ESM6");
        const std::string text = busy->read();
        EXPECT_EQ(text.size(), bytes);
        const auto bars = CandleParser::parse(*Json::parse(json::parse(text)["data"].dump()));
        ASSERT_GE(bars.size(), bytes / 100);
        const auto real = static_cast<std::ptrdiff_t>(std::min(bars.size(), ledger.size()));
        EXPECT_TRUE(std::equal(ledger.rbegin(), ledger.rbegin() + real, bars.rbegin()));
        for (auto bar = bars.rbegin() + real; bar < bars.rend(); ++bar) ASSERT_EQ(bar->time, bar[-1].time - 60);
    }
    relay->command("big-derived 50000 derived:SPY");
    const std::string text = busy->read();
    EXPECT_EQ(text.size(), 50000u);
    EXPECT_GE(json::parse(text)["data"]["gexByStrike"].size(), 250u);
    EXPECT_TRUE(idle->answers());
    EXPECT_EQ(idle->messages, 16) << "greeting, the malformed ones and two pongs";
}

}  // namespace
}  // namespace vmr::relay
