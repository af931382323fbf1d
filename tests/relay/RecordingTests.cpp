#include <filesystem>
#include <functional>

#include "base/FileReplace.h"
#include "market/CandleParser.h"
#include "relay/DerivedBench.h"
#include "relay/Recording.h"
#include "relay/RelayProbe.h"
#include "relay/ReplayPublisher.h"

namespace vmr {
namespace {

using test::json;
using test::RelayProbe;

std::string inTemp(const std::string& name) { return testing::TempDir() + "/relay_recording_" + name; }

TEST(Recording, GivesBackWhatWasWrittenWhileItGrows) {
    const std::string file = inTemp("growing.vmr");
    std::string error;
    auto writer = RecordingWriter::create(file, error);
    ASSERT_TRUE(writer) << error;
    EXPECT_FALSE(RecordingReader::open(file, error));
    EXPECT_NE(error.find("holds no frame"), std::string::npos) << error;
    std::unique_ptr<RecordingReader> reader;
    for (const auto& [channel, frame] : {std::pair("a:b", Frame("{}")),
                                         {"c\n\"d", Frame(std::string("line\none \0 \xff", 13), true)},
                                         {"e", Frame(std::string(400000, 'e'))}}) {
        writer->write(2000, channel, frame);
        writer->flush();
        if (!reader) reader = RecordingReader::open(file, error);
        ASSERT_TRUE(reader && reader->peek()) << channel << error;
        EXPECT_EQ(reader->peek()->channel, channel);
        EXPECT_EQ(*reader->peek()->frame.bytes, *frame.bytes);
        EXPECT_EQ(reader->peek()->frame.binary, frame.binary);
        reader->pop();
        EXPECT_FALSE(reader->peek());
    }
    EXPECT_EQ(recordingStart(file, error), 2);
}

TEST(Recording, ACutOrDamagedFilePlaysUpToThere) {
    const std::string file = inTemp("whole.vmr"), part = inTemp("part.vmr");
    std::string error;
    auto writer = RecordingWriter::create(file, error);
    for (int i = 0; i < 2000; ++i) writer->write(i, "c" + std::to_string(i % 7), Frame(std::to_string(i * 7919)));
    writer.reset();
    const std::string bytes = *readFile(file);
    std::string damaged = bytes;
    damaged.replace(bytes.size() / 2, 40, std::string(40, '\xa5'));
    for (const auto& left : {bytes.substr(0, bytes.size() - 20), bytes.substr(0, bytes.size() / 2), damaged}) {
        ASSERT_FALSE(replaceFile(part, left));
        const auto reader = RecordingReader::open(part, error);
        ASSERT_TRUE(reader) << error;
        int frames = 0;
        for (; reader->peek(); reader->pop()) ++frames;
        EXPECT_GT(frames, 100);
        EXPECT_LT(frames, 2000);
    }
}

const std::vector<std::string> channels{"futures:ESM6", "futures:ESM6:1m",       "futures:ESM6:trades",
                                        "derived:SPY",  "derived:hfHistory:SPY", "derived:srlevels:ES"};

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
                   listener.state["derived:hfHistory:SPY"]["candles"].contains(minute);
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
    const std::string file = inTemp("session.vmr");
    const double begin = clock.now(), end = *parseMoment("2026-06-10T10:03:01.4");
    PracticeRelayOptions recording, replaying;
    recording.record = replaying.replay = file;
    start(recording);
    auto first = std::make_unique<Client>(*relay, token);
    auto second = std::make_unique<Client>(*relay, token);  // is not recorded again
    for (double now = begin; now < end; now += 10) {
        clock.set(std::min(now + 10, end));
        relay->command("status");
        const int heard = first->listener.heard["derived:SPY"];
        first->readUntil([&] { return first->listener.heard["derived:SPY"] > heard; });
    }
    first->readAll(0);
    const auto ledger = relay->ledger("futures:ESM6");
    EXPECT_FALSE(relay->recordingProblem());
    const int patches = first->listener.heard["derived:SPY"];
    relay.reset();

    clock.set(begin);
    start(replaying);
    Client early(*relay, token);
    clock.set(end + 1);
    early.readAll(patches);
    EXPECT_EQ(early.prices, first->prices);
    EXPECT_EQ(early.listener.state, first->listener.state);
    Client late(*relay, token);
    EXPECT_EQ(late.snapshots["futures:ESM6"], ledger) << "history, minutes and trades in one";
    EXPECT_EQ(late.snapshots["futures:ESM6:1m"], (std::vector<Candle>{ledger.end() - 2, ledger.end()}));
    EXPECT_EQ(relay->ledger("futures:ESM6"), ledger);
    EXPECT_EQ(late.listener.state, first->listener.state);
}

}  // namespace
}  // namespace vmr
