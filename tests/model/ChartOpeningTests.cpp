// Which channels a chart needs, in which order, and what a change of chart clears and keeps.
#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Names = std::vector<std::string>;

class ChartOpening : public PaneFixture {
 protected:
    static std::string request(const std::string& action, const Names& channels) {
        std::string out = R"({"action":")" + action + R"(","channels":[)";
        for (const auto& name : channels) out += (out.back() == '[' ? "\"" : ",\"") + name + "\"";
        return out + "]}";
    }
};

const Names nq{"futures:NQM6",          "futures:NQM6:1m",        "futures:NQM6:trades",     "meta:contracts",
               "meta:instruments",      "futures:NQM6:quote",     "indices:I:VIX",           "indices:I:VIX:1m",
               "derived:QQQ",           "derived:gexBubbles:QQQ", "derived:hfTriangles:QQQ", "derived:osc:QQQ",
               "derived:hfHistory:QQQ", "futures:ESM6",           "futures:ESM6:1m",         "futures:ESM6:trades",
               "derived:srlevels:NQ"};

const Names apple{"stocks:AAPL",
                  "stocks:AAPL:1m",
                  "stocks:AAPL:trades",
                  "meta:contracts",
                  "meta:instruments",
                  "indices:I:VIX",
                  "indices:I:VIX:1m",
                  "derived:AAPL",
                  "derived:gexBubbles:AAPL",
                  "derived:hfTriangles:AAPL",
                  "derived:osc:AAPL",
                  "derived:hfHistory:AAPL"};

TEST_F(ChartOpening, ListsTheChannelsInOrderAndSwapsThemOnTheWire) {
    openSymbol("NQ");
    EXPECT_THAT(model->subscribedChans, ElementsAreArray(nq));
    EXPECT_THAT(sockets.last().takeSent(), ElementsAre(request("subscribe", nq)));
    model->switchSymbol("AAPL");
    time.runUntilIdle();
    EXPECT_THAT(model->subscribedChans, ElementsAreArray(apple));
    EXPECT_THAT(sockets.last().takeSent(), ElementsAre(request("unsubscribe", nq), request("subscribe", apple)));
    EXPECT_THAT(takeLog(), ElementsAre("→ chart: stocks:AAPL + derived:AAPL"));
    EXPECT_EQ(printed.back(), "[app] → chart: stocks:AAPL + derived:AAPL");
    model->switchSymbol("NQ");
    EXPECT_THAT(takeLog(), ElementsAre("→ chart: futures:NQM6 + derived:QQQ + derived:srlevels:NQ"));
}

TEST_F(ChartOpening, CountsAndNamesByInstrumentAndSource) {
    struct Case {
        std::string symbol, source, levels, secondary, secondGex;
        std::size_t count;
        std::string label;
        bool single;
        double hfScale;
    };
    const Case cases[] = {
        {"NQ", "ETF", "derived:QQQ", "ESM6", "", 17, "NQ", false, 0.0000002},
        {"ES", "ETF", "derived:SPY", "NQM6", "", 17, "ES", true, 0.0000002},
        {"RTY", "ETF", "derived:IWM", "", "", 14, "RTY", true, 0.0000005},
        {"YM", "ETF", "derived:DIA", "", "", 14, "YM", true, 0.0001},
        {"GC", "ETF", "derived:GLD", "", "", 14, "GC", true, 0.000004},
        {"CL", "ETF", "derived:USO", "", "", 14, "CL", true, 0.000005},
        {"META", "ETF", "derived:META", "", "", 12, "META", true, 0.0000002},
        {"NQ", "INDEX", "derived:NDX", "ESM6", "", 17, "NQ", false, 0.0000015},
        {"ES", "INDEX", "derived:SPX", "NQM6", "", 17, "ES", true, 0.00000025},
        {"RTY", "INDEX", "derived:RUT", "", "", 14, "RTY", true, 0.0000005},
        {"GC", "INDEX", "derived:GLD", "", "", 14, "GC", true, 0.000004},
        {"NQ", "BOTH", "derived:QQQ", "ESM6", "derived:NDX", 18, "NQ", false, 0.0000002},
        {"ES", "BOTH", "derived:SPY", "NQM6", "derived:SPX", 18, "ES", true, 0.0000002},
        {"RTY", "BOTH", "derived:IWM", "", "derived:RUT", 15, "RTY", true, 0.0000005},
        {"YM", "BOTH", "derived:DIA", "", "", 14, "YM", true, 0.0001},
        {"TSLA", "BOTH", "derived:TSLA", "", "", 12, "TSLA", true, 0.0000002},
    };
    open();
    for (const Case& c : cases) {
        GexConfig config = model->config;
        config.gexSource = c.source;
        model->setConfig(config);
        model->switchSymbol(c.symbol);
        const std::string what = c.symbol + " " + c.source;
        EXPECT_EQ(model->levelsChannel.get(), c.levels) << what;
        EXPECT_EQ(model->subscribedChans.size(), c.count) << what;
        EXPECT_EQ(model->secondaryContract, c.secondary) << what;
        EXPECT_EQ(model->secondaryChannel, c.secondary.empty() ? "" : "futures:" + c.secondary) << what;
        EXPECT_EQ(model->secondaryGexChannel, c.secondGex) << what;
        EXPECT_EQ(testing::Value(model->subscribedChans, testing::Contains(c.secondGex)), !c.secondGex.empty()) << what;
        EXPECT_EQ(model->oscPrimaryLabel.get(), c.label) << what;
        EXPECT_EQ(model->oscSingle, c.single) << what;
        EXPECT_EQ(model->hfScale, c.hfScale) << what;
        EXPECT_EQ(model->currentSymbol(), c.symbol);
        EXPECT_EQ(model->simRoot, model->isStock() ? "" : c.symbol);
        EXPECT_EQ(model->sessionHHMM(), model->isStock() ? 930 : 1800);
    }
}

