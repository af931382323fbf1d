// A thousand broken frames on an open pane: whatever the relay sends, a message that is not valid changes nothing but
// the log.
#include <nlohmann/json.hpp>
#include <random>

#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using nlohmann::json;

// One valid message of a channel kind, and where it can be broken so that nothing of it remains valid.
struct Kind {
    const char* name;
    std::string channel;
    json body;
    bool changesState;                 ///< whether the valid message is seen in the state
    std::vector<std::string> members;  ///< JSON pointers; without any one of them the body says nothing
    bool needsObject;                  ///< whether any body that is no object says nothing
    std::vector<json> oddValues;       ///< what makes a member as good as missing
};

class MutatedFrames : public PaneFixture {
 protected:
    std::mt19937 random{2024};
    std::size_t below(std::size_t n) { return random() % n; }
    template <class T>
    const T& pick(const std::vector<T>& from) {
        return from[below(from.size())];
    }

    // Values that no reader of numbers takes. Left out: those that are fatal by design, and those that are numbers
    // after all (true, "nan", "1e3"), since with them a bar would be valid.
    const std::vector<json> noNumbers{
        nullptr,           "", "abc", " 5", "5 ", "1,5", "--1", json::array(), json::array({5}), json::object(),
        json{{"price", 5}}};
    const std::vector<json> noObjects{nullptr, "{}", 5, -0.5, true, json::array(), json::array({1, json::object()})};

    std::vector<Kind> kinds() const {
        const json prices{{"o", 1}, {"h", 4}, {"l", 1}, {"c", 2}, {"v", 3}};
        json bar = prices;
        bar["time"] = minute;
        const std::string now = std::to_string(minute);
        std::vector<json> trades = noNumbers;
        trades.insert(trades.end(), {"nan", "inf", "-infinity"});  // a trade's price must be finite, a bar's need not
        std::vector<json> noCatalogs = noObjects, noLists = noObjects;
        noLists.push_back(json::array({json::object(), json{{"sym", 5}}, nullptr, "NQ"}));
        std::erase(noLists, json(json::array({1, json::object()})));
        return {
            {"trade",
             "futures:NQM6:trades",
             {{"price", 123.25}, {"ts", minute * 1000}},
             true,
             {"/price"},
             true,
             trades},
            {"quote", "futures:NQM6:quote", {{"bid", 1}, {"ask", 2}}, false, {"/bid", "/ask"}, true, trades},
            {"second trade",
             "futures:ESM6:trades",
             {{"price", 50}, {"ts", minute * 1000}},
             true,
             {"/price"},
             true,
             trades},
            {"bars",
             "futures:NQM6",
             json::array({bar}),
             true,
             {"/0/o", "/0/h", "/0/l", "/0/c", "/0/time"},
             true,
             noNumbers},
            {"bars in an object",
             "futures:NQM6",
             {{"candles", {bar}}},
             true,
             {"/candles/0/o", "/candles/0/c"},
             true,
             noNumbers},
            {"keyed bars",
             "futures:NQM6",
             {{"candles", {{now, prices}}}},
             true,
             {"/candles/" + now + "/l"},
             true,
             noNumbers},
            {"minute",
             "futures:NQM6:1m",
             {{"minuteTs", minute}, {"candle", prices}},
             true,
             {"/minuteTs", "/candle", "/candle/h"},
             true,
             noNumbers},
            {"second bars",
             "futures:ESM6",
             json::array({bar}),
             true,
             {"/0/o", "/0/h", "/0/l", "/0/c"},
             true,
             noNumbers},
            {"volatility bars", "indices:I:VIX:1m", bar, true, {"/o", "/h", "/l", "/c", "/time"}, true, noNumbers},
            {"catalog",
             "meta:instruments",
             {{"catalog", {{"futures", {{{"sym", "SI"}}}}}}},
             true,
             {"/catalog", "/catalog/futures"},
             true,
             noLists},
            {"contracts", "meta:contracts", {{"map", {{"GC", "GCZ6"}}}}, true, {"/map"}, true, noObjects},
            {"contract", "meta:contracts", {{"map", {{"GC", "GCZ6"}, {"CL", "CLZ6"}}}}, true, {}, true, {}},
            {"levels", "derived:QQQ", {{"etfRatio", 41.5}, {"expirations", {"2026-06-12"}}}, true, {}, true, {}},
            {"second levels", "derived:NDX", {{"etfRatio", 2}}, true, {}, true, {}},
            {"bubbles", "derived:gexBubbles:QQQ", {{"points", json::array()}}, false, {}, true, {}},
            {"triangles", "derived:hfTriangles:QQQ", {{"points", json::array()}}, false, {}, true, {}},
            {"history", "derived:hfHistory:QQQ", json::object(), false, {}, true, {}},
        };
    }

