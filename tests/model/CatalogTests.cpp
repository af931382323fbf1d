// The server's catalog and contract map: what they change and what they leave.
#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::Pair;

class Catalog : public PaneFixture {
 protected:
    void catalog(const std::string& json) { event("meta:instruments", R"({"catalog":)" + json + "}"); }
};

TEST_F(Catalog, ReplacesTheBuiltInTablesWithItsEntriesAndTheirDefaults) {
    openSymbol("NQ");
    EXPECT_EQ(model->futuresList().size(), 6u);
    EXPECT_THAT(model->stockList(), ElementsAre("AAPL", "NVDA", "MSFT", "GOOGL", "AMZN", "META", "TSLA"));
    catalog(R"({"futures":[
        {"sym":"SI","sources":["SLV","XAG"],"defaultSource":"XAG","pair":"GC","tick":"0.005","tickValue":25,"hfScale":3},
        {"sym":"NQ","sources":["QQQ"]}, {"sym":"ES","pair":7,"tick":"x","sources":"SPY"},
        {"sources":["A"]}, {"sym":5}, 7, null],
        "stocks":[{"sym":"NFLX","hfScale":"0.5"},{"sym":"AMD"},{"sym":""},{"sym":7},"IBM"]})");
    EXPECT_THAT(model->catFutures.get(), ElementsAre(CatalogFut{"SI", {"SLV", "XAG"}, "XAG", "GC", 0.005, 25, 3},
                                                     CatalogFut{"NQ", {"QQQ"}, "QQQ", std::nullopt, 0.25, 5, 1},
                                                     CatalogFut{"ES", {}, "ES", std::nullopt, 0.25, 5, 1}));
    EXPECT_THAT(AppModel::hfScaleOverrides(),
                ElementsAre(Pair("ES", 1), Pair("NFLX", 0.5), Pair("NQ", 1), Pair("SI", 3)));
    EXPECT_THAT(model->futuresList(), ElementsAre(Pair("SI", "XAG"), Pair("NQ", "QQQ"), Pair("ES", "ES")));
    EXPECT_THAT(model->stockList(), ElementsAre("NFLX", "AMD"));
    EXPECT_EQ(model->pairFor("NQ"), std::nullopt) << "the catalog's entry has no pair";
    EXPECT_EQ(model->indexSourceFor("SI"), "XAG");
    EXPECT_EQ(model->indexSourceFor("NQ"), "NDX") << "one source only";

    const auto chartOf = [this](const char* symbol) {
        model->switchSymbol(symbol);
        return model->chartChannel.get() + " " + model->levelsChannel.get();
    };
    EXPECT_EQ(chartOf("SI"), "futures:SI derived:XAG");
    EXPECT_EQ(model->simRoot, "") << "no catalog extends the known roots";
    EXPECT_EQ(chartOf("AAPL"), "futures:SI derived:XAG") << "the catalog's stocks replace the built-in ones";
    EXPECT_EQ(chartOf("NFLX"), "stocks:NFLX derived:NFLX");
    EXPECT_EQ(model->hfScale, 0.5) << "the catalog's";
    for (const std::string none : {"{}", R"({"futures":[],"stocks":[]})", R"({"futures":[{"sym":1}],"stocks":[{}]})"})
        catalog(none);
    EXPECT_EQ(model->catFutures->size(), 3u) << "an empty list leaves the old one in peace";
    EXPECT_EQ(model->catStocks->size(), 2u);
}

TEST_F(Catalog, AMapThatIsNotAllTextIsOnlyLogged) {
    openSymbol("NQ");
    event("meta:contracts", R"({"map":{"GC":"GCZ6"}})");
    takeLog();
    for (const std::string map : {R"({"NQ":"NQU6","ES":5})", R"(["NQU6"])", "null"}) {
        event("meta:contracts", R"({"map":)" + map + "}");
        EXPECT_THAT(takeLog(), ElementsAre("meta:contracts [event] → { map }")) << map;
        EXPECT_EQ(model->contractOverrides->size(), 1u) << map;
    }
    event("meta:contracts", R"({"map":{}})");
    EXPECT_TRUE(model->contractOverrides->empty());
}

}  // namespace
}  // namespace vmr::test
