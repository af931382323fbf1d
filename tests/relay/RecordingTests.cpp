#include <zlib.h>

#include <filesystem>
#include <functional>

#include "market/CandleParser.h"
#include "relay/DerivedBench.h"
#include "relay/Recording.h"
#include "relay/RelayProbe.h"
#include "relay/ReplayPublisher.h"

namespace vmr::relay {
namespace {

using test::json;
using test::RelayProbe;

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

    clock.set(begin + 60);
    EXPECT_EQ(relay->ledger("futures:ESM6"), halfway) << "set back";
    EXPECT_EQ(Client(*relay, token).snapshots["futures:ESM6"], halfway);
    clock.set(end + 1);
    EXPECT_EQ(relay->ledger("futures:ESM6"), ledger);
    EXPECT_EQ(Client(*relay, token).listener.state, first->listener.state);
}

struct RecordingFile : testing::Test {
    void write(const std::vector<RecordedFrame>& frames) {
        const auto writer = RecordingWriter::create(file, error);
        for (const RecordedFrame& one : frames) writer->write(one.timeMs, one.channel, one.frame);
    }
    std::string file = testing::TempDir() + "/relay_frames.vmr", error;
};

TEST_F(RecordingFile, ReadsWhatWasWrittenAlsoWhileItGrows) {
    const std::vector<RecordedFrame> frames{{5, "a\"b\n", Frame("one\ntwo")},
                                            {5, "c", Frame(std::string("\0\xff", 2), true)},
                                            {7000, "d", Frame("")},
                                            {7001, "e", Frame(std::string(700000, 'x'))}};
    auto writer = RecordingWriter::create(file, error);
    EXPECT_FALSE(recordingStart(file, error));
    EXPECT_EQ(error, "the recording " + file + " holds no frame");
    std::unique_ptr<RecordingReader> reader;
    for (const RecordedFrame& one : frames) {
        writer->write(one.timeMs, one.channel, one.frame);
        writer->flush();
        if (!reader) reader = RecordingReader::open(file, error);
        const RecordedFrame* read = reader->peek();
        ASSERT_TRUE(read);
        EXPECT_EQ(read, reader->peek());
        EXPECT_EQ(read->timeMs, one.timeMs);
        EXPECT_EQ(read->channel, one.channel);
        EXPECT_EQ(*read->frame.bytes, *one.frame.bytes);
        EXPECT_EQ(read->frame.binary, one.frame.binary);
        reader->pop();
        EXPECT_FALSE(reader->peek());
    }
    EXPECT_EQ(recordingStart(file, error), 0.005);
}

TEST_F(RecordingFile, ADamagedOneGivesTheFramesBeforeTheFault) {
    std::vector<RecordedFrame> frames;
    for (int i = 0; i < 5000; ++i) frames.push_back({i, "c", Frame(std::to_string(i * 7919 % 10007))});
    write(frames);
    std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
    const auto reader = RecordingReader::open(file, error);
    ASSERT_TRUE(reader) << error;
    std::size_t read = 0;
    for (; const RecordedFrame* one = reader->peek(); ++read) {
        ASSERT_EQ(*one->frame.bytes, *frames[read].frame.bytes);
        reader->pop();
    }
    EXPECT_TRUE(read > 500 && read < 4500) << read;

    const std::string title = "velmora-recording 1\n", fine = "{\"t\":1,\"n\":2,\"c\":\"d\"}\nab\n";
    for (const auto& [text, count] : {std::pair(title + fine + "{\"t\":-1,\"n\":2,\"c\":\"d\"}\nab\n" + fine, 1),
                                      {title + fine + "{\"t\":1,\"n\":2}\nab\n" + fine, 1},
                                      {title + fine + fine + "{\"t\":1,\"n\":9,\"c\":\"d\"}\nab\n", 2},
                                      {title + "no head\nab\n" + fine, 0},
                                      {"velmora-recording 2\n" + fine, 0},
                                      {std::string(), 0}}) {
        gzFile out = gzopen(file.c_str(), "wb");
        gzwrite(out, text.data(), static_cast<unsigned>(text.size()));
        gzclose(out);
        int found = 0;
        if (const auto some = RecordingReader::open(file, error))
            for (; some->peek(); ++found) some->pop();
        EXPECT_EQ(found, count) << text;
    }
}

TEST_F(RecordingFile, WhoComesLateGetsWhatTheMessagesMade) {
    const auto message = [](std::int64_t time, const std::string& channel, const char* type, const std::string& data) {
        const char* key = *type == 's' ? "data" : *type == 'b' ? "events" : "payload";
        return RecordedFrame{time, channel,
                             Frame(R"({"type":")" + std::string(type) + R"(","channel":")" + channel + R"(",")" + key +
                                   R"(":)" + data + "}")};
    };
    const std::string bar = R"("o":1,"h":4,"l":1,"c":2,"v":5)", next = R"("o":2,"h":2,"l":2,"c":2,"v":1)";
    write({message(1, "futures:ESM6:trades", "batch", R"([{"price":9,"size":1,"ts":59000}])"),
           message(1, "futures:ESM6", "snapshot", R"({"candles":[{"ts":60000,)" + bar + "}]}"),
           message(1, "futures:NQM6", "snapshot", R"({"candles":[{"ts":60000,)" + next + "}]}"),
           message(1, "stocks:AAPL", "snapshot", R"([{"ts":60000,)" + bar + "}]"),
           message(1, "indices:I:VIX", "snapshot", R"({"candles":{"60":{)" + bar + "}}}"),
           message(1, "derived:QQQ", "snapshot", R"({"spot":1,"old":2})"),
           message(1, "derived:osc:QQQ", "snapshot", R"({"points":{"60":{"nq":1},"120":{"nq":2}}})"),
           message(2, "derived:osc:QQQ", "event", R"({"points":{"120":{"nq":3}}})"),
           message(2, "derived:gexBubbles:QQQ", "event", R"({"minuteTs":60,"bubble":{"s":1}})"),
           message(2, "derived:QQQ", "event", R"({"spot":2})"),
           message(2, "futures:ESM6:trades", "batch",
                   R"([{"price":3,"size":2,"ts":61000},{"price":2,"size":1,"ts":120001}])"),
           message(2, "stocks:AAPL:1m", "event", R"({"ts":120000,)" + next + "}"),
           message(2, "futures:NQM6:1m", "event", R"({"minuteTs":120,"candle":{)" + next + "}}"),
           message(2, "futures:NQM6:1m", "event", R"({"minuteTs":180,"candle":{)" + next + "}}"),
           message(3, "derived:QQQ", "snapshot", R"({"spot":3})"),
           message(4, "derived:QQQ", "event", R"({"spot":4})")});
    ChannelHub hub;
    hub.add(std::make_unique<ReplayPublisher>(hub, RecordingReader::open(file, error)));
    test::Inbox early;
    hub.subscribe(early, {"derived:QQQ"}, 0);
    EXPECT_TRUE(early.messages.empty());
    hub.tick(2);
    EXPECT_EQ(early.messages.size(), 2u);
    hub.tick(3);
    const std::string es = R"({"ts":60000,"o":1,"h":4,"l":1,"c":3,"v":7})";
    const auto times = [](std::initializer_list<int> seconds, const std::string& values) {
        std::string text;
        for (const int one : seconds)
            text += (text.empty() ? "" : ",") + (R"({"ts":)" + std::to_string(one) + "000," + values + "}");
        return text;
    };
    for (const auto& [channel, data] :
         {std::pair<std::string, std::string>("futures:ESM6", R"({"candles":[)" + es + "," + times({120}, next) + "]}"),
          {"futures:NQM6:1m", R"({"candles":[)" + times({120, 180}, next) + "]}"},
          {"futures:NQM6", R"({"candles":[)" + times({60, 120, 180}, next) + "]}"},
          {"stocks:AAPL", "[" + times({60}, bar) + "," + times({120}, next) + "]"},
          {"indices:I:VIX", R"({"candles":{"60":{)" + bar + "}}}"},
          {"derived:QQQ", R"({"spot":3})"},
          {"derived:osc:QQQ", R"({"points":{"120":{"nq":3},"60":{"nq":1}}})"},
          {"derived:gexBubbles:QQQ", R"({"bubbles":{"60":{"s":1}}})"},
          {"futures:ESM6:trades", "null"},
          {"derived:IWM", "null"}}) {
        test::Inbox late;
        hub.subscribe(late, {channel}, 3);
        EXPECT_EQ(late.messages.empty() ? json() : late.messages[0]["data"], json::parse(data)) << channel;
    }
}

}  // namespace
}  // namespace vmr::relay
