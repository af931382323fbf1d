// The server's catalog and contract map: what they change and what they leave.
#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class Catalog : public PaneFixture {
 protected:
    void catalog(const std::string& json) { event("meta:instruments", R"({"catalog":)" + json + "}"); }
    void contracts(const std::string& map) { event("meta:contracts", R"({"map":)" + map + "}"); }
};

TEST_F(Catalog, BuiltInTablesServeUntilACatalogComes) {
    openSymbol("NQ");
    EXPECT_THAT(model->futuresList(), ElementsAre(Pair("NQ", "QQQ"), Pair("ES", "SPY"), Pair("RTY", "IWM"),
                                                  Pair("YM", "DIA"), Pair("GC", "GLD"), Pair("CL", "USO")));
    EXPECT_THAT(model->stockList(), ElementsAre("AAPL", "NVDA", "MSFT", "GOOGL", "AMZN", "META", "TSLA"));
    EXPECT_EQ(model->effectiveContract("SI"), std::nullopt);
    EXPECT_EQ(model->defaultSourceFor("SI"), std::nullopt);
}

TEST_F(Catalog, ReadsEntriesWithTheirDefaults) {
    openSymbol("NQ");
    takeLog();
    catalog(R"({"futures":[
        {"sym":"SI","sources":["SLV","XAG"],"defaultSource":"XAG","pair":"GC","tick":"0.005","tickValue":25,"hfScale":3},
        {"sym":"NQ","sources":["QQQ"]}, {"sym":"ES","pair":7,"tick":"x","sources":"SPY"},
        {"sources":["A"]}, {"sym":5}, 7, null],
        "stocks":[{"sym":"NFLX","hfScale":"0.5"},{"sym":"AMD"},{"sym":""},{"sym":7},"IBM"]})");
    EXPECT_THAT(model->catFutures.get(), ElementsAre(CatalogFut{"SI", {"SLV", "XAG"}, "XAG", "GC", 0.005, 25, 3},
                                                     CatalogFut{"NQ", {"QQQ"}, "QQQ", std::nullopt, 0.25, 5, 1},
                                                     CatalogFut{"ES", {}, "ES", std::nullopt, 0.25, 5, 1}));
    EXPECT_THAT(model->catStocks.get(), ElementsAre("NFLX", "AMD"));
    EXPECT_THAT(AppModel::hfScaleOverrides(),
                ElementsAre(Pair("ES", 1), Pair("NFLX", 0.5), Pair("NQ", 1), Pair("SI", 3)));
    EXPECT_THAT(takeLog(), IsEmpty());

    EXPECT_THAT(model->futuresList(), ElementsAre(Pair("SI", "XAG"), Pair("NQ", "QQQ"), Pair("ES", "ES")));
    EXPECT_THAT(model->stockList(), ElementsAre("NFLX", "AMD"));
    EXPECT_EQ(model->effectiveContract("SI"), "SI");
    EXPECT_EQ(model->pairFor("NQ"), std::nullopt) << "the catalog's entry has no pair";
    EXPECT_EQ(model->pairFor("SI"), "GC");
    EXPECT_EQ(model->indexSourceFor("SI"), "XAG");
    EXPECT_EQ(model->indexSourceFor("NQ"), "NDX") << "one source only";
    EXPECT_EQ(model->defaultSourceFor("ES"), "ES");

    model->switchSymbol("SI");
    EXPECT_EQ(model->chartChannel.get() + " " + model->levelsChannel.get(), "futures:SI derived:XAG");
    EXPECT_EQ(model->simRoot, "") << "no catalog extends the known roots";
    model->switchSymbol("AAPL");
    EXPECT_EQ(model->chartChannel.get(), "futures:SI") << "the catalog's stocks replace the built-in ones";
    model->switchSymbol("NFLX");
    EXPECT_EQ(model->chartChannel.get(), "stocks:NFLX");
}

TEST_F(Catalog, AnEmptyOrUnchangedListLeavesTheOldOneInPeace) {
    openSymbol("NQ");
    int notices = 0;
    const auto a = model->catFutures.changed.connect([&] { ++notices; });
    const auto b = model->catStocks.changed.connect([&] { ++notices; });
    const std::string full = R"({"futures":[{"sym":"NQ"}],"stocks":[{"sym":"NFLX"}]})";
    catalog(full);
    EXPECT_EQ(notices, 2);
    for (const std::string same : {full.c_str(), "{}", R"({"futures":[],"stocks":[]})", R"({"futures":{},"stocks":7})",
                                   R"({"futures":[{"sym":1}],"stocks":[{}]})"})
        catalog(same);
    EXPECT_EQ(notices, 2);
    EXPECT_EQ(model->catFutures->size(), 1u);
    EXPECT_THAT(model->catStocks.get(), ElementsAre("NFLX"));
}

TEST_F(Catalog, AMapThatIsNotAllTextIsOnlyLogged) {
    openSymbol("NQ");
    contracts(R"({"GC":"GCZ6"})");
    takeLog();
    for (const std::string map : {R"({"NQ":"NQU6","ES":5})", R"(["NQU6"])", "null", R"({"NQ":null})"}) {
        contracts(map);
        EXPECT_THAT(takeLog(), ElementsAre("meta:contracts [event] → { map }")) << map;
        EXPECT_EQ(model->contractOverrides->size(), 1u) << map;
    }
    contracts("{}");
    EXPECT_THAT(model->contractOverrides.get(), IsEmpty());
    EXPECT_THAT(takeLog(), IsEmpty());
}

}  // namespace
}  // namespace vmr::test
