// Signing in and out, the first connect and later ones, and the pane's end.
#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using PaneSession = PaneFixture;

TEST_F(PaneSession, ARestoredPaneComesBeforeTheStoredSymbol) {
    preferences.set("gex-last-symbol", "YM");
    preferences.set("gex-timeframe", "5");
    const std::pair<PaneState, std::string> cases[] = {{{"ES", 15, "INDEX"}, "futures:ESM6 derived:SPX INDEX 15"},
                                                       {{"nonsense", 0, "BOTH"}, "futures:NQU6 derived:QQQ BOTH 5"},
                                                       {{"", 30, "ETF"}, "futures:NQU6 derived:QQQ ETF 30"}};
    const auto shown = [this] {
        return model->chartChannel.get() + " " + model->levelsChannel.get() + " " + model->config->gexSource + " " +
               std::to_string(model->timeframe.get());
    };
    for (const auto& [pane, chart] : cases) {
        open(pane);
        EXPECT_EQ(shown(), chart);
    }
    openSymbol("SI");
    EXPECT_EQ(shown(), "futures:NQU6 derived:QQQ ETF 5") << "a stored symbol that is not known";
    EXPECT_EQ(preferences.get("gex-timeframe"), "5");
    model->applyRestore({"ES", 5, "INDEX"});  // in a running pane it is shown at once
    EXPECT_EQ(shown(), "futures:ESM6 derived:SPX INDEX 5");
}

TEST_F(PaneSession, OnlyAUsableStoredTimeframeCounts) {
    for (const auto& [stored, minutes] : {std::pair{"5", 5}, {"0", 1}, {"5.5", 1}, {"99999999999", 1}, {"", 1}}) {
        preferences.set("gex-timeframe", stored);
        EXPECT_EQ(make().timeframe, minutes) << stored;
    }
}

TEST_F(PaneSession, SigningInConnectsOrTellsWhyNot) {
    make();
    std::vector<bool> story;
    const auto done = [&](bool ok) { story.push_back(ok); };
    http.responder = [](const HttpRequest&) {
        return HttpResponse{400, R"({"error":{"message":"INVALID_PASSWORD"}})", std::nullopt};
    };
    model->signIn("a@b.c", "wrong", false, done);
    EXPECT_TRUE(model->signingIn);
    time.runUntilIdle();
    EXPECT_FALSE(model->signingIn || model->isSignedIn);
    EXPECT_EQ(model->authError.get(), "Auth error (400): INVALID_PASSWORD");
    http.responder = [this](const HttpRequest&) { return grant(); };
    model->signIn("a@b.c", "secret", false, done);
    time.runUntilIdle();
    EXPECT_EQ(story, (std::vector{false, true}));
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), std::nullopt) << "not to be remembered";
    EXPECT_EQ(model->authError.get(), std::nullopt);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=id" + std::to_string(tokens));
}

TEST_F(PaneSession, SignOutKeepsTheChartForTheNextSignIn) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 60, 2));
    model->signOut();
    time.runUntilIdle();
    EXPECT_TRUE(model->logLines.empty());
    EXPECT_EQ(sockets.last().cancelCode, 1001);
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), std::nullopt);
    signIn();
    greet();
    EXPECT_EQ(takeLog().back(), "→ reconnected — subscriptions re-flushed, snapshots merge in place");
    EXPECT_EQ(model->candles.size(), 2u);
}

TEST_F(PaneSession, ARefusalIsShownUntilTheNextGreetingAndAGreetingAfterASignOutIsTooLate) {
    open();
    sockets.last().close(4006);
    time.advance(5);
    EXPECT_TRUE(model->connLimited);
    greet();
    EXPECT_FALSE(model->connLimited);
    sockets.last().close(1006);
    time.advance(1);
    sockets.last().accept();
    sockets.last().frame(R"({"type":"hello"})");
    main.post([this] { model->signOut(); });
    time.runUntilIdle();
    EXPECT_FALSE(model->connected);
    EXPECT_EQ(model->status.get(), "Not connected");
}

class StoredSession : public PaneSession {
 protected:
    StoredSession() {
        preferences.set("vmr.auth.refreshToken", "old");
        preferences.set("vmr.auth.email", "late@b.c");
    }
    void TearDown() override { model.reset(); }
    std::optional<FirebaseRESTAuth> stored;
    void makeStored() {
        stored.emplace(Endpoints{}, http, preferences, time);
        const auto at = surroundings();
        model = std::make_unique<AppModel>(PaneSurroundings{
            at.clock, at.main, at.preferences, *stored, at.session, at.ids, at.makeRelay, at.print, {}});
        time.runUntilIdle();
    }
};

TEST_F(StoredSession, EachAttemptAsksForALiveToken) {
    makeStored();
    EXPECT_EQ(model->userEmail.get(), "late@b.c");
    EXPECT_EQ(model->status.get(), "Signed in, connecting…");
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=id1");
    sockets.last().fail("gone");
    time.advance(1);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=id1") << "the same while it lives";
    time.advance(3600);
    sockets.last().fail("gone");
    time.advance(30);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=id2");
    // a fetch that fails while the session runs stays in the log
    http.responder = [](const HttpRequest&) { return HttpResponse{0, "", "no network"}; };
    time.advance(3600);
    sockets.last().fail("gone");
    time.advance(30);
    EXPECT_THAT(takeLog(), testing::Contains("token fetch failed: no network"));
    EXPECT_TRUE(model->isSignedIn);
    EXPECT_EQ(model->authError.get(), std::nullopt);
}

TEST_F(StoredSession, AnExpiredOneEndsAtTheForm) {
    http.responder = nullptr;
    makeStored();
    http.answer(400, "{}");
    time.runUntilIdle();
    EXPECT_FALSE(model->isSignedIn);
    EXPECT_EQ(model->authError.get(), "Session expired — please sign in again.");
    EXPECT_EQ(model->status.get(), "Not connected");
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), std::nullopt);
}

TEST_F(StoredSession, ARefreshThatAnswersIntoALaterSessionEndsNothing) {
    http.responder = nullptr;
    makeStored();
    model->signOut();
    model->signIn("new@b.c", "secret", true);
    http.answer(200, grant().body, 1);
    time.runUntilIdle();
    ASSERT_TRUE(model->isSignedIn);
    http.answer(400, "{}");  // the refresh of the session before
    time.runUntilIdle();
    EXPECT_TRUE(model->isSignedIn);
    EXPECT_EQ(model->authError.get(), std::nullopt);
    EXPECT_EQ(stored->email, "new@b.c");
    EXPECT_EQ(sockets.count(), 1u);
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