    json envelope(const Kind& kind) {
        switch (below(3)) {
            case 0:
                return {{"type", "snapshot"}, {"channel", kind.channel}, {"data", kind.body}};
            case 1:
                return {{"type", "event"}, {"channel", kind.channel}, {"payload", kind.body}};
            default:
                return {{"type", "batch"}, {"channel", kind.channel}, {"events", {kind.body}}};
        }
    }
    static json& bodyOf(json& frame) {
        if (frame["type"] == "snapshot") return frame["data"];
        if (frame["type"] == "event") return frame["payload"];
        return frame["events"][0];
    }

    // Cut short, or with bytes overwritten until an independent decoder refuses the text. Cutting any text that ends
    // with its outermost brace leaves no JSON.
    std::string brokenText(const std::string& text) {
        if (below(2) == 0) return text.substr(0, below(text.size()));
        std::string broken = text;
        while (json::accept(broken))
            for (auto flips = 1 + below(4); flips > 0; --flips) {
                char& c = broken[below(broken.size())];
                c = static_cast<char>(c ^ static_cast<char>(1u << below(8)));
            }
        return broken;
    }
    // An envelope that names no known message, no channel, another one's member, or a channel that nobody asked for.
    std::string brokenEnvelope(json frame) {
        const std::string member = frame.contains("data") ? "data" : frame.contains("payload") ? "payload" : "events";
        switch (below(6)) {
            case 0:
                frame["type"] = pick(std::vector<json>{nullptr, 5, "Event", "", "snapshots", json::array({"event"})});
                break;
            case 1:
                frame.erase(below(2) == 0 ? "type" : "channel");
                break;
            case 2:
                frame["channel"] = pick(noObjects);
                break;
            case 3:
                frame.erase(member);
                break;
            case 4:
                frame["channel"] =
                    frame["channel"].get<std::string>() + pick(std::vector<std::string>{" ", ":2m", "x", ":"});
                break;
            default:
                return json::array({frame}).dump();
        }
        // a channel that happens to be a text, such as "{}", is one that nobody asked for
        return frame.dump();
    }
    // A body without an essential member, with an odd value for it, or that is of another type altogether.
    std::string brokenBody(const Kind& kind, json frame) {
        json& body = bodyOf(frame);
        if (std::string(kind.name) == "contract" && below(2) == 0) {
            body["map"][below(2) == 0 ? "GC" : "CL"] =
                pick(std::vector<json>{nullptr, 5, true, json::array(), json::object()});
        } else if (kind.members.empty() || below(4) == 0) {
            body = pick(noObjects);
        } else {
            const json::json_pointer place(pick(kind.members));
            if (below(3) == 0)
                body.at(place.parent_pointer()).erase(place.back());
            else
                body[place] = pick(kind.oddValues);
        }
        return frame.dump();
    }
    std::string broken(const Kind& kind) {
        const json frame = envelope(kind);
        switch (below(3)) {
            case 0:
                return brokenText(frame.dump());
            case 1:
                return brokenEnvelope(frame);
            default:
                return brokenBody(kind, frame);
        }
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
        for (int i = 0; i < 4; ++i) {
            openBoth();
            const auto before = documentWithoutLog();
            const std::string text = envelope(kind).dump();
            frame(text);
            EXPECT_EQ(documentWithoutLog() != before, kind.changesState) << kind.name << " " << text;
        }
    }
}

TEST_F(MutatedFrames, BrokenOnesChangeNothingButTheLog) {
    openBoth();
    const auto all = kinds();
    const auto before = documentWithoutLog();
    for (std::size_t i = 0; i < 1000; ++i) {
        const Kind& kind = all[i % all.size()];
        const std::string text = broken(kind);
        frame(text);
        ASSERT_EQ(documentWithoutLog(), before) << i << " " << kind.name << ": " << text;
        ASSERT_FALSE(sockets.last().gone());
    }
    EXPECT_EQ(sockets.count(), 1u);
    event("futures:NQM6:trades", R"({"price":123.25,"ts":)" + std::to_string(minute) + "000}");
    EXPECT_EQ(model->candles.back().close, 123.25) << "and the pane lives on";
}

}  // namespace
}  // namespace vmr::test
