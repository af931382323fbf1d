// Signing in and out, the first connect and later ones, and the pane's end.
#include "model/TestPane.h"

namespace vmr::test {
namespace {

using PaneSession = PaneFixture;

TEST_F(PaneSession, ARestoredPaneComesBeforeTheStoredSymbol) {
    preferences.set("gex-last-symbol", "YM");
    preferences.set("gex-timeframe", "5");
    const auto expectShown = [this](const std::string& chart) {
        EXPECT_EQ(model->chartChannel.get() + " " + model->levelsChannel.get() + " " + model->config->gexSource + " " +
                      std::to_string(model->timeframe.get()),
                  chart);
    };
    open(PaneState{"ES", 15, "INDEX"});
    expectShown("futures:ESM6 derived:SPX INDEX 15");
    open(PaneState{"nonsense", 0, "ETF"});
    expectShown("futures:NQU6 derived:QQQ ETF 5");
    openSymbol("YM");
    expectShown("futures:YMM6 derived:DIA ETF 5");
    model->applyRestore({"ES", 7, "INDEX"});  // in a running pane it is shown at once
    expectShown("futures:ESM6 derived:SPX INDEX 7");
    preferences.set("gex-timeframe", "5.5");
    openSymbol("SI");
    expectShown("futures:NQU6 derived:QQQ INDEX 1");
}

TEST_F(PaneSession, SignOutKeepsTheChartForTheNextSignIn) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 60, 2));
    model->signOut();
    time.runUntilIdle();
    EXPECT_TRUE(model->logLines.empty());
    EXPECT_EQ(sockets.last().cancelCode, 1001);
    signIn();
    sockets.last().accept();
    sockets.last().frame(R"({"type":"hello"})");
    main.post([this] { model->signOut(); });
    time.runUntilIdle();
    EXPECT_EQ(model->status.get(), "Not connected") << "the greeting came too late";
    EXPECT_FALSE(model->connected);
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), std::nullopt);
    signIn();
    sockets.last().close(4006);
    time.advance(5);
    EXPECT_TRUE(model->connLimited) << "until the next greeting";
    greet();
    EXPECT_FALSE(model->connLimited);
    EXPECT_EQ(takeLog().back(), "→ reconnected — subscriptions re-flushed, snapshots merge in place");
    EXPECT_EQ(model->candles.size(), 2u);
}

TEST_F(PaneSession, ARefusedTokenEndsItsOwnSessionAlone) {
    for (const bool signedInAnew : {false, true}) {
        preferences.set("vmr.auth.refreshToken", "old");
        FirebaseRESTAuth stored(Endpoints{}, http, preferences, time);
        http.responder = nullptr;
        const auto at = surroundings();
        AppModel pane(
            {at.clock, at.main, at.preferences, stored, at.session, at.ids, at.makeRelay, at.print, at.printMessage});
        time.runUntilIdle();
        if (signedInAnew) {
            pane.signOut();
            pane.signIn("new@b.c", "secret", true);
            http.answer(200, grant().body, 1);
            time.runUntilIdle();
        }
        http.answer(400, "{}");
        time.runUntilIdle();
        EXPECT_EQ(pane.isSignedIn, signedInAnew);
        EXPECT_EQ(pane.authError->value_or(""), signedInAnew ? "" : "Session expired — please sign in again.");
        EXPECT_EQ(stored.refreshToken.has_value(), signedInAnew);
    }
}

TEST_F(PaneSession, AShutDownPaneStaysDownAndIsCountedOffOnce) {
    const int before = AppModel::liveCount();
    openSymbol("NQ");
    EXPECT_EQ(AppModel::liveCount(), before + 1);
    snapshot("futures:NQM6", flatBars(minute, 1));
    model->shutdown();
    model->shutdown();
    EXPECT_EQ(AppModel::liveCount(), before);
    time.advance(300);
    EXPECT_EQ(sockets.last().cancelCode, 1001);
    EXPECT_EQ(model->candles.size(), 1u) << "no bars roll any more";
    EXPECT_EQ(sockets.count(), 1u);
}

TEST_F(PaneSession, DelayedWorkEndsSilentlyWithTheModel) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    model->applyTrade(1, minute * 1000.0);
    model->flashToast("t");
    model->flashMarketClosedNotice();
    http.responder = nullptr;
    model->signIn("a@b.c", "secret", true);
    model.reset();
    http.answer(200, grant().body);
    time.advance(100);
    EXPECT_EQ(sockets.count(), 1u);
}

}  // namespace
}  // namespace vmr::test
