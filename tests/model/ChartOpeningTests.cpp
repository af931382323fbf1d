// Charts without derived channels, without a name and with scales of the catalog; the root of a channel.
#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using ChartOpening = PaneFixture;

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
