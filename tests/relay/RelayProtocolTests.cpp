#include <filesystem>
#include <fstream>

#include "base/Json.h"
#include "market/CandleParser.h"
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

struct RelayStart : test::RunningRelay {
    void SetUp() override {}
};

TEST_F(RelayStart, FailsWithAReasonAndOverwritesNothingThen) {
    const std::string file = testing::TempDir() + "/relay_start", other = file + "_other";
    for (const std::string& one : {file, other}) std::ofstream(one) << "kept";
    start();
    const auto fault = [&](PracticeRelayOptions options) { return PracticeRelay(clock, options).start().value_or(""); };
    PracticeRelayOptions options;
    options.tape = TapeOptions{file, "I:VIX"};
    EXPECT_EQ(fault(options), "\"I:VIX\" is neither a futures root nor a stock of the practice market");
    options.replay = file;
    EXPECT_EQ(fault(options), "a tape and a recording cannot play at once");
    options.tape.reset();
    options.record = testing::TempDir() + "./relay_start";
    EXPECT_EQ(fault(options), "the recording " + file + " cannot be played and written at once");
    options.record = other;
    EXPECT_EQ(fault(options), "the file " + file + " is no recording of a relay");
    EXPECT_EQ(std::filesystem::file_size(other), 4u);
    EXPECT_EQ(relay->start(), "the relay runs already");
}

TEST_F(RelayStart, ATapeIsTheMarketOfItsSymbolAlone) {
    const std::string file = testing::TempDir() + "/relay_market.csv";
    std::ofstream(file) << "ts,price,size\n1781100000,70.5,2\n1781100010,70.25,1\n1781100030,71,4\n";
    PracticeRelayOptions options;
    options.tape = TapeOptions{file, "CL"};
    start(options);
    EXPECT_EQ(relay->ledger("futures:CLN6"), (std::vector<Candle>{{1781100000, 70.5, 70.5, 70.25, 70.25, 3}}));
    EXPECT_GE(relay->ledger("futures:GCQ6").size(), 5000u);
    const auto probe = greeted();
    probe->subscribe({"futures:CLN6:trades"});
    EXPECT_TRUE(probe->answers());
    clock.setNow(clock.now() + 3600);
    EXPECT_EQ(probe->next("batch")["events"], json::parse(R"([{"price":71,"size":4,"ts":1781100030000}])"));
}

TEST_F(RelayProtocol, AClockThatIsSetSendsNothingFromTheFutureAndNothingTwice) {
    const auto probe = greeted();
    probe->subscribe({"futures:ESM6:trades", "futures:ESM6"});
    EXPECT_TRUE(probe->next("snapshot", "futures:ESM6").is_object());
    for (const auto& [moment, snapshots] : {std::pair("2026-06-10T09:59:58", true),
                                            {"2026-06-10T10:00:19", false},
                                            {"2026-06-08T11:00:20", true},
                                            {"2026-06-10T09:41:07", true}}) {
        const double set = *parseMoment(moment) + 0.25;
        clock.setNow(set);
        if (snapshots) {
            const auto bars = parsed(probe->next("snapshot", "futures:ESM6")["data"]);
            EXPECT_EQ(bars, relay->ledger("futures:ESM6")) << moment;
            EXPECT_EQ(bars.back().time, std::floor(set / 60) * 60) << moment;
        }
        clock.setNow(set + 15);
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
