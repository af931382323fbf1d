// Where each channel message goes, what is logged of it, and that prepared bars are the same bars.
#include "market/CandleParser.h"
#include "model/PaneFixture.h"
#include "model/PayloadBrief.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

using Routing = PaneFixture;
class RoutingDeathTest : public PaneFixture {};

TEST_F(Routing, LogsWhatNoOtherPartShows) {
    openSymbol("NQ");
    GexConfig config = model->config;
    config.gexSource = "BOTH";
    model->setConfig(config);
    model->reloadChart();
    takeLog();
    const std::string bar = R"({"time":1781100000,"o":1,"h":1,"l":1,"c":1})";
    const struct {
        std::string channel, payload, logged;
    } cases[] = {
        {"futures:NQM6:quote", R"({"bid":5,"ask":6})", ""},
        {"futures:NQM6", "[" + bar + "]", "[1 items]"},
        {"futures:NQM6:1m", R"({"minuteTs":1781100000,"candle":{"o":2,"h":2,"l":2,"c":2}})", "{ candle, minuteTs }"},
        {"futures:NQM6:trades", R"({"price":"6","ts":1781100000999})", ""},
        {"futures:ESM6:trades", R"({"price":7,"ts":1781100000000})", ""},
        {"futures:ESM6:quote", R"({"bid":1,"ask":2})", "{ ask, bid }"},  // nothing that the pane wants
        {"indices:I:VIX", bar, ""},
        {"indices:I:VIX1D", bar, "{ c, h, l, o, time }"},
        {"meta:instruments", R"({"catalog":{"stocks":[{"sym":"NFLX"}]}})", ""},
        {"meta:instruments", R"({"catalog":[]})", "{ catalog }"},
        {"derived:QQQ", R"({"etfRatio":41,"b":null})", "{ b, etfRatio }"},
        {"derived:QQQ", "[{}]", "[1 items]"},
        {"derived:NDX", R"({"etfRatio":1})", ""},
        {"derived:gexBubbles:QQQ", "{}", ""},
        {"derived:gexBubbles:QQQ", "[]", "[0 items]"},
        {"derived:osc:QQQ", "[]", ""},
        {"derived:srlevels:NQ", "{}", "{  }"},
    };
    for (const auto& c : cases) {
        event(c.channel, c.payload);
        const auto line = c.channel + " [event] → " + c.logged;
        EXPECT_EQ(takeLog(), c.logged.empty() ? std::vector<std::string>{} : std::vector{line}) << c.payload;
    }
    batch("b", R"([1,{"z":1,"a":2}])");
    EXPECT_THAT(takeLog(), ElementsAre("b [batch] → 1", "b [batch] → { a, z }"));
}

TEST_F(Routing, ATradeWithoutAUsableTimeIsStampedWithTheClock) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    time.advance(125.5);  // the bars roll on by themselves
    ASSERT_EQ(model->candles.size(), 3u);
    for (const char* payload : {R"({"price":107})", R"({"price":108,"ts":null})", R"({"price":109,"ts":"x"})"})
        event("futures:NQM6:trades", payload);
    EXPECT_EQ(model->candles.back(), (Candle{minute + 120, 100, 109, 100, 109, 0}));
}

TEST_F(RoutingDeathTest, ATimeThatNoIntegerHoldsEndsTheProcess) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    for (const char* ts : {R"("nan")", "-1e300"})
        EXPECT_DEATH(event("futures:NQM6:trades", R"({"price":5,"ts":)" + std::string(ts) + "}"),
                     "velmora: fatal: the time of a trade does not fit")
            << ts;
}

TEST_F(Routing, PatchesAddUpAndKeepTheirValuesAlive) {
    openSymbol("NQ");
    event("derived:QQQ", R"({"b":[1,{"x":"deep"}],"c":"old"})");
    event("derived:QQQ", R"({"c":"new"})");
    std::string big = R"({"small":7,"list":["2026-06-12"],"rows":[)";
    for (int i = 0; i < 20'000; ++i) big += R"({"strike":)" + std::to_string(i) + "},";
    event("derived:QQQ", big + "{}]}");
    std::string all;
    for (const auto& [key, value] : model->derivedFields)
        if (key != "rows") all += key + "=" + value.text() + ";";
    EXPECT_EQ(all, R"(b=[1,{"x":"deep"}];c="new";list=["2026-06-12"];small=7;)");
    EXPECT_EQ(model->derivedFields["rows"].size(), 20'001u);
    for (const char* key : {"small", "list"})
        EXPECT_LT(model->derivedFields[key].documentBytes(), 1000u) << "a small field does not hold the whole message";
}

// What the relay's queue prepares and what the main thread would have made of the payload are the same.
TEST_F(Routing, WhatIsPreparedIsTheSame) {
    std::string unsorted = "[";
    for (int i = 0; i < 20'000; ++i)
        unsorted += std::string(i ? "," : "") + R"({"time":)" + std::to_string(minute - (i * 7919 % 19'000) * 60) +
                    R"(,"o":1,"h":2,"l":0,"c":)" + std::to_string(i) + "}";
    unsorted += "]";
    const std::string payloads[] = {flatBars(minute - 20'000 * 60, 20'000), unsorted, flatBars(minute - 60, 2, 7),
                                    "[]"};
    openSymbol("NQ");
    for (const char* channel : {"futures:NQM6", "futures:ESM6", "indices:I:VIX:1m"}) {
        model->reloadChart();
        model->vixCandles.clear();
        std::vector<Candle> expected;
        for (const auto& payload : payloads) {
            snapshot(channel, payload);
            expected = CandleParser::merge(expected, CandleParser::parse(*Json::parse(payload)), 5000);
            const std::string name = channel;
            const auto& series = name.starts_with("futures:NQ") ? model->candles
                                 : name.starts_with("futures:") ? model->secondaryCandles
                                                                : model->vixCandles;
            ASSERT_EQ(series, expected) << channel << " " << payload.substr(0, 60);
        }
    }
    std::string large = "{";
    for (int i = 20'000; i > 0; --i) large += "\"" + std::to_string(i) + "\":0,";
    large += "\"0\":0}";
    takeLog();
    snapshot("unknown", large);
    EXPECT_THAT(takeLog(), ElementsAre("unknown [snapshot] → " + briefForm(*Json::parse(large))));
}

TEST(PayloadBrief, IsShort) {
    const std::string x80(80, 'x');
    std::string wide;
    for (int i = 0; i < 90; ++i) wide += "é";
    const std::pair<std::string, std::string> cases[] = {
        {R"({"f":1,"e":1,"d":{"z":1},"c":1,"b":1,"a":1})", "{ a, b, c, d, e, f }"},
        {R"({"a":1,"b":1,"c":1,"d":1,"e":1,"f":1,"B":1})", "{ B, a, b, c, d, e, … }"},
        {"[1,[2],3]", "[3 items]"},
        {"null", "null"},
        {"-1.5", "-1.5"},
        {"\"" + x80 + "y\"", x80},
        {"\"" + wide + "\"", wide.substr(0, 160)},
    };
    for (const auto& [json, brief] : cases) EXPECT_EQ(briefForm(*Json::parse(json)), brief) << json;
}

}  // namespace
}  // namespace vmr::test
