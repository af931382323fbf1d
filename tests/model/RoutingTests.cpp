// Where each channel message goes, what is logged of it, and that prepared bars are the same bars.
#include <cmath>

#include "market/CandleParser.h"
#include "model/PaneFixture.h"
#include "model/PayloadBrief.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Routing : public PaneFixture {};
using RoutingDeathTest = Routing;

TEST_F(Routing, TellsWhatIsLoggedAndWhatChanges) {
    openSymbol("NQ");
    GexConfig config = model->config;
    config.gexSource = "BOTH";
    model->setConfig(config);
    model->reloadChart();
    takeLog();
    const std::string bar = R"({"time":)" + std::to_string(minute) + R"(,"o":1,"h":1,"l":1,"c":1})";
    const struct {
        std::string channel, payload, logged;
        bool changes;
    } cases[] = {
        {"futures:NQM6:trades", R"({"price":5})", "", false},  // no bars yet
        {"futures:NQM6:trades", "[1]", "", false},
        {"futures:NQM6:quote", R"({"bid":5,"ask":6})", "", false},
        {"futures:NQM6:quote", "null", "", false},
        {"futures:NQM6:quote", R"({"bid":"nan","ask":6})", "", false},
        {"futures:NQM6", "[" + bar + "]", "[1 items]", true},
        {"futures:NQM6:1m", R"({"minuteTs":)" + std::to_string(minute) + R"(,"candle":{"o":2,"h":2,"l":2,"c":2}})",
         "{ candle, minuteTs }", true},
        {"futures:NQM6", "[]", "[0 items]", false},
        {"futures:NQM6", R"("none")", "none", false},
        {"futures:NQM6:trades", R"({"price":"6","ts":)" + std::to_string(minute) + "999}", "", true},
        {"futures:ESM6", bar, "", true},
        {"futures:ESM6:1m", "{}", "", false},
        {"futures:ESM6:trades", R"({"price":7,"ts":)" + std::to_string(minute) + "000}", "", true},
        {"futures:ESM6:trades", R"({"price":"inf"})", "", false},
        {"futures:ESM6:quote", R"({"bid":1,"ask":2})", "{ ask, bid }", false},  // nothing that the pane wants
        {"indices:I:VIX", bar, "", true},
        {"indices:I:VIX:1m", R"({"candles":{"60":{"o":1,"h":1,"l":1,"c":1}}})", "", true},
        {"indices:I:VIX1D", bar, "{ c, h, l, o, time }", false},
        {"meta:instruments", R"({"catalog":{"stocks":[{"sym":"NFLX"}]}})", "", true},
        {"meta:instruments", R"({"catalog":[]})", "{ catalog }", false},
        {"meta:instruments", "7", "7", false},
        {"meta:contracts", R"({"map":{"GC":"GCZ6"}})", "", true},
        {"meta:contracts", R"({"map":{"GC":7}})", "{ map }", false},
        {"derived:QQQ", R"({"etfRatio":41,"b":null})", "{ b, etfRatio }", true},
        {"derived:QQQ", "[{}]", "[1 items]", false},
        {"derived:NDX", R"({"etfRatio":1})", "", true},
        {"derived:NDX", "5", "5", false},
        {"derived:gexBubbles:QQQ", "{}", "", false},
        {"derived:gexBubbles:QQQ", "[]", "[0 items]", false},
        {"derived:hfTriangles:QQQ", "{}", "", false},
        {"derived:hfTriangles:QQQ", "true", "true", false},
        {"derived:osc:QQQ", "{}", "", false},
        {"derived:osc:QQQ", "[]", "", false},
        {"derived:hfHistory:QQQ", "{}", "", false},
        {"derived:hfHistory:QQQ", "[]", "[0 items]", false},
        {"derived:srlevels:NQ", "{}", "{  }", false},
        {"derived:srlevels:ES", "{}", "{  }", false},
        {"futures:NQU6", "[" + bar + "]", "[1 items]", false},  // the chart before this one
        {"futures:NQU6:trades", R"({"price":5})", "{ price }", false},
        {"", "null", "null", false},
    };
    for (const auto& c : cases) {
        const auto before = documentWithoutLog();
        event(c.channel, c.payload);
        EXPECT_EQ(documentWithoutLog() != before, c.changes) << c.channel << " " << c.payload;
        const auto line = c.channel + " [event] → " + c.logged;
        EXPECT_EQ(takeLog(), c.logged.empty() ? std::vector<std::string>{} : std::vector{line}) << c.payload;
    }
    snapshot("a", "[1,2]");
    batch("b", R"([1,{"z":1,"a":2}])");
    EXPECT_THAT(takeLog(), ElementsAre("a [snapshot] → [2 items]", "b [batch] → 1", "b [batch] → { a, z }"));
    EXPECT_THAT(printed, testing::Not(testing::Contains(testing::HasSubstr("snapshot"))));
}

TEST_F(Routing, ATradeWithoutAUsableTimeIsStampedWithTheClock) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    snapshot("futures:ESM6", flatBars(minute, 1));
    time.advance(125.5);  // the bars roll on by themselves
    ASSERT_EQ(model->candles.size(), 3u);
    for (const char* payload : {R"({"price":107})", R"({"price":108,"ts":null})", R"({"price":109,"ts":"x"})"})
        event("futures:NQM6:trades", payload);
    EXPECT_EQ(model->candles.back(), (Candle{minute + 120, 100, 109, 100, 109, 0}));
    event("futures:ESM6:trades", R"({"price":55})");
    EXPECT_EQ(model->secondaryCandles.back(), (Candle{minute + 120, 100, 100, 55, 55, 0}));
    EXPECT_EQ(model->secondaryCandles.size(), 2u) << "the other instrument does not roll by itself";
}

