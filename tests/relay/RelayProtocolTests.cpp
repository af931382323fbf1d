#include <gtest/gtest.h>

#include <fstream>

#include "base/Json.h"
#include "market/CandleParser.h"
#include "market/ClockSetting.h"
#include "relay/BarBook.h"
#include "relay/HandClock.h"
#include "relay/MarketTime.h"
#include "relay/RelayProbe.h"

namespace vmr {
namespace {

using nlohmann::json;
using test::RelayProbe;

std::vector<Candle> parsed(const json& payload) { return CandleParser::parse(*Json::parse(payload.dump())); }

struct RelayProtocol : testing::Test {
    void start(PracticeRelayOptions options = {}) {
        relay = std::make_unique<PracticeRelay>(clock, options);
        const auto wrong = relay->start();
        ASSERT_FALSE(wrong) << *wrong;
        token = test::signedIn(*relay);
    }
    test::HandClock clock{*parseMoment("2026-06-10T10:00:20")};
    std::unique_ptr<PracticeRelay> relay;
    std::string token;
};

TEST_F(RelayProtocol, LetsInOnlyAGoodTokenAndGreetsWithTheEmail) {
    start();
    EXPECT_EQ(RelayProbe(*relay, "").status(), 401);
    EXPECT_EQ(RelayProbe(*relay, "unknown").status(), 401);
    RelayProbe probe(*relay, token);
    EXPECT_EQ(probe.status(), 101);
    EXPECT_EQ(json::parse(probe.read().text), (json{{"type", "hello"}, {"email", relay->email()}}));
    probe.send(R"({"type":"ping","ts":1})");
    EXPECT_EQ(probe.next("pong")["type"], "pong");
    clock.age(3600);
    EXPECT_EQ(RelayProbe(*relay, token).status(), 401);
    probe.send(R"({"type":"ping","ts":2})");
    EXPECT_EQ(probe.next("pong")["type"], "pong") << "an open socket outlives its token";
}

TEST_F(RelayProtocol, AnswersRequestsThatItCannotRead) {
    start();
    RelayProbe probe(*relay, token);
    probe.next("hello");
    for (const char* text :
         {"{", "[]", R"({"action":"dance"})", R"({"action":"subscribe"})", R"({"type":5})",
          R"({"action":"subscribe","channels":[5]})", R"({"action":"subscribe","channels":["futures:SIN6"]})"}) {
        probe.send(text);
        EXPECT_TRUE(probe.next("error")["message"].is_string()) << text;
    }
    probe.send(R"({"type":"ping"})");
    EXPECT_EQ(probe.next("pong")["type"], "pong");
}

TEST_F(RelayProtocol, TheFifthSocketIsClosedWith4006) {
    start();
    std::vector<std::unique_ptr<RelayProbe>> probes;
    for (int i = 0; i < 4; ++i) {
        probes.push_back(std::make_unique<RelayProbe>(*relay, token));
        ASSERT_EQ(probes.back()->next("hello")["type"], "hello");
    }
    RelayProbe fifth(*relay, token);
    EXPECT_EQ(fifth.status(), 101);
    EXPECT_EQ(fifth.read().closeCode, 4006);
    probes.front()->send(R"({"type":"ping"})");
    EXPECT_EQ(probes.front()->next("pong")["type"], "pong");
    probes.pop_back();
    for (int tries = 0; relay->command("status").find("ok 3 sockets") != 0; ++tries) ASSERT_LT(tries, 1000000);
    EXPECT_EQ(RelayProbe(*relay, token).next("hello")["type"], "hello");
}

TEST_F(RelayProtocol, SnapshotsComeInOrderAndInEveryShape) {
    start();
    RelayProbe probe(*relay, token);
    probe.next("hello");
    probe.subscribe({"derived:QQQ", "meta:contracts", "futures:NQM6:trades", "futures:NQM6:1m", "futures:NQM6",
                     "meta:instruments", "stocks:AAPL", "indices:I:VIX", "futures:NQM6:quote", "derived:osc:QQQ"});
    std::map<std::string, json> snapshots;
    std::vector<std::string> order;
    while (snapshots.size() < 7) {
        const json message = probe.next("snapshot");
        ASSERT_TRUE(message.is_object());
        order.push_back(message["channel"]);
        snapshots[message["channel"]] = message["data"];
    }
    EXPECT_EQ(order, (std::vector<std::string>{"futures:NQM6", "stocks:AAPL", "indices:I:VIX", "futures:NQM6:1m",
                                               "futures:NQM6:quote", "meta:contracts", "meta:instruments"}));
    EXPECT_TRUE(snapshots["futures:NQM6"]["candles"].is_array());
    EXPECT_TRUE(snapshots["stocks:AAPL"].is_array());
    EXPECT_TRUE(snapshots["indices:I:VIX"]["candles"].is_object());
    for (const char* channel : {"futures:NQM6", "stocks:AAPL", "indices:I:VIX"}) {
        const auto bars = parsed(snapshots[channel]);
        EXPECT_EQ(bars, relay->ledger(channel)) << channel;
        EXPECT_GE(bars.size(), channel[0] == 'f' ? 5u * 1380 : 5u * 390);
        EXPECT_EQ(bars.back().time, *parseMoment("2026-06-10T10:00:00")) << channel;
    }
    EXPECT_LT(snapshots["futures:NQM6:quote"]["bid"], snapshots["futures:NQM6:quote"]["ask"]);
    EXPECT_EQ(snapshots["meta:contracts"]["map"]["NQ"], "NQM6");
    const json futures = snapshots["meta:instruments"]["catalog"]["futures"];
    ASSERT_EQ(futures.size(), 6u);
    EXPECT_EQ(futures[0],
              json::parse(R"({"sym":"NQ","sources":["QQQ","NDX"],"defaultSource":"QQQ","pair":"ES","tick":0.25,
                                          "tickValue":5.0,"hfScale":0.0000002})"));
    EXPECT_FALSE(futures[2].contains("pair"));
    EXPECT_EQ(snapshots["meta:instruments"]["catalog"]["stocks"].size(), 7u);
}

TEST_F(RelayProtocol, LiveTradesContinueTheSnapshotExactlyOnEveryContract) {
    start();
    RelayProbe first(*relay, token), second(*relay, token);
    first.next("hello");
    second.next("hello");
    first.subscribe({"futures:ESM6:trades", "futures:ESM6", "futures:ESM6:1m"});
    auto bars = parsed(first.next("snapshot", "futures:ESM6")["data"]);
    clock.advance(17.3);
    second.subscribe({"futures:ESZ6", "futures:ESZ6:trades"});
    auto others = parsed(second.next("snapshot", "futures:ESZ6")["data"]);
    EXPECT_EQ(others.back().volume, relay->ledger("futures:ESZ6").back().volume);

    const auto apply = [](std::vector<Candle>& series, const json& events) {
        for (const json& event : events) {
            const Trade trade{event["ts"], event["price"], event["size"], 0, 0};
            const std::int64_t minute = minuteOf(trade.timeMs);
            std::optional<Candle> bar;
            if (series.back().time == minute) {
                bar = series.back();
                series.pop_back();
            }
            addTrade(bar, minute, trade);
            series.push_back(*bar);
        }
    };
    const auto end = static_cast<std::int64_t>(*parseMoment("2026-06-10T10:04:00"));
    std::size_t closedBars = 0;
    for (std::int64_t lastClosed = 0; lastClosed < end - 60;) {
        if (clock.now() < static_cast<double>(end)) clock.advance(13.7);
        const json message = first.next([](const json&) { return true; });
        ASSERT_TRUE(message.is_object());
        if (message["type"] == "batch") apply(bars, message["events"]);
        if (message["type"] != "event") continue;
        ++closedBars;
        const auto closed = parsed(message["payload"]);
        ASSERT_EQ(closed.size(), 1u);
        EXPECT_EQ(closed[0], bars.back()) << "the closed bar is that of the trades before it";
        lastClosed = closed[0].time;
    }
    EXPECT_EQ(closedBars, 4u);
    const auto ledger = relay->ledger("futures:ESM6");
    ASSERT_GT(ledger.size(), bars.size() - 1);
    while (!bars.empty() && bars.back().time >= end) bars.pop_back();
    EXPECT_TRUE(std::equal(bars.begin(), bars.end(), ledger.begin()));
    while (others.back().time < end) apply(others, second.next("batch", "futures:ESZ6:trades")["events"]);
    while (others.back().time >= end) others.pop_back();
    EXPECT_EQ(others, bars);
}

TEST_F(RelayProtocol, ASecondRunShowsTheSameMarketWheneverItIsAskedFor) {
    start();
    const auto early = relay->ledger("futures:NQU6");
    clock.advance(7200);
    start();
    const auto late = relay->ledger("futures:NQZ26");
    ASSERT_GT(late.size(), early.size());
    EXPECT_TRUE(std::equal(early.begin(), early.end() - 1, late.begin()));
    PracticeRelayOptions other;
    other.seed = 2;
    start(other);
    EXPECT_NE(relay->ledger("futures:NQU6").back(), late.back());
    EXPECT_TRUE(relay->ledger("derived:QQQ").empty());
}

TEST_F(RelayProtocol, ContractsFollowTheClock) {
    start();
    RelayProbe probe(*relay, token);
    probe.next("hello");
    probe.subscribe({"meta:contracts"});
    EXPECT_EQ(probe.next("snapshot")["data"]["map"]["ES"], "ESM6");
    clock.advance(86400);
    EXPECT_EQ(probe.next("event", "meta:contracts")["payload"]["map"]["ES"], "ESU6");
    EXPECT_EQ(relay->command("contract ES ESZ6"), "ok ES is ESZ6");
    const json map = probe.next("event", "meta:contracts")["payload"]["map"];
    EXPECT_EQ(map["ES"], "ESZ6");
    EXPECT_EQ(map["NQ"], "NQU6");
    EXPECT_EQ(relay->command("contract ES auto"), "ok ES is ESU6");
}

TEST_F(RelayProtocol, ATapePlaysAtItsOwnTimesBehindItsHistory) {
    const std::string file = testing::TempDir() + "/relay_protocol_tape.csv";
    std::ofstream(file) << "timestamp,price,size\n2013-10-07T12:00:05Z,1313.7,2\n2013-10-07T12:00:30Z,1313.9,1\n"
                           "2013-10-07T12:00:50Z,1313.55,0\n2013-10-07T12:02:10Z,1314.1,7\n";
    clock.set(*parseMoment("2013-10-07T12:00:31Z"));
    PracticeRelayOptions options;
    options.tape = TapeOptions{file, "GC"};
    start(options);
    RelayProbe probe(*relay, token);
    probe.next("hello");
    probe.subscribe({"futures:GCZ3", "futures:GCZ3:trades", "futures:GCZ3:1m"});
    const std::int64_t noon = 1381147200;
    EXPECT_EQ(parsed(probe.next("snapshot", "futures:GCZ3")["data"]),
              (std::vector<Candle>{{noon, 1313.7, 1313.9, 1313.7, 1313.9, 3}}));
    clock.advance(120);
    EXPECT_EQ(probe.next("batch")["events"], json::parse(R"([{"price":1313.55,"size":0.0,"ts":1381147250000}])"));
    EXPECT_EQ(parsed(probe.next("event", "futures:GCZ3:1m")["payload"])[0],
              (Candle{noon, 1313.7, 1313.9, 1313.55, 1313.55, 3}));
    EXPECT_EQ(probe.next("batch")["events"][0]["price"], 1314.1);
    EXPECT_EQ(relay->ledger("futures:GCZ3").size(), 2u);
    EXPECT_FALSE(relay->ledger("stocks:AAPL").empty());

    options.tape->symbol = "SI";
    PracticeRelay unknown(clock, options);
    EXPECT_TRUE(unknown.start().value_or("").find("SI") != std::string::npos);
}

TEST_F(RelayProtocol, ALongJumpOfTheClockBringsSnapshotsInsteadOfADaysTrades) {
    start();
    RelayProbe probe(*relay, token);
    probe.next("hello");
    probe.subscribe({"futures:NQM6", "futures:NQM6:trades"});
    probe.next("snapshot", "futures:NQM6");
    clock.advance(2 * 86400);
    const auto bars = parsed(probe.next("snapshot", "futures:NQM6")["data"]);
    EXPECT_EQ(bars.back().time, *parseMoment("2026-06-12T10:00:00"));
}

TEST_F(RelayProtocol, APortInUseIsAnErrorAndStartMayBeTriedAgain) {
    start();
    PracticeRelayOptions options;
    options.relayPort = std::stoi(relay->relayUrl().substr(relay->relayUrl().rfind(':') + 1));
    PracticeRelay second(clock, options);
    EXPECT_NE(second.start().value_or("").find("port"), std::string::npos);
    EXPECT_EQ(second.command("status"), "error: the relay does not run");
    relay.reset();
    EXPECT_FALSE(second.start());
}

}  // namespace
}  // namespace vmr
