// A thousand broken frames on an open pane: whatever the relay sends, a message that is not valid changes nothing but
// the log.
#include <nlohmann/json.hpp>
#include <random>

#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

using nlohmann::json;
using Values = std::vector<json>;

// Values that no reader of numbers takes. Left out: those that are fatal by design, and those that are numbers
// after all (true, "nan", "1e3"), since with them a bar would be valid.
const Values noNumbers{nullptr, "", "abc", " 5", "1,5", "--1", json::array({5}), json::object(), json{{"price", 5}}};
const Values noPrices{nullptr, "", "abc", "1,5", json::array({5}), "nan", "inf", "-infinity"};  // a trade's is finite
const Values noObjects{nullptr, "{}", 5, -0.5, true, json::array(), json::array({1, json::object()})};

// One valid message of a channel kind, the members without any one of which it says nothing, and the values that are as
// good as none.
struct Kind {
    std::string channel;
    json body;
    std::vector<std::string> members;
    const Values& odd;
};

std::vector<Kind> kinds() {
    const json bar = json::parse(R"({"time":1781100000,"o":1,"h":4,"l":1,"c":2,"v":3})");
    const json trade = json::parse(R"({"price":50.25,"ts":1781100000000})");
    return {
        {"futures:NQM6:trades", trade, {"/price"}, noPrices},
        {"futures:ESM6:trades", trade, {"/price"}, noPrices},
        {"futures:NQM6", json::array({bar}), {"/0/o", "/0/h", "/0/l", "/0/c", "/0/time"}, noNumbers},
        {"futures:NQM6", {{"candles", {bar}}}, {"/candles/0/o", "/candles/0/c"}, noNumbers},
        {"futures:NQM6", {{"candles", {{"1781100000", bar}}}}, {"/candles/1781100000/l"}, noNumbers},
        {"futures:NQM6:1m", {{"minuteTs", 1781100000}, {"candle", bar}}, {"/minuteTs", "/candle/h"}, noNumbers},
        {"futures:ESM6", json::array({bar}), {"/0/o", "/0/h", "/0/l", "/0/c"}, noNumbers},
        {"indices:I:VIX:1m", bar, {"/o", "/h", "/l", "/c", "/time"}, noNumbers},
        {"meta:instruments", {{"catalog", {{"futures", {{{"sym", "SI"}}}}}}}, {"/catalog"}, noObjects},
        {"meta:contracts", {{"map", {{"GC", "GCZ6"}, {"CL", "CLZ6"}}}}, {"/map"}, noObjects},
        {"derived:QQQ", {{"etfRatio", 41.5}, {"expirations", {"2026-06-12"}}}, {}, noObjects},
        {"derived:NDX", {{"etfRatio", 2}}, {}, noObjects},
        {"derived:gexBubbles:QQQ", {{"bubbles", {{"1781100000", {{"s", 600}}}}}}, {"/bubbles"}, noObjects},
        {"derived:hfHistory:QQQ", {{"candles", {{"1781100000", {{"c", 5}}}}}}, {"/candles"}, noObjects},
    };
}

class MutatedFrames : public PaneFixture {
 protected:
    std::mt19937 random{2024};
    std::size_t below(std::size_t n) { return random() % n; }
    template <class T>
    const T& pick(const std::vector<T>& from) {
        return from[below(from.size())];
    }

    // A message as an event, a snapshot or a batch of one, and where its body is.
    std::pair<json, json::json_pointer> envelope(const Kind& kind) {
        const json frames[] = {{{"type", "snapshot"}, {"channel", kind.channel}, {"data", kind.body}},
                               {{"type", "event"}, {"channel", kind.channel}, {"payload", kind.body}},
                               {{"type", "batch"}, {"channel", kind.channel}, {"events", {kind.body}}}};
        const char* const places[] = {"/data", "/payload", "/events/0"};
        const std::size_t type = below(3);
        return {frames[type], json::json_pointer(places[type])};
    }

    // Cut short, or with bytes overwritten until an independent decoder refuses the text. Cutting any text that ends
    // with its outermost brace leaves no JSON.
    std::string brokenText(std::string text) {
        if (below(2) == 0) return text.substr(0, below(text.size()));
        while (json::accept(text)) text[below(text.size())] ^= static_cast<char>(1u << below(8));
        return text;
    }
    // An envelope that names no known message, no channel, no body, or a channel that nobody asked for.
    std::string brokenEnvelope(json frame) {
        const std::size_t way = below(6);
        if (way == 0) frame["type"] = pick(Values{nullptr, 5, "Event", "", "snapshots", json::array({"event"})});
        if (way == 1) frame.erase(pick(Values{"type", "channel"}).get<std::string>());
        if (way == 2) frame["channel"] = pick(noObjects);
        if (way == 3)
            for (const char* body : {"data", "payload", "events"}) frame.erase(body);
        if (way == 4) frame["channel"] = std::string(frame["channel"]) + std::string(pick(Values{" ", ":2m", "x"}));
        if (way == 5) frame = json::array({frame});
        return frame.dump();
    }
    // A body without an essential member, with an odd value for it, or that is of another type altogether.
    std::string brokenBody(const Kind& kind, json frame, const json::json_pointer& at) {
        if (kind.members.empty() || below(4) == 0) {
            frame[at] = pick(noObjects);
        } else {
            const json::json_pointer place = at / json::json_pointer(pick(kind.members));
            if (below(3) == 0)
                frame.at(place.parent_pointer()).erase(place.back());
            else
                frame[place] = pick(kind.odd);
        }
        return frame.dump();
    }
    std::string broken(const Kind& kind) {
        const auto [frame, at] = envelope(kind);
        const std::size_t where = below(3);
        return where == 0 ? brokenText(frame.dump()) : where == 1 ? brokenEnvelope(frame) : brokenBody(kind, frame, at);
    }

    void openBoth() {
        open(PaneState{"NQ", 5, "BOTH"});
        for (const char* channel : {"futures:NQM6", "futures:ESM6", "indices:I:VIX"})
            snapshot(channel, flatBars(minute - 600, 11));
        event("derived:QQQ", R"({"spot":1})");
    }
};

TEST_F(MutatedFrames, ValidMessagesAreSeenInTheState) {
    for (const Kind& kind : kinds()) {
        openBoth();
        const auto before = documentWithoutLog();
        const std::string text = envelope(kind).first.dump();
        frame(text);
        EXPECT_NE(documentWithoutLog(), before) << text;
    }
}

TEST_F(MutatedFrames, BrokenOnesChangeNothingButTheLog) {
    openBoth();
    const auto all = kinds();
    const auto before = documentWithoutLog();
    for (std::size_t i = 0; i < 1000; ++i) {
        const std::string text = broken(all[i % all.size()]);
        frame(text);
        ASSERT_EQ(documentWithoutLog(), before) << i << ": " << text;
        ASSERT_FALSE(sockets.last().gone());
    }
    EXPECT_EQ(sockets.count(), 1u);
    event("futures:NQM6:trades", R"({"price":123.25,"ts":)" + std::to_string(minute) + "000}");
    EXPECT_EQ(model->bars.candles.back().close, 123.25) << "and the pane lives on";
}

}  // namespace
}  // namespace vmr::test
