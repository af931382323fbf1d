// Broken frames on an open pane: whatever the relay sends, a message that is not valid changes nothing but the log, and
// a number that no integer holds costs its own element.
#include <nlohmann/json.hpp>
#include <random>

#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

using nlohmann::json;
using Values = std::vector<json>;

// Values that no reader of numbers takes. Left out: those that are numbers after all (true, "nan", "1e3"), since with
// them a bar would be valid.
const Values noNumbers{nullptr, "", "abc", " 5", "1,5", "--1", json::array({5}), json::object(), json{{"price", 5}}};
const Values noPrices{nullptr, "", "abc", "1,5", json::array({5}), "nan", "inf", "-infinity"};  // a trade's is finite
const Values impossible{"nan", "inf", "-infinity", 1e308, -1e300, "1e400", 1e25};
const Values noObjects{nullptr, "{}", 5, -0.5, true, json::array(), json::array({1, json::object()})};

// One valid message of a channel kind, the members without any one of which it says nothing, the values that are as
// good as none, and the members that are read as integers.
struct Kind {
    std::string channel;
    json body;
    std::vector<std::string> members;
    const Values& odd;
    std::vector<std::string> integers = {};
};

std::vector<Kind> kinds() {
    const json bar = json::parse(R"({"time":1781100000,"o":1,"h":4,"l":1,"c":2,"v":3})");
    const json trade = json::parse(R"({"price":50.25,"ts":1781100000000})");
    const json session = json::parse(
        R"({"sessionOpenTs":1781042400,"openPrice":1,"up":[{"price":2}],"dn":[{"i":1,"price":0.5,"triggerTime":1}]})");
    const json marker =
        json::parse(R"({"minuteTs":1781100060,"bubble":{"s":600},"triangle":{"d":[[600,-10]]},"candle":{"c":5}})");
    return {
        {"futures:NQM6:trades", trade, {"/price"}, noPrices, {"/ts"}},
        {"futures:ESM6:trades", trade, {"/price"}, noPrices, {"/ts"}},
        {"futures:NQM6", json::array({bar}), {"/0/o", "/0/h", "/0/l", "/0/c", "/0/time"}, noNumbers, {"/0/time"}},
        {"futures:NQM6", {{"candles", {bar}}}, {"/candles/0/o", "/candles/0/c"}, noNumbers},
        {"futures:NQM6", {{"candles", {{"1781100000", bar}}}}, {"/candles/1781100000/l"}, noNumbers},
        {"futures:NQM6:1m",
         {{"minuteTs", 1781100000}, {"candle", bar}},
         {"/minuteTs", "/candle/h"},
         noNumbers,
         {"/minuteTs"}},
        {"futures:ESM6", json::array({bar}), {"/0/o", "/0/h", "/0/l", "/0/c"}, noNumbers, {"/0/ts"}},
        {"indices:I:VIX:1m", bar, {"/o", "/h", "/l", "/c", "/time"}, noNumbers, {"/time", "/ts"}},
        {"meta:instruments", {{"catalog", {{"futures", {{{"sym", "SI"}}}}}}}, {"/catalog"}, noObjects},
        {"meta:contracts", {{"map", {{"GC", "GCZ6"}, {"CL", "CLZ6"}}}}, {"/map"}, noObjects},
        {"derived:QQQ", {{"etfRatio", 41.5}, {"expirations", {"2026-06-12"}}}, {}, noObjects},
        {"derived:NDX", {{"etfRatio", 2}}, {}, noObjects},
        {"derived:gexBubbles:QQQ", {{"bubbles", {{"1781100000", {{"s", 600}}}}}}, {"/bubbles"}, noObjects},
        {"derived:hfHistory:QQQ", {{"candles", {{"1781100000", {{"c", 5}}}}}}, {"/candles"}, noObjects},
        {"derived:gexBubbles:QQQ", marker, {"/minuteTs"}, noNumbers, {"/minuteTs"}},
        {"derived:hfTriangles:QQQ", marker, {"/minuteTs"}, noNumbers, {"/minuteTs"}},
        {"derived:hfHistory:QQQ", marker, {"/minuteTs"}, noNumbers, {"/minuteTs"}},
        {"derived:srlevels:NQ", session, {}, noObjects, {"/sessionOpenTs", "/up/0/i", "/dn/0/triggerTime"}},
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
    static std::pair<json, json::json_pointer> envelope(const Kind& kind, std::size_t type) {
        const json frames[] = {{{"type", "snapshot"}, {"channel", kind.channel}, {"data", kind.body}},
                               {{"type", "event"}, {"channel", kind.channel}, {"payload", kind.body}},
                               {{"type", "batch"}, {"channel", kind.channel}, {"events", {kind.body}}}};
        const char* const places[] = {"/data", "/payload", "/events/0"};
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
        const auto [frame, at] = envelope(kind, below(3));
        const std::size_t where = below(3);
        return where == 0 ? brokenText(frame.dump()) : where == 1 ? brokenEnvelope(frame) : brokenBody(kind, frame, at);
    }

    void openBoth() {
        open(PaneState{"NQ", 5, "BOTH"});
        for (const char* channel : {"futures:NQM6", "futures:ESM6", "indices:I:VIX"})
            snapshot(channel, flatBars(minute - 600, 11));
        event("derived:QQQ", R"({"spot":1})");
        event("derived:srlevels:NQ", R"({"sessionOpenTs":1781042400,"openPrice":1,"up":[],"dn":[]})");
    }

    // The pane's state but for log and repairs, and how often `channel` has been repaired.
    std::pair<json, std::uint64_t> stateAndRepairs(const std::string& channel) {
        json pane = json::parse(documentWithoutLog())["panes"][0];
        const json repairs = pane["feedRepairs"];
        pane.erase("feedRepairs");
        return {pane, repairs.value(channel, std::uint64_t{0})};
    }
};

TEST_F(MutatedFrames, ValidMessagesAreSeenInTheState) {
    for (const Kind& kind : kinds()) {
        openBoth();
        const auto before = documentWithoutLog();
        const std::string text = envelope(kind, below(3)).first.dump();
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

TEST_F(MutatedFrames, AnImpossibleNumberCostsItsElementAndIsCounted) {
    auto all = kinds();
    all.push_back({"futures:GCQ6", all[2].body, {}, noNumbers, {"/0/time"}});  // read, but not shown
    for (const Kind& kind : all)
        for (const std::string& member : kind.integers)
            for (const json& number : impossible)
                for (std::size_t type = 0; type < (kind.channel == "futures:GCQ6" ? 2 : 3); ++type) {
                    if (!model) openBoth();
                    if (number.is_string() && !member.ends_with("/ts")) continue;  // no number to every reader
                    auto [text, at] = envelope(kind, type);
                    if (kind.channel.starts_with("derived:srl")) text[at][member[1] == 'u' ? "dn" : "up"] = nullptr;
                    text[at / json::json_pointer(member)] = number;
                    const auto [state, repairs] = stateAndRepairs(kind.channel);
                    frame(text.dump());
                    ASSERT_EQ(stateAndRepairs(kind.channel), std::pair(state, repairs + 1)) << text;
                }
}

TEST_F(MutatedFrames, AnImpossibleNumberEndsAStrictProcess) {
    strictFeed = true;
    openBoth();
    const char* const fatal = "velmora: fatal: .* does not fit a 64-bit integer";
    EXPECT_DEATH(event("futures:NQM6:trades", R"({"price":5,"ts":"inf"})"), fatal);
    EXPECT_DEATH(snapshot("futures:GCQ6", R"({"candles":{"nan":{}}})"), fatal) << "read, but not shown";
}

TEST_F(MutatedFrames, ThirtyThousandWithImpossibleNumbersDoNoHarm) {
    std::vector<std::string> texts;  // any number of any valid message is one that no integer holds
    for (const Kind& kind : kinds())
        for (std::size_t type = 0; type < 3; ++type) {
            const auto [valid, at] = envelope(kind, type);
            const json leaves = valid.flatten();
            for (const auto& [place, value] : leaves.items())
                for (json text = valid; const json& number : value.is_number() ? impossible : Values{}) {
                    text[json::json_pointer(place)] = number;
                    texts.push_back(text.dump());
                }
        }
    openBoth();
    for (int i = 0; i < 30'000; ++i) {
        sockets.last().frame(pick(texts));
        if (i % 10 == 0) time.advance(0.01);
    }
    event("futures:NQM6:trades", R"({"price":123.25})");
    EXPECT_EQ(model->bars.candles.back().close, 123.25);
    std::uint64_t repairs = 0;
    for (const auto& [channel, count] : model->feedRepairs.byChannel()) repairs += count.elements;
    EXPECT_GT(repairs, 4000u);
    EXPECT_EQ(sockets.count(), 1u);
}

}  // namespace
}  // namespace vmr::test
