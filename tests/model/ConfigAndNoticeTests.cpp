// Changed settings and what they set off; the log's cap; notices that end by themselves.
#include "model/PaneFixture.h"
#include "sim/SimEngine.h"

namespace vmr::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class ConfigAndNotices : public PaneFixture {};

TEST_F(ConfigAndNotices, OnlyADifferenceIsSavedAndApplied) {
    SimEngine engine({time, session, UuidSource(5)});
    engine.commission = 3;
    sim = &engine;
    openSymbol("NQ");
    int notices = 0;
    const auto watching = model->config.changed.connect([&] { ++notices; });
    const auto version = model->chartVersion;
    model->setConfig(model->config);
    EXPECT_EQ(notices, 0);
    EXPECT_EQ(model->chartVersion, version);
    EXPECT_EQ(preferences.get("gex-config"), std::nullopt);
    EXPECT_EQ(engine.commission, 3) << "as the account was found";

    GexConfig changed = model->config;
    changed.lineOpacity = 55;
    changed.sessionStart = 930;
    model->setConfig(changed);
    EXPECT_EQ(engine.commission, changed.simCommission);
    EXPECT_EQ(notices, 1);
    EXPECT_EQ(model->chartVersion, version + 1);
    EXPECT_EQ(GexConfig::fromJson(preferences.get("gex-config").value_or("")), changed);
    EXPECT_EQ(model->sessionHHMM(), 930);
    EXPECT_EQ(AppModel(surroundings()).config.get(), changed) << "a later pane reads it";
    model.reset();  // it must not outlive the account
}

TEST_F(ConfigAndNotices, AnotherVolatilityIndexReloadsTheChart) {
    openSymbol("NQ");
    snapshot("indices:I:VIX", flatBars(minute, 1));
    ASSERT_THAT(model->vixCandles, SizeIs(1));
    GexConfig changed = model->config;
    changed.vixMode = "1d";
    const auto version = model->chartVersion;
    model->setConfig(changed);
    EXPECT_THAT(model->vixCandles, IsEmpty());
    EXPECT_EQ(model->chartVersion, version) << "the reload is all";
    EXPECT_EQ(model->subscribedChans[6], "indices:I:VIX1D");
    EXPECT_EQ(model->subscribedChans[7], "indices:I:VIX1D:1m");
    snapshot("indices:I:VIX", flatBars(minute, 1));
    EXPECT_THAT(model->vixCandles, IsEmpty());
    snapshot("indices:I:VIX1D:1m", flatBars(minute, 1));
    EXPECT_THAT(model->vixCandles, SizeIs(1));
}

TEST_F(ConfigAndNotices, TheLogKeepsItsNewestLinesAndPrintsItsOwn) {
    make();
    for (int i = 0; i < 501; ++i) model->append("line " + std::to_string(i));
    EXPECT_THAT(model->logLines, SizeIs(500));
    EXPECT_EQ(model->logLines.front().text, "line 1");
    EXPECT_EQ(model->logLines.back().text, "line 500");
    EXPECT_THAT(printed, IsEmpty());
    time.advance(2.5);
    model->append("→ told");
    EXPECT_THAT(printed, testing::ElementsAre("[app] → told"));
    EXPECT_EQ(model->logLines.back().time, wednesdayAt10 + 2.5);
    EXPECT_NE(model->logLines.back().id, model->logLines.front().id);
}

TEST_F(ConfigAndNotices, ANewerToastStaysForItsWholeTime) {
    make();
    model->flashToast("one", "detail");
    time.advance(2);
    EXPECT_EQ(model->toast.get(), (ToastMsg{"one", "detail"}));
    model->flashToast("two");
    time.advance(1);
    EXPECT_EQ(model->toast.get(), (ToastMsg{"two", std::nullopt})) << "the first one's end passes over it";
    time.advance(1.49);
    EXPECT_TRUE(model->toast.get());
    time.advance(0.02);
    EXPECT_FALSE(model->toast.get());
    model->flashToast("once more");
    time.advance(2.51);
    EXPECT_FALSE(model->toast.get());
}

TEST_F(ConfigAndNotices, TheClosedMarketNoticeLikewiseForFourSeconds) {
    make();
    model->flashMarketClosedNotice();
    time.advance(3);
    model->flashMarketClosedNotice();
    time.advance(3.99);
    EXPECT_TRUE(model->marketClosedNotice);
    time.advance(0.02);
    EXPECT_FALSE(model->marketClosedNotice);
}

}  // namespace
}  // namespace vmr::test
