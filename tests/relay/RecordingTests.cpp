#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "base/FileReplace.h"
#include "market/CandleParser.h"
#include "market/ClockSetting.h"
#include "relay/DerivedBench.h"
#include "relay/HandClock.h"
#include "relay/Recording.h"
#include "relay/RelayProbe.h"
#include "relay/ReplayPublisher.h"

namespace vmr {
namespace {

using test::json;
using test::Listener;
using test::RelayProbe;

std::string inTemp(const std::string& name) { return testing::TempDir() + "/relay_recording_" + name; }

std::vector<RecordedFrame> all(const std::string& file) {
    std::string error;
    const auto reader = RecordingReader::open(file, error);
    EXPECT_TRUE(reader) << error;
    std::vector<RecordedFrame> frames;
    for (; reader && reader->peek(); reader->pop()) frames.push_back(*reader->peek());
    return frames;
}

TEST(Recording, GivesBackWhatWasWrittenAndIsReadWhileItGrows) {
    const std::string file = inTemp("growing.vmr");
    std::string error;
    auto writer = RecordingWriter::create(file, error);
    ASSERT_TRUE(writer) << error;
    EXPECT_FALSE(RecordingReader::open(file, error));
    EXPECT_NE(error.find("holds no frame"), std::string::npos) << error;
    writer->write(1000, "a:b", Frame("{}"));
    writer->flush();
    const auto reader = RecordingReader::open(file, error);
    ASSERT_TRUE(reader) << error;
    EXPECT_EQ(recordingStart(file, error), 1);
    const std::string odd("line\none \0 \xff", 13);
    std::string large;  // hardly to be compressed
    for (std::uint64_t i = 0, x = 1; i < 400000; ++i)
        large += static_cast<char>((x = x * 6364136223846793005u + 1) >> 56);
    for (const auto& [channel, frame] :
         {std::pair("a:b", Frame("{}")), {"c\n\"d", Frame(odd, true)}, {"e", Frame("")}, {"f", Frame(large)}}) {
        if (channel[0] != 'a') writer->write(2000, channel, frame);
        writer->flush();
        const RecordedFrame* next = reader->peek();
        ASSERT_TRUE(next) << channel;
        EXPECT_EQ(next->channel, channel);
        EXPECT_EQ(*next->frame.bytes, *frame.bytes);
        EXPECT_EQ(next->frame.binary, frame.binary);
        reader->pop();
        EXPECT_FALSE(reader->peek());
    }
    writer.reset();
    EXPECT_FALSE(reader->peek());
    EXPECT_EQ(all(file).size(), 4u);
}

TEST(Recording, ACutOrDamagedFilePlaysUpToThere) {
    const std::string file = inTemp("whole.vmr"), part = inTemp("part.vmr");
    std::string error;
    auto writer = RecordingWriter::create(file, error);
    for (int i = 0; i < 2000; ++i) writer->write(i, "c" + std::to_string(i % 7), Frame(std::to_string(i * 7919)));
    writer.reset();
    const auto whole = all(file);
    ASSERT_EQ(whole.size(), 2000u);
    const std::string bytes = *readFile(file);
    std::size_t longest = 0;
    for (std::size_t cut = bytes.size() / 2; cut < bytes.size(); cut += 1 + bytes.size() / 40) {
        ASSERT_FALSE(replaceFile(part, std::string_view(bytes).substr(0, cut)));
        const auto frames = all(part);
        EXPECT_GE(frames.size(), longest);
        longest = frames.size();
        for (std::size_t i = 0; i < frames.size(); ++i) ASSERT_EQ(*frames[i].frame.bytes, *whole[i].frame.bytes);
    }
    EXPECT_GT(longest, 1500u);
    std::string damaged = bytes;
    damaged.replace(bytes.size() / 2, 40, std::string(40, '\xa5'));
    ASSERT_FALSE(replaceFile(part, damaged));
    const auto frames = all(part);
    EXPECT_GT(frames.size(), 100u);
    EXPECT_LT(frames.size(), 2000u);
}

TEST(Recording, NamesWhatIsWrongWithAFile) {
    const std::string text = inTemp("text.vmr");
    ASSERT_FALSE(replaceFile(text, "velmora-recording 1\n{\"t\":1,\"n\":2,\"c\":\"x\"}\n{}\n"));
    ASSERT_FALSE(replaceFile(inTemp("empty.vmr"), ""));
    const std::vector<std::pair<std::string, std::string>> cases{{inTemp("missing.vmr"), "cannot be opened"},
                                                                 {testing::TempDir(), "cannot be opened"},
                                                                 {text, "is no recording of a relay"},
                                                                 {inTemp("empty.vmr"), "is no recording of a relay"}};
    for (const auto& [file, expected] : cases) {
        test::HandClock clock(1000);
        PracticeRelayOptions options;
        options.replay = file;
        PracticeRelay relay(clock, options);
        const std::string wrong = relay.start().value_or("");
        EXPECT_NE(wrong.find(expected), std::string::npos) << wrong;
        EXPECT_NE(wrong.find(file), std::string::npos) << wrong;
    }
    PracticeRelayOptions options;
    options.record = testing::TempDir() + "/no-such-folder/file.vmr";
    test::HandClock clock(1000);
    EXPECT_NE(PracticeRelay(clock, options).start().value_or("").find("cannot be written"), std::string::npos);
    options.record = options.replay = text;
    EXPECT_NE(PracticeRelay(clock, options).start().value_or("").find("played and written at once"), std::string::npos);
    EXPECT_EQ(readFile(text)->substr(0, 7), "velmora") << "nothing was lost";
}

/// What a client of `relay` holds of some channels once they have come.
struct Client {
    Client(const PracticeRelay& relay, const std::string& token, const std::vector<std::string>& channels)
        : probe(relay, token) {
        probe.next("hello");
        probe.subscribe(channels);
    }
    void read() {
        const auto heard = probe.read();
        ASSERT_FALSE(heard.ended);
        const json message = json::parse(heard.text);
        const std::string channel = message.value("channel", "");
        ++count[channel];
        if (channel.starts_with("futures:")) {
            for (const json& one : message.contains("events") ? message["events"] : json::array({message}))
                prices.push_back(one);
            if (message["type"] == "snapshot")
                snapshots[channel] = CandleParser::parse(*Json::parse(message["data"].dump()));
        } else if (!channel.empty()) {
            listener.send(Frame(heard.text));
        }
    }
    void readUntil(const std::function<bool()>& enough) {
        while (!enough() && !testing::Test::HasFatalFailure()) read();
    }
    RelayProbe probe;
    Listener listener;
    std::map<std::string, int> count;
    std::map<std::string, std::vector<Candle>> snapshots;
    json prices = json::array();
};

TEST(Recording, ARecordedSessionPlaysAgainForEarlyAndLateSubscribers) {
    const std::string file = inTemp("session.vmr");
    const std::vector<std::string> channels{
        "futures:ESM6",    "futures:ESM6:1m",       "futures:ESM6:trades",    "meta:contracts",     "derived:SPY",
        "derived:osc:SPY", "derived:hfHistory:SPY", "derived:gexBubbles:SPY", "derived:srlevels:ES"};
    const std::string minute = std::to_string(static_cast<std::int64_t>(*parseMoment("2026-06-10T10:02:00")));
    const auto settled = [&](const Client& one) {
        const auto found = one.listener.state.find("derived:hfHistory:SPY");
        return found != one.listener.state.end() && found->second["candles"].contains(minute);
    };
    const double start = *parseMoment("2026-06-10T10:00:20"), end = *parseMoment("2026-06-10T10:03:01.4");
    json prices;
    int patches = 0;
    std::map<std::string, json> state;
    std::vector<Candle> ledger;
    {
        test::HandClock clock(start);
        PracticeRelayOptions options;
        options.record = file;
        PracticeRelay relay(clock, options);
        ASSERT_FALSE(relay.start());
        const std::string token = test::signedIn(relay);
        Client first(relay, token, channels);
        first.readUntil([&] { return first.count.contains("derived:srlevels:ES"); });
        Client second(relay, token, channels);  // is not recorded again
        for (double now = start; now < end; now += 10) {
            clock.set(std::min(now + 10, end));
            relay.command("status");
            const int heard = first.count["derived:SPY"];
            first.readUntil([&] { return first.count["derived:SPY"] > heard; });
        }
        first.readUntil([&] { return settled(first); });
        relay.command("status");
        prices = first.prices;
        patches = first.count["derived:SPY"];
        state = first.listener.state;
        ledger = relay.ledger("futures:ESM6");
        EXPECT_FALSE(relay.recordingProblem());
    }
    std::map<std::string, int> snapshots;
    for (const RecordedFrame& one : all(file)) snapshots[one.channel] += one.frame.bytes->starts_with(R"({"type":"sn)");
    for (const std::string& channel : channels) EXPECT_EQ(snapshots[channel], channel.ends_with(":trades") ? 0 : 1);

    std::string error;
    test::HandClock clock(*recordingStart(file, error));
    EXPECT_NEAR(clock.now(), start, 0.01);
    PracticeRelayOptions options;
    options.replay = file;
    PracticeRelay relay(clock, options);
    ASSERT_FALSE(relay.start());
    const std::string token = test::signedIn(relay);
    Client early(relay, token, channels);
    early.readUntil([&] { return early.count.contains("derived:srlevels:ES"); });
    clock.set(end + 1);
    early.readUntil([&] { return settled(early) && early.count["derived:SPY"] >= patches; });
    EXPECT_EQ(early.prices, prices);
    for (const std::string& channel : channels) {
        if (channel.starts_with("futures:")) continue;
        EXPECT_EQ(early.listener.state[channel], state[channel]) << channel;
    }
    Client late(relay, token, channels);
    late.readUntil([&] { return late.count.contains("derived:srlevels:ES"); });
    EXPECT_EQ(late.snapshots["futures:ESM6"], ledger) << "history, minutes and trades in one";
    EXPECT_EQ(late.snapshots["futures:ESM6:1m"], (std::vector<Candle>{ledger.end() - 2, ledger.end()}));
    EXPECT_EQ(relay.ledger("futures:ESM6"), ledger);
    for (const std::string& channel : channels) {
        if (channel.starts_with("futures:")) continue;
        EXPECT_EQ(late.listener.state[channel], state[channel]) << channel;
        EXPECT_EQ(late.count[channel], 1) << channel;
    }
    Client unknown(relay, token, {"derived:QQQ"});
    unknown.probe.send(R"({"type":"ping"})");
    EXPECT_EQ(json::parse(unknown.probe.read().text)["type"], "pong") << "nothing was recorded of it";
}

TEST(Recording, BarsKeepTheShapeOfTheirHistory) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"stocks:AAPL", R"([{"ts":60000,"o":1,"h":2,"l":1,"c":2,"v":3}])"},
        {"futures:NQM6", R"({"candles":[{"ts":60000,"o":1,"h":2,"l":1,"c":2,"v":3}]})"},
        {"indices:I:VIX", R"({"candles":{"60":{"o":1,"h":2,"l":1,"c":2,"v":3}}})"}};
    for (const auto& [channel, history] : cases) {
        const std::string file = inTemp("shape.vmr");
        std::string error;
        auto writer = RecordingWriter::create(file, error);
        writer->write(1, channel, Frame(payload::snapshot(channel, history)));
        const std::string minutes = channel + ":1m";
        for (const char* text : {R"({"minuteTs":120,"candle":{"o":2,"h":5,"l":2,"c":3,"v":1}})", "5",
                                 R"({"time":180,"open":3,"high":3,"low":3,"close":3,"volume":0})",
                                 R"({"ts":1e300,"o":1,"h":1,"l":1,"c":1})", R"({"candles":[{"ts":240000}]})"})
            writer->write(2, minutes, Frame(payload::event(minutes, text)));
        writer->write(3, minutes, Frame("no JSON"));
        writer.reset();
        ChannelHub hub;
        hub.add(std::make_unique<ReplayPublisher>(hub, RecordingReader::open(file, error)));
        struct Keeper final : Subscriber {
            void send(const Frame& frame) override { last = json::parse(*frame.bytes)["data"]; }
            json last;
        } keeper;
        hub.subscribe(keeper, {channel}, 10);
        const json like = json::parse(history);
        EXPECT_EQ(keeper.last.type(), like.type()) << channel;
        if (like.is_object()) {
            EXPECT_EQ(keeper.last["candles"].type(), like["candles"].type()) << channel;
        }
        EXPECT_EQ(CandleParser::parse(*Json::parse(keeper.last.dump())),
                  (std::vector<Candle>{{60, 1, 2, 1, 2, 3}, {120, 2, 5, 2, 3, 1}, {180, 3, 3, 3, 3, 0}}));
        hub.leave(keeper);
    }
}

}  // namespace
}  // namespace vmr
