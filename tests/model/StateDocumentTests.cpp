// The state document: fields under their names, exact numbers, null for what is none.
#include "model/StateDocument.h"

#include <cmath>
#include <cstring>
#include <random>

#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

class StateDocument : public PaneFixture {
 protected:
    Json read(const std::vector<const AppModel*>& panes) {
        auto document = Json::parse(stateDocument(time, panes));
        EXPECT_TRUE(document);
        return document.value_or(Json());
    }
    static JsonView first(const Json& document) { return *document["panes"].items().begin(); }
};

TEST_F(StateDocument, HoldsEveryPaneAndTheClock) {
    openSymbol("NQ");
    AppModel other(surroundings());
    time.advance(0.25);
    const Json document = read({model.get(), &other});
    EXPECT_EQ(document["clock"].number(), wednesdayAt10 + 0.25);
    ASSERT_EQ(document["panes"].size(), 2u);
    EXPECT_EQ(read({})["panes"].text(), "[]");
    const JsonView pane = first(document);
    for (const char* key : {"status",
                            "connected",
                            "isSignedIn",
                            "signingIn",
                            "userEmail",
                            "authError",
                            "connLimited",
                            "marketClosedNotice",
                            "toast",
                            "chartChannel",
                            "levelsChannel",
                            "currentSymbol",
                            "sessionHHMM",
                            "simRoot",
                            "timeframe",
                            "priceRising",
                            "chartVersion",
                            "subscribedChans",
                            "vixBaseChannel",
                            "vixChannel",
                            "srChannel",
                            "bubblesChannel",
                            "trianglesChannel",
                            "oscChannel",
                            "hfHistoryChannel",
                            "secondSymbol",
                            "secondaryContract",
                            "secondaryChannel",
                            "secondaryGexChannel",
                            "oscPrimaryLabel",
                            "oscSingle",
                            "hfScale",
                            "catFutures",
                            "catStocks",
                            "contractOverrides",
                            "candles",
                            "displayCandles",
                            "secondaryCandles",
                            "vixCandles",
                            "derivedFields",
                            "secondaryGexFields",
                            "config",
                            "logLines"})
        EXPECT_NE(pane[key].kind(), JsonView::Kind::missing) << key;
    EXPECT_EQ(pane["authError"].kind(), JsonView::Kind::null);
    EXPECT_EQ(pane["toast"].kind(), JsonView::Kind::null);
    EXPECT_EQ(pane["chartChannel"].string(), "futures:NQM6");
    EXPECT_EQ(pane["sessionHHMM"].integer(), 1800);
    EXPECT_EQ(pane["subscribedChans"].size(), 17u);
    EXPECT_EQ(pane["config"].size(), 60u);
    EXPECT_TRUE(pane["connected"].boolean());
}

TEST_F(StateDocument, NumbersReadBackAndOthersAreNull) {
    open();
    const double inf = std::numeric_limits<double>::infinity();
    model->candles = {{minute, std::nan(""), inf, -inf, 0.1, 1e-310}, {INT64_MAX, 1, 2, 3, 4, 5}};
    std::mt19937_64 random(9);
    for (int i = 0; i < 2000; ++i) {
        double value = 0;
        const std::uint64_t bits = random();
        std::memcpy(&value, &bits, sizeof value);
        model->vixCandles.push_back({i, std::isfinite(value) ? value : 0, 0, 0, 0, 0});
    }
    model->hfScale = std::nan("");
    const Json document = read({model.get()});
    const JsonView pane = first(document);
    EXPECT_EQ(pane["candles"].text(),
              "[[1781100000,null,null,null,0.1,1e-310],[9223372036854775807,1.0,2.0,3.0,4.0,5.0]]");
    EXPECT_EQ(pane["hfScale"].kind(), JsonView::Kind::null);
    std::size_t i = 0;
    for (const JsonView bar : pane["vixCandles"].items()) {
        const JsonView open = *++bar.items().begin();
        ASSERT_EQ(open.number(), model->vixCandles[i++].open);
    }
    EXPECT_EQ(i, 2000u);
}

TEST_F(StateDocument, RecordsAreObjectsAndOddTextDoesNotBreakIt) {
    openSymbol("NQ");
    event("meta:instruments", R"({"catalog":{"futures":[{"sym":"NQ","sources":["QQQ"],"tick":"nan"}]}})");
    event("meta:contracts", R"({"map":{"GC":"GCZ6"}})");
    event("derived:QQQ", R"({"b":1,"a":2})");
    model->flashToast("title");
    model->logLines.clear();
    model->append("quote \" and \xff and \n");
    const Json document = read({model.get()});
    const JsonView pane = first(document);
    EXPECT_EQ(
        pane["catFutures"].text(),
        R"([{"sym":"NQ","sources":["QQQ"],"defaultSource":"QQQ","pair":null,"tick":null,"tickValue":5.0,"hfScale":1.0}])");
    EXPECT_EQ(pane["contractOverrides"].text(), R"({"GC":"GCZ6"})");
    EXPECT_EQ(pane["derivedFields"].text(), R"(["a","b"])");
    EXPECT_EQ(pane["toast"].text(), R"({"title":"title","detail":null})");
    EXPECT_EQ(pane["logLines"].text(), "[\"quote \\\" and \xEF\xBF\xBD and \\n\"]");
}

}  // namespace
}  // namespace vmr::test
