#include <zlib.h>

#include <filesystem>
#include <functional>

#include "market/CandleParser.h"
#include "relay/DerivedBench.h"
#include "relay/Recording.h"
#include "relay/RelayProbe.h"

namespace vmr::relay {
namespace {

using test::json;
using test::RelayProbe;

const std::vector<std::string> channels{"futures:ESM6",       "futures:ESM6:1m",       "futures:ESM6:trades",
                                        "derived:SPY",        "derived:hfHistory:SPY", "derived:osc:SPY",
                                        "derived:srlevels:ES"};

/// What a client of `relay` holds of the channels.
struct Client {
    Client(const PracticeRelay& relay, const std::string& token) : probe(relay, token) {
        probe.next("hello");
        probe.subscribe(channels);
        readUntil([this] { return listener.heard["derived:srlevels:ES"] > 0; });
    }
    void readUntil(const std::function<bool()>& enough) {
        while (!enough()) {
            const std::string text = probe.read();
            ASSERT_FALSE(text.empty());
            const json message = json::parse(text);
            const std::string channel = message["channel"];
            if (channel.starts_with("derived:")) {
                listener.send(Frame(text));
            } else {
                prices.push_back(message);
                if (message["type"] == "snapshot")
                    snapshots[channel] = CandleParser::parse(*Json::parse(message["data"].dump()));
            }
        }
    }
    /// Until the third minute of the session is there.
    void readAll(int patches) {
        const auto minute = std::to_string(static_cast<std::int64_t>(*parseMoment("2026-06-10T10:02:00")));
        readUntil([&] {
            return listener.heard["derived:SPY"] >= patches &&
                   listener.state["derived:hfHistory:SPY"]["candles"].contains(minute) &&
                   listener.state["derived:osc:SPY"]["points"].contains(minute);
        });
    }
    RelayProbe probe;
    test::Listener listener;
    std::map<std::string, std::vector<Candle>> snapshots;
    std::vector<json> prices;
};

struct RecordedSession : test::RunningRelay {
    void SetUp() override {}
};

TEST_F(RecordedSession, PlaysAgainForEarlyAndLateSubscribers) {
    const std::string file = testing::TempDir() + "/relay_recording.vmr";
    const double begin = clock.now(), end = *parseMoment("2026-06-10T10:03:01.4");
    PracticeRelayOptions recording, replaying;
    recording.record = replaying.replay = file;
    start(recording);
    auto first = std::make_unique<Client>(*relay, token);
    auto second = std::make_unique<Client>(*relay, token);  // is not recorded again
    std::vector<Candle> halfway;
    for (double now = begin; now < end; now += 10) {
        if (now == begin + 60) halfway = relay->ledger("futures:ESM6");
        clock.setNow(std::min(now + 10, end));
        relay->command("status");
        const int heard = first->listener.heard["derived:SPY"];
        first->readUntil([&] { return first->listener.heard["derived:SPY"] > heard; });
    }
    first->readAll(0);
    const auto ledger = relay->ledger("futures:ESM6");
    EXPECT_FALSE(relay->recordingProblem());
    const int patches = first->listener.heard["derived:SPY"];
    relay.reset();

    clock.setNow(begin);
    start(replaying);
    Client early(*relay, token);
    clock.setNow(end + 1);
    early.readAll(patches);
    EXPECT_EQ(early.prices, first->prices);
    EXPECT_EQ(early.listener.state, first->listener.state);
    Client late(*relay, token);
    EXPECT_EQ(late.snapshots["futures:ESM6"], ledger) << "history, minutes and trades in one";
    EXPECT_EQ(late.snapshots["futures:ESM6:1m"], (std::vector<Candle>{ledger.end() - 2, ledger.end()}));
    EXPECT_EQ(relay->ledger("futures:ESM6"), ledger);
    EXPECT_EQ(late.listener.state, first->listener.state);

    clock.setNow(begin + 60);
    EXPECT_EQ(relay->ledger("futures:ESM6"), halfway) << "set back";
    EXPECT_EQ(Client(*relay, token).snapshots["futures:ESM6"], halfway);
    clock.setNow(end + 1);
    EXPECT_EQ(relay->ledger("futures:ESM6"), ledger);
    EXPECT_EQ(Client(*relay, token).listener.state, first->listener.state);
}

TEST(RecordingFile, ADamagedOneGivesTheFramesBeforeTheFault) {
    const auto framesOf = [](const std::string& text) {
        std::string file = testing::TempDir() + "/relay_frames.vmr", error;
        gzFile out = gzopen(file.c_str(), "wb");
        gzwrite(out, text.data(), static_cast<unsigned>(text.size()));
        gzclose(out);
        if (text.size() > 5000) std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
        int found = 0;
        if (const auto reader = RecordingReader::open(file, error))
            for (; reader->peek(); ++found) reader->pop();
        return found;
    };
    const std::string title = "velmora-recording 1\n", fine = "{\"t\":1,\"n\":2,\"c\":\"d\"}\nab\n";
    EXPECT_EQ(framesOf(title + fine + "{\"t\":-1,\"n\":2,\"c\":\"d\"}\nab\n" + fine), 1);
    EXPECT_EQ(framesOf(title + fine + fine + "{\"t\":1,\"n\":9,\"c\":\"d\"}\nab\n"), 2);
    EXPECT_EQ(framesOf("velmora-recording 2\n" + fine), 0);
    std::string cut = title;
    for (int i = 0; i < 5000; ++i) cut += "{\"t\":" + std::to_string(i) + ",\"n\":2,\"c\":\"d\"}\nab\n";
    const int half = framesOf(cut);
    EXPECT_TRUE(half > 100 && half < 4900) << half;
}

}  // namespace
}  // namespace vmr::relay