TEST_F(Routing, UnusableTradesLeaveNoTrace) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    takeLog();
    const auto before = documentWithoutLog();
    for (const char* payload :
         {R"({"price":"nan"})", R"({"price":"-inf"})", R"({"price":null})", R"({"price":"1,5"})", "{}",
          R"({"price":[1]})", "null", "[]", "5", R"({"Price":5})", R"({"price":"nan","ts":"inf"})"})
        event("futures:NQM6:trades", payload);
    EXPECT_EQ(documentWithoutLog(), before);
    EXPECT_THAT(takeLog(), IsEmpty());
    const auto version = model->chartVersion;
    time.advance(0.5);
    EXPECT_EQ(model->chartVersion, version);
}

TEST_F(RoutingDeathTest, ATimeThatNoIntegerHoldsEndsTheProcess) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    for (const char* ts : {R"("nan")", R"("inf")", "1e300", "-1e300"})
        EXPECT_DEATH(event("futures:NQM6:trades", R"({"price":5,"ts":)" + std::string(ts) + "}"),
                     "velmora: fatal: the time of a trade does not fit")
            << ts;
    EXPECT_DEATH(model->applySecondaryTrade(5, std::nan("")), "velmora: fatal");
}

TEST_F(Routing, PatchesAddUpAndKeepTheirValuesAlive) {
    openSymbol("NQ");
    event("derived:QQQ", R"({"a":1,"b":[1,{"x":"deep"}],"c":"old"})");
    event("derived:QQQ", R"({"c":"new","d":null})");
    std::string big = R"({"small":7,"list":["2026-06-12"],"rows":[)";
    for (int i = 0; i < 20'000; ++i) big += R"({"strike":)" + std::to_string(i) + "},";
    event("derived:QQQ", big + "{}]}");
    std::string all;
    for (const auto& [key, value] : model->derivedFields)
        if (key != "rows") all += key + "=" + value.text() + ";";
    EXPECT_EQ(all, R"(a=1;b=[1,{"x":"deep"}];c="new";d=null;list=["2026-06-12"];small=7;)");
    EXPECT_EQ(model->derivedFields["rows"].size(), 20'001u);
    EXPECT_GT(model->derivedFields["rows"].documentBytes(), 200'000u);
    for (const char* key : {"small", "list"})
        EXPECT_LT(model->derivedFields[key].documentBytes(), 1000u) << "a small field does not hold the whole message";
}

// What the relay's queue prepares and what the main thread would have made of the payload are the same bars.
TEST_F(Routing, PreparedBarsAreTheSameBars) {
    std::string unsorted = "[";
    for (int i = 0; i < 20'000; ++i)
        unsorted += std::string(i ? "," : "") + R"({"time":)" + std::to_string(minute - (i * 7919 % 19'000) * 60) +
                    R"(,"o":1,"h":2,"l":0,"c":)" + std::to_string(i) + "}";
    unsorted += "]";
    const std::string payloads[] = {flatBars(minute - 20'000 * 60, 20'000), unsorted, flatBars(minute - 60, 2, 7), "[]",
                                    R"({"candles":{"1781100000":{"o":1,"h":2,"l":0,"c":1}}})"};
    openSymbol("NQ");
    for (const char* channel : {"futures:NQM6", "futures:NQM6:1m", "futures:ESM6", "indices:I:VIX:1m"}) {
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
        ASSERT_EQ(expected.size(), 5000u);
    }
    for (const char* channel : {"futures:NQM6:trades", "futures:NQM6:quote", "derived:QQQ"})
        EXPECT_FALSE(AppModel::prepare(channel, *Json::parse(R"({"price":1})")).has_value()) << channel;
}

TEST(PayloadBrief, IsShort) {
    const std::string x80(80, 'x');
    std::string wide;
    for (int i = 0; i < 90; ++i) wide += "é";
    std::string many = "{";
    for (int i = 999; i >= 0; --i) many += "\"k" + std::to_string(1000 + i) + "\":1,";
    const std::pair<std::string, std::string> cases[] = {
        {"{}", "{  }"},
        {R"({"b":1,"a":{"c":1}})", "{ a, b }"},
        {R"({"f":1,"e":1,"d":1,"c":1,"b":1,"a":1})", "{ a, b, c, d, e, f }"},
        {R"({"g":1,"f":1,"e":1,"d":1,"c":1,"b":1,"a":1})", "{ a, b, c, d, e, f, … }"},
        {R"({"a":1,"b":1,"c":1,"d":1,"e":1,"f":1,"B":1})", "{ B, a, b, c, d, e, … }"},
        {many + R"("k0":1})", "{ k0, k1000, k1001, k1002, k1003, k1004, … }"},
        {"[]", "[0 items]"},
        {"[1,[2],3]", "[3 items]"},
        {"null", "null"},
        {"true", "true"},
        {"-1.5", "-1.5"},
        {R"("text")", "text"},
        {"\"" + x80 + "y\"", x80},
        {"\"" + wide + "\"", wide.substr(0, 160)},
    };
    for (const auto& [json, brief] : cases) EXPECT_EQ(briefForm(*Json::parse(json)), brief) << json;
    EXPECT_EQ(briefForm(JsonView()), "null");
}

TEST_F(Routing, TheBriefFormOfALargePayloadIsTheSameWhenPrepared) {
    openSymbol("NQ");
    takeLog();
    std::string large = "{";
    for (int i = 20'000; i > 0; --i) large += "\"" + std::to_string(i) + "\":0,";
    large += "\"0\":0}";
    snapshot("unknown", large);
    EXPECT_THAT(takeLog(), ElementsAre("unknown [snapshot] → " + briefForm(*Json::parse(large))));
}

}  // namespace
}  // namespace vmr::test