TEST_F(ChartOpening, WithoutLevelsThereAreNoDerivedChannels) {
    openSymbol("RTY");
    const double scale = model->hfScale;
    model->openChart(" \tfutures:SIN6\r\n", " \n");
    EXPECT_THAT(model->subscribedChans,
                ElementsAre("futures:SIN6", "futures:SIN6:1m", "futures:SIN6:trades", "meta:contracts",
                            "meta:instruments", "indices:I:VIX", "indices:I:VIX:1m"));
    EXPECT_THAT(takeLog(), ElementsAre("→ chart: futures:SIN6"));
    EXPECT_EQ(model->hfScale, scale);
    EXPECT_EQ(model->oscPrimaryLabel.get() + model->simRoot + model->oscChannel + model->currentSymbol(), "NQ");
    EXPECT_FALSE(model->oscSingle);
    model->openChart("futures:ESM6", "");
    EXPECT_THAT(takeLog(), ElementsAre("→ chart: futures:ESM6 + derived:srlevels:ES"));
    model->openChart("futures:NQM6", "derived:derived:QQQ");
    EXPECT_EQ(model->oscChannel, "derived:osc:QQQ");
}

TEST_F(ChartOpening, ABlankNameChangesNothingAtAll) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    takeLog();
    const auto before = documentWithoutLog();
    const auto sent = sockets.last().takeSent();
    for (const char* blank : {"", " ", "\t\r\n \v\f"}) model->openChart(blank, "derived:SPY");
    time.runUntilIdle();
    EXPECT_EQ(documentWithoutLog(), before);
    EXPECT_THAT(sockets.last().sent, IsEmpty());
    EXPECT_THAT(takeLog(), IsEmpty());
    make();
    model->reloadChart();
    EXPECT_TRUE(model->chartChannel->empty());
}

TEST_F(ChartOpening, ANewChartStartsEmptyButKeepsTheVolatilityIndexAndTheCatalog) {
    openSymbol("NQ");
    for (const char* channel : {"futures:NQM6", "futures:ESM6", "indices:I:VIX"})
        snapshot(channel, flatBars(minute - 60, 2));
    event("derived:QQQ", R"({"etfRatio":41})");
    event("meta:instruments", R"({"catalog":{"stocks":[{"sym":"NFLX"}]}})");
    ASSERT_EQ(model->displayCandles->size(), 2u);
    ASSERT_EQ(model->secondaryCandles.size(), 2u);
    ASSERT_EQ(model->derivedFields.size(), 1u);
    model->reloadChart();
    EXPECT_THAT(model->candles, IsEmpty());
    EXPECT_THAT(model->displayCandles.get(), IsEmpty());
    EXPECT_THAT(model->secondaryCandles, IsEmpty());
    EXPECT_THAT(model->derivedFields, IsEmpty());
    EXPECT_EQ(model->vixCandles.size(), 2u);
    EXPECT_THAT(model->catStocks.get(), ElementsAre("NFLX"));
    EXPECT_THAT(model->subscribedChans, ElementsAreArray(nq));
}

TEST_F(ChartOpening, AnUnknownSymbolIsRememberedAndNothingElse) {
    openSymbol("NQ");
    const auto before = documentWithoutLog();
    model->switchSymbol("ZZZ");
    EXPECT_EQ(documentWithoutLog(), before);
    EXPECT_EQ(preferences.get("gex-last-symbol"), "ZZZ");
}

TEST_F(ChartOpening, ACatalogsScaleGoesBeforeTheBuiltInOne) {
    openSymbol("NQ");
    AppModel::hfScaleOverrides() = {{"NQ", 7}, {"QQQ", 8}, {"AAPL", 9}};
    model->reloadChart();
    EXPECT_EQ(model->hfScale, 7) << "the root's";
    model->switchSymbol("AAPL");
    EXPECT_EQ(model->hfScale, 9) << "the source's, for a chart without a root";
    model->openChart("futures:SIN6", "derived:QQQ");
    EXPECT_EQ(model->hfScale, 8);
}

TEST(FuturesRoot, CutsMonthAndYear) {
    const std::pair<const char*, const char*> cases[] = {{"futures:NQM6", "NQ"},
                                                         {"futures:NQM26", "NQ"},
                                                         {"futures:NQM2026", "NQ"},
                                                         {"futures:NQ", "NQ"},
                                                         {"futures:GCQ6", "GC"},
                                                         {"futures:CLN6", "CL"},
                                                         {"futures:RTYZ25", "RTY"},
                                                         {"futures:NQM20261", ""},
                                                         {"futures:NQA6", ""},
                                                         {"futures:SIN6", ""},
                                                         {"futures:nqm6", ""},
                                                         {"futures:", ""},
                                                         {"futures:M6", ""},
                                                         {"futures:6", ""},
                                                         {"futures:NQM6:1m", ""},
                                                         {"stocks:NQ", ""},
                                                         {"NQM6", ""},
                                                         {"", ""},
                                                         {"futures:NQM", ""},
                                                         {"futures:NQM6 ", ""}};
    for (const auto& [channel, root] : cases) EXPECT_EQ(futuresRoot(channel), root) << channel;
}

}  // namespace
}  // namespace vmr::test
