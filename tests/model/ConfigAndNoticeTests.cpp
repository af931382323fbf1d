// Changed settings and what they set off; the log's cap; notices that end by themselves.
#include "model/PaneFixture.h"
#include "sim/SimEngine.h"

namespace vmr::test {
namespace {

using ConfigAndNotices = PaneFixture;

TEST_F(ConfigAndNotices, OnlyADifferenceIsSavedAndApplied) {
    SimEngine engine({time, session, UuidSource(5)});
    engine.commission = 3;
    sim = &engine;
    openSymbol("NQ");
    const auto version = model->chartVersion;
    model->setConfig(model->config);
    EXPECT_EQ(model->chartVersion, version);
    EXPECT_EQ(preferences.get("gex-config"), std::nullopt);
    EXPECT_EQ(engine.commission, 3) << "as the account was found";

    GexConfig changed = model->config;
    changed.lineOpacity = 55;
    changed.sessionStart = 930;
    model->setConfig(changed);
    EXPECT_EQ(engine.commission, changed.simCommission);
    EXPECT_EQ(model->chartVersion, version + 1);
    EXPECT_EQ(model->sessionHHMM(), 930);
    EXPECT_EQ(AppModel(surroundings()).config.get(), changed) << "a later pane reads it";
    model.reset();  // it must not outlive the account
}

TEST_F(ConfigAndNotices, TheLogKeepsItsNewestLinesAndPrintsItsOwn) {
    make();
    for (int i = 0; i < 501; ++i) model->append("line " + std::to_string(i));
    EXPECT_EQ(model->logLines.size(), 500u);
    EXPECT_EQ(model->logLines.front().text, "line 1");
    time.advance(2.5);
    model->append("→ told");
    EXPECT_THAT(printed, testing::ElementsAre("[app] → told"));
    EXPECT_EQ(model->logLines.back().time, wednesdayAt10 + 2.5);
}

TEST_F(ConfigAndNotices, ANewerNoticeStaysForItsWholeTime) {
    make();
    model->flashToast("one", "detail");
    model->flashMarketClosedNotice();
    time.advance(2);
    EXPECT_EQ(model->toast.get(), (ToastMsg{"one", "detail"}));
    model->flashToast("two");
    time.advance(1);
    model->flashMarketClosedNotice();
    EXPECT_EQ(model->toast.get(), (ToastMsg{"two", std::nullopt})) << "the first one's end passes over it";
    time.advance(1.49);
    EXPECT_TRUE(model->toast.get());
    time.advance(0.02);
    EXPECT_FALSE(model->toast.get());
    time.advance(2.48);
    EXPECT_TRUE(model->marketClosedNotice);
    time.advance(0.02);
    EXPECT_FALSE(model->marketClosedNotice);
}

}  // namespace
}  // namespace vmr::test
