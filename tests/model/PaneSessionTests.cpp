// Signing in and out, the first connect and later ones, and the pane's end.
#include "support/pane/TestPane.h"

namespace vmr::test {
namespace {

using PaneSessions = PaneFixture;

TEST_F(PaneSessions, ARestoredPaneComesBeforeTheStoredSymbol) {
    preferences.set("gex-last-symbol", "YM");
    preferences.set("gex-timeframe", "5");
    const auto expectShown = [this](const std::string& chart) {
        EXPECT_EQ(model->channels->chartChannel + " " + model->channels->levelsChannel + " " +
                      model->config->gexSource + " " + std::to_string(model->bars.timeframe.get()),
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
    open(PaneState{"ZZTOP", 3, "ETF"});
    for (int i = 0; i < 2; ++i) {  // the first catalog decides
        event("meta:instruments", R"({"catalog":{"stocks":[{"sym":"ZZTOP"}]}})");
        expectShown(i == 0 ? "stocks:ZZTOP derived:ZZTOP ETF 3" : "futures:ESM6 derived:SPY ETF 3");
        model->switchSymbol("ES");
    }
}

TEST_F(PaneSessions, SignOutKeepsTheChartForTheNextSignIn) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 60, 2));
    model->signOut();
    time.runUntilIdle();
    EXPECT_TRUE(model->log.logLines.empty());
    EXPECT_EQ(sockets.last().cancelCode, 1001);
    signIn();
    sockets.last().accept();
    sockets.last().frame(R"({"type":"hello"})");
    main.post([this] { model->signOut(); });
    time.runUntilIdle();
    EXPECT_EQ(model->session.status.get(), "Not connected") << "the greeting came too late";
    EXPECT_FALSE(model->session.connected);
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), std::nullopt);
    signIn();
    sockets.last().close(4006);
    time.advance(5);
    EXPECT_TRUE(model->session.connLimited) << "until the next greeting";
    greet();
    EXPECT_FALSE(model->session.connLimited);
    model->session.flashConnLimited();
    time.advance(4.9);
    EXPECT_TRUE(model->session.connLimited);
    time.advance(0.2);
    EXPECT_FALSE(model->session.connLimited);
    EXPECT_EQ(takeLog().back(), "→ reconnected — subscriptions re-flushed, snapshots merge in place");
    EXPECT_EQ(model->bars.candles.size(), 2u);
}

TEST_F(PaneSessions, ARefusedTokenEndsItsOwnSessionAlone) {
    for (const bool signedInAnew : {false, true}) {
        preferences.set("vmr.auth.refreshToken", "old");
        FirebaseRESTAuth stored(Endpoints{}, http, preferences, time);
        http.responder = nullptr;
        PaneWork work(main);
        PaneSession pane(stored, work, surroundings().makeRelay());
        pane.start({}, [] {});
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

// Two panes have one sign-in.
TEST_F(PaneSessions, ATokenThatTheRelayRefusesIsRefreshedOnceForAllPanes) {
    openSymbol("NQ");
    AppModel other(surroundings());
    other.startStoredSession();
    time.runUntilIdle();
    const auto requests = http.requests.size();
    for (const std::size_t i : {0, 1}) {
        sockets.at(i).refuse(i == 0 ? 401 : 403);
        time.advance(1.1);
        ASSERT_EQ(sockets.count(), i + 3);
        EXPECT_THAT(sockets.at(i).url, testing::EndsWith("token=id1"));
        EXPECT_THAT(sockets.last().url, testing::EndsWith("token=id2"));
        EXPECT_EQ(http.requests.size(), requests + 1);
    }
    // refused in the same instant, they wait for one answer
    for (const std::size_t i : {2, 3}) {
        sockets.at(i).accept();
        sockets.at(i).frame(R"({"type":"hello"})");
        sockets.at(i).close(1011);
    }
    time.advance(1.1);
    http.responder = nullptr;
    for (const std::size_t i : {4, 5}) sockets.at(i).refuse(401);
    time.advance(2.1);
    EXPECT_EQ(http.requests.size(), requests + 2);
    http.answer(200, grant().body);
    time.runUntilIdle();
    ASSERT_EQ(sockets.count(), 8u);
    for (const std::size_t i : {6, 7}) EXPECT_THAT(sockets.at(i).url, testing::EndsWith("token=id3"));
}

TEST_F(PaneSessions, AShutDownPaneStaysDownAndHearsNothing) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    model->applyTrade(6, minute * 1000.0);  // the display is to be rebuilt
    takeLog();
    time.pause();
    const auto before = documentWithoutLog();
    // on their way to the pane when it is shut down
    sockets.last().frame(R"({"type":"event","channel":"futures:NQM6:trades","payload":{"price":7}})");
    sockets.last().frame(R"({"type":"event","channel":"any","payload":1})");
    sockets.last().close(4006);
    main.post([this] { model->shutdown(); });
    time.runUntilIdle();
    model->shutdown();
    time.advance(0.1);
    EXPECT_EQ(documentWithoutLog(), before);
    time.resume();
    time.advance(300);
    EXPECT_THAT(takeLog(), testing::IsEmpty());
    EXPECT_EQ(model->bars.candles.size(), 1u) << "no bars roll any more";
    EXPECT_EQ(sockets.count(), 1u);
}

TEST_F(PaneSessions, DelayedWorkEndsSilentlyWithTheModel) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    model->applyTrade(1, minute * 1000.0);
    model->notices.flashToast("t");
    model->notices.flashMarketClosedNotice();
    http.responder = nullptr;
    model->signIn("a@b.c", "secret", true);
    model.reset();
    http.answer(200, grant().body);
    time.advance(100);
    EXPECT_EQ(sockets.count(), 1u);
}

TEST_F(PaneSessions, ASignInThatWasGivenUpLeavesTheFormToTheNextOne) {
    make();
    http.responder = nullptr;
    std::vector<bool> results;
    const auto start = [&](const char* who) {
        model->signIn(who, "p", true, [&](bool worked) { results.push_back(worked); });
    };
    model->session.cancelSignIn();  // without one under way
    start("first@b.c");
    model->session.cancelSignIn();
    EXPECT_FALSE(model->session.signingIn);
    start("second@b.c");
    http.answer(grant());
    time.runUntilIdle();
    EXPECT_TRUE(model->session.signingIn) << "the late answer is the first one's";
    EXPECT_FALSE(model->session.isSignedIn);
    EXPECT_EQ(model->session.authError.get(), std::nullopt);
    EXPECT_FALSE(auth.refreshToken || preferences.get(FirebaseRESTAuth::refreshTokenKey)) << "nor is it kept";
    http.answer(grant());
    time.runUntilIdle();
    EXPECT_TRUE(model->session.isSignedIn && !model->session.signingIn);
    EXPECT_EQ(auth.email, "second@b.c");
    EXPECT_EQ(results, (std::vector{false, true}));
}

}  // namespace
}  // namespace vmr::test
