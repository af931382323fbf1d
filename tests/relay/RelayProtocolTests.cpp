#include "base/Json.h"
#include "market/CandleParser.h"
#include "relay/BarBook.h"
#include "relay/MarketTime.h"
#include "relay/RelayProbe.h"

namespace vmr::relay {
namespace {

using test::json;
using test::RelayProbe;

std::vector<Candle> parsed(const json& payload) { return CandleParser::parse(*Json::parse(payload.dump())); }

struct RelayProtocol : test::RunningRelay {};

TEST_F(RelayProtocol, LetsInOnlyAGoodTokenAndAnswersWhatItCannotRead) {
    for (const char* bad : {"", "unknown"}) EXPECT_EQ(RelayProbe(*relay, bad).status, 401u) << bad;
    const auto probe = greeted();
    clock.age(3600);
    EXPECT_EQ(RelayProbe(*relay, token).status, 401u) << "an open socket outlives its token";
    for (const char* text :
         {"{", "[]", R"({"action":"dance"})", R"({"action":"subscribe"})", R"({"type":5})",
          R"({"action":"subscribe","channels":[5]})", R"({"action":"subscribe","channels":["futures:SIN6"]})"}) {
        probe->send(text);
        EXPECT_TRUE(probe->next("error")["message"].is_string()) << text;
    }
    EXPECT_TRUE(probe->answers());
}

TEST_F(RelayProtocol, TheFifthSocketIsClosedWith4006) {
    std::vector<std::unique_ptr<RelayProbe>> probes;
    for (int i = 0; i < 4; ++i) probes.push_back(greeted());
    RelayProbe fifth(*relay, token);
    EXPECT_EQ(fifth.status, 101u);
    EXPECT_EQ(fifth.read(), "");
    EXPECT_EQ(fifth.closeCode, 4006);
    EXPECT_TRUE(probes.front()->answers());
    probes.pop_back();
    for (int tries = 0; relay->command("status").find("ok 3 sockets") != 0; ++tries) ASSERT_LT(tries, 1000000);
    greeted();
}

TEST_F(RelayProtocol, SnapshotsComeInOrderAndInEveryShape) {
    const auto probe = greeted();
    probe->subscribe({"meta:contracts", "futures:NQM6:trades", "futures:NQM6:1m", "futures:NQM6", "meta:instruments",
                      "stocks:AAPL", "indices:I:VIX", "futures:NQM6:quote"});
    std::map<std::string, json> snapshots;
    std::vector<std::string> order;
    while (order.size() < 7) {
        const json message = probe->next("snapshot");
        ASSERT_TRUE(message.is_object());
        order.push_back(message["channel"]);
        snapshots[order.back()] = message["data"];
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
    EXPECT_EQ(snapshots["meta:instruments"]["catalog"]["futures"].size(), 6u);
}

TEST_F(RelayProtocol, LiveTradesContinueTheSnapshotOfEarlyAndLateSubscribersExactly) {
    const auto first = greeted(), second = greeted();
    first->subscribe({"futures:ESM6:trades", "futures:ESM6", "futures:ESM6:1m"});
    auto bars = parsed(first->next("snapshot", "futures:ESM6")["data"]);
    clock.advance(17.3);
    second->subscribe({"futures:ESZ6", "futures:ESZ6:trades"});
    auto others = parsed(second->next("snapshot", "futures:ESZ6")["data"]);

    const auto apply = [](std::vector<Candle>& series, const json& events) {
        for (const json& event : events) {
            const Trade trade{event["ts"], event["price"], event["size"], 0, 0};
            std::optional<Candle> bar;
            if (series.back().time == minuteOf(trade.timeMs)) {
                bar = series.back();
                series.pop_back();
            }
            addTrade(bar, minuteOf(trade.timeMs), trade);
            series.push_back(*bar);
        }
    };
    const auto end = static_cast<std::int64_t>(*parseMoment("2026-06-10T10:04:00"));
    for (std::int64_t lastClosed = 0; lastClosed < end - 60;) {
        if (clock.now() < static_cast<double>(end)) clock.advance(13.7);
        const json message = json::parse(first->read());
        if (message["type"] == "batch") apply(bars, message["events"]);
        if (message["type"] != "event") continue;
        const auto closed = parsed(message["payload"]);
        ASSERT_EQ(closed.size(), 1u);
        EXPECT_EQ(closed[0], bars.back()) << "the closed bar is that of the trades before it";
        lastClosed = closed[0].time;
    }
    while (others.back().time < end) apply(others, second->next("batch", "futures:ESZ6:trades")["events"]);
    const auto ledger = relay->ledger("futures:ESM6");
    for (auto* series : {&bars, &others}) {
        while (series->back().time >= end) series->pop_back();
        ASSERT_GE(ledger.size(), series->size());
        EXPECT_TRUE(std::equal(series->begin(), series->end(), ledger.begin()));
        EXPECT_EQ(series->back().time, end - 60);
    }
}

TEST_F(RelayProtocol, AClockThatIsSetSendsNothingFromTheFutureAndNothingTwice) {
    const auto probe = greeted();
    probe->subscribe({"futures:ESM6:trades", "futures:ESM6"});
    EXPECT_TRUE(probe->next("snapshot", "futures:ESM6").is_object());
    for (const auto& [moment, snapshots] : {std::pair("2026-06-10T09:59:58", true),
                                            {"2026-06-10T10:00:19", false},
                                            {"2026-06-08T11:00:20", true},
                                            {"2026-06-10T09:41:07", true},
                                            {"2026-01-09T15:59:40", true}}) {
        const double set = *parseMoment(moment) + 0.25;
        clock.set(set);
        if (snapshots) {
            const auto bars = parsed(probe->next("snapshot", "futures:ESM6")["data"]);
            EXPECT_EQ(bars, relay->ledger("futures:ESM6")) << moment;
            EXPECT_EQ(bars.back().time, std::floor(set / 60) * 60) << moment;
        }
        clock.advance(15);
        double last = 0;
        for (json event; last <= (set + 5) * 1000; last = event["ts"]) {
            const json events = probe->next("batch")["events"];
            ASSERT_TRUE(events.is_array());
            EXPECT_TRUE(!snapshots || events.front()["ts"] > set * 1000) << moment;
            EXPECT_GE(events.front()["ts"], last) << moment;
            EXPECT_LE(events.back()["ts"], (set + 15) * 1000) << moment;
            event = events.back();
        }
    }
}

}  // namespace
}  // namespace vmr::relay
