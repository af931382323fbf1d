// Charts without derived channels or without a name; the root of a channel.
#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

using ChartOpening = PaneFixture;

TEST_F(ChartOpening, WithoutLevelsThereAreNoDerivedChannelsAndWithoutANameNothingChanges) {
    openSymbol("RTY");
    const double scale = model->hfScale;
    model->openChart(" \tfutures:SIN6\r\n", " \n");
    EXPECT_THAT(model->subscribedChans,
                ElementsAre("futures:SIN6", "futures:SIN6:1m", "futures:SIN6:trades", "meta:contracts",
                            "meta:instruments", "indices:I:VIX", "indices:I:VIX:1m"));
    EXPECT_EQ(model->hfScale, scale);
    EXPECT_EQ(model->oscPrimaryLabel.get() + model->simRoot + model->oscChannel + model->currentSymbol(), "NQ");
    EXPECT_FALSE(model->oscSingle);
    model->openChart("futures:ESM6", "");
    EXPECT_THAT(takeLog(), ElementsAre("→ chart: futures:SIN6", "→ chart: futures:ESM6 + derived:srlevels:ES"));
    time.runUntilIdle();
    const auto before = documentWithoutLog();
    sockets.last().takeSent();
    for (const char* blank : {"", " ", "\t\r\n \v\f"}) model->openChart(blank, "derived:SPY");
    time.runUntilIdle();
    EXPECT_EQ(documentWithoutLog(), before);
    EXPECT_TRUE(sockets.last().sent.empty());
}

TEST(FuturesRoot, CutsMonthAndYear) {
    for (const char* channel : {"futures:NQM6", "futures:NQM26", "futures:NQM2026", "futures:NQ"})
        EXPECT_EQ(futuresRoot(channel), "NQ") << channel;
    EXPECT_EQ(futuresRoot("futures:RTYZ25"), "RTY");
    for (const char* channel : {"futures:NQM20261", "futures:NQA6", "futures:SIN6", "futures:nqm6",
                                "futures:", "futures:M6", "futures:NQM6:1m", "stocks:NQ", "NQM6", "", "futures:NQM"})
        EXPECT_EQ(futuresRoot(channel), "") << channel;
}

}  // namespace
}  // namespace vmr::test
