// Signing in and out, the first connect and later ones, and the pane's end.
#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PaneSession : public PaneFixture {
 protected:
    std::vector<std::string> statuses;
    Connection watching;
    void watch() {
        watching = model->status.changed.connect([this] { statuses.push_back(model->status); });
    }
};

TEST_F(PaneSession, TheFirstConnectPicksItsChart) {
    const std::string fallback = "futures:NQU6 derived:QQQ";
    const struct {
        std::optional<const char*> stored;
        std::string chart;
    } cases[] = {{std::nullopt, fallback},
                 {"", fallback},
                 {"SI", fallback},
                 {"NQ", "futures:NQM6 derived:QQQ"},
                 {"CL", "futures:CLN6 derived:USO"},
                 {"TSLA", "stocks:TSLA derived:TSLA"}};
    for (const auto& c : cases) {
        preferences.remove("gex-last-symbol");
        if (c.stored) preferences.set("gex-last-symbol", *c.stored);
        open();
        EXPECT_EQ(model->chartChannel.get() + " " + model->levelsChannel.get(), c.chart) << c.stored.value_or("none");
        EXPECT_EQ(preferences.get("gex-last-symbol"), c.stored ? std::optional<std::string>(*c.stored) : std::nullopt);
    }
}

TEST_F(PaneSession, ARestoredPaneComesBeforeTheStoredSymbol) {
    const struct {
        PaneState pane;
        std::string chart;
        std::string source;
        int timeframe;
    } cases[] = {{{"ES", 15, "INDEX"}, "futures:ESM6 derived:SPX", "INDEX", 15},
                 {{"GC", 0, "INDEX"}, "futures:GCQ6 derived:GLD", "INDEX", 5},
                 {{"AAPL", -3, ""}, "stocks:AAPL derived:AAPL", "ETF", 5},
                 {{"nonsense", 1, "BOTH"}, "futures:NQU6 derived:QQQ", "BOTH", 1},
                 {{"", 30, ""}, "futures:NQU6 derived:QQQ", "ETF", 30}};
    for (const auto& c : cases) {
        preferences = MemoryPreferences();
        preferences.set("gex-last-symbol", "YM");
        preferences.set("gex-timeframe", "5");
        open(c.pane);
        EXPECT_EQ(model->chartChannel.get() + " " + model->levelsChannel.get(), c.chart);
        EXPECT_EQ(model->config->gexSource, c.source);
        EXPECT_EQ(model->timeframe, c.timeframe);
        EXPECT_EQ(preferences.get("gex-timeframe"), "5");
        EXPECT_EQ(preferences.get("gex-config").has_value(), c.source != "ETF");
    }
}

TEST_F(PaneSession, AChartThatIsSetAlreadyIsOpenedAsItIs) {
    preferences.set("gex-last-symbol", "YM");
    make(PaneState{"ES", 15, ""});
    model->chartChannel = "stocks:NVDA";
    model->levelsChannel = "derived:NVDA";
    signIn();
    greet();
    EXPECT_EQ(model->subscribedChans.size(), 12u);
    EXPECT_EQ(model->subscribedChans.front(), "stocks:NVDA");
}

TEST_F(PaneSession, OnlyAUsableStoredTimeframeCounts) {
    for (const auto& [stored, minutes] :
         {std::pair{"5", 5}, {"0", 1}, {"-5", 1}, {"5.5", 1}, {" 5", 1}, {"+7", 7}, {"99999999999", 1}, {"", 1}}) {
        preferences.set("gex-timeframe", stored);
        EXPECT_EQ(make().timeframe, minutes) << stored;
    }
}

TEST_F(PaneSession, SigningInConnectsAndTellsItsStates) {
    make();
    watch();
    std::vector<std::string> story;
    const auto signing =
        model->signingIn.changed.connect([&] { story.push_back(model->signingIn ? "starts" : "ends"); });
    const auto done = [&](bool ok) { story.push_back(ok ? "in" : "refused"); };
    http.responder = [](const HttpRequest&) {
        return HttpResponse{400, R"({"error":{"message":"INVALID_PASSWORD"}})", std::nullopt};
    };
    model->signIn("a@b.c", "wrong", false, done);
    EXPECT_TRUE(model->signingIn);
    time.runUntilIdle();
    EXPECT_THAT(std::exchange(story, {}), ElementsAre("starts", "ends", "refused"));
    EXPECT_EQ(model->authError.get(), "Auth error (400): INVALID_PASSWORD");
    EXPECT_FALSE(model->isSignedIn || model->signingIn || model->connected);

    http.responder = [this](const HttpRequest&) { return grant(); };
    model->signIn("a@b.c", "secret", false, done);
    time.runUntilIdle();
    EXPECT_THAT(story, ElementsAre("starts", "ends", "in"));
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), std::nullopt) << "not to be remembered";
    EXPECT_EQ(model->authError.get(), std::nullopt);
    EXPECT_EQ(model->userEmail.get(), "a@b.c");
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=id" + std::to_string(tokens));
    greet();
    sockets.last().close(1006);
    time.runUntilIdle();
    time.advance(1);
    greet();
    model->signOut();
    EXPECT_THAT(statuses, ElementsAre("Signed in, connecting…", "Connected", "Disconnected (reconnecting…)",
                                      "Connected", "Not connected"));
}

TEST_F(PaneSession, AReconnectKeepsBarsAndMergesWhatComes) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 120, 3));
    event("futures:NQM6:trades", R"({"price":105,"ts":)" + std::to_string(minute) + "000}");
    ASSERT_EQ(model->candles.size(), 3u);
    const auto bars = model->candles;
    const auto channels = model->subscribedChans;
    takeLog();
    sockets.last().close(1006);
    time.advance(0.5);
    EXPECT_FALSE(model->connected);
    EXPECT_EQ(model->candles, bars);
    time.advance(0.5);
    greet();
    EXPECT_TRUE(model->connected);
    EXPECT_EQ(model->subscribedChans, channels);
    EXPECT_THAT(takeLog(), testing::Contains("→ reconnected — subscriptions re-flushed, snapshots merge in place"));
    EXPECT_EQ(printed.back(), "[app] → reconnected — subscriptions re-flushed, snapshots merge in place");
    EXPECT_EQ(sockets.last().sent.size(), 1u) << "the whole set in one message";
    snapshot("futures:NQM6", flatBars(minute, 1, 104));
    EXPECT_EQ(model->candles.size(), 3u);
    EXPECT_EQ(model->candles.back(), (Candle{minute, 104, 104, 104, 104, 1}));
}

TEST_F(PaneSession, SignOutKeepsTheChartForTheNextSignIn) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute - 60, 2));
    model->signOut();
    time.runUntilIdle();
    EXPECT_THAT(model->logLines, IsEmpty());
    EXPECT_EQ(sockets.last().cancelCode, 1001);
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), std::nullopt);
    EXPECT_EQ(model->chartChannel.get(), "futures:NQM6");
    EXPECT_EQ(model->candles.size(), 2u);
    EXPECT_EQ(model->status.get(), "Not connected");
    signIn();
    greet();
    EXPECT_THAT(takeLog(), ElementsAre("connecting…", "socket opened, awaiting hello…", "hello: a@b.c",
                                       "→ reconnected — subscriptions re-flushed, snapshots merge in place"));
    EXPECT_EQ(model->candles.size(), 2u);
}

TEST_F(PaneSession, WhatTheRelayToldBeforeItHeardOfASignOutIsTooLate) {
    open();
    sockets.last().close(1006);
    time.advance(1);
    sockets.last().accept();
    sockets.last().frame(R"({"type":"hello"})");
    main.post([this] { model->signOut(); });
    time.runUntilIdle();
    EXPECT_FALSE(model->connected);
    EXPECT_EQ(model->status.get(), "Not connected");
    signIn();
    greet();
    sockets.last().close(1006);
    main.post([this] { model->signOut(); });
    time.runUntilIdle();
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
    AppModel& makeStored() {
        stored.emplace(Endpoints{}, http, preferences, time);
        auto around = surroundings();
        model = std::make_unique<AppModel>(PaneSurroundings{around.clock,
                                                            around.main,
                                                            around.preferences,
                                                            *stored,
                                                            around.session,
                                                            around.ids,
                                                            around.makeRelay,
                                                            around.print,
                                                            {}});
        watch();
        return *model;
    }
};

TEST_F(StoredSession, RefreshesThenConnects) {
    makeStored();
    EXPECT_TRUE(model->isSignedIn);
    EXPECT_EQ(model->userEmail.get(), "late@b.c");
    EXPECT_EQ(model->status.get(), "Signed in, connecting…");
    EXPECT_EQ(sockets.count(), 0u);
    time.runUntilIdle();
    EXPECT_EQ(http.requests.size(), 1u);
    ASSERT_EQ(sockets.count(), 1u);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=id1");
    // each attempt asks anew: the same token while it lives, a fresh one after an hour
    sockets.last().fail("gone");
    time.advance(1);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=id1");
    time.advance(3600);
    sockets.last().fail("gone");
    time.advance(30);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=id2");
}

TEST_F(StoredSession, AnExpiredOneEndsAtTheForm) {
    http.responder = nullptr;
    makeStored();
    time.runUntilIdle();
    http.answer(400, "{}");
    time.runUntilIdle();
    EXPECT_FALSE(model->isSignedIn);
    EXPECT_EQ(model->authError.get(), "Session expired — please sign in again.");
    EXPECT_EQ(model->status.get(), "Not connected");
    EXPECT_EQ(preferences.get("vmr.auth.refreshToken"), std::nullopt);
    EXPECT_EQ(sockets.count(), 0u);
}

TEST_F(StoredSession, ARefreshThatAnswersIntoALaterSessionEndsNothing) {
    http.responder = nullptr;
    makeStored();
    time.runUntilIdle();
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

TEST_F(StoredSession, AFailedTokenWhileRunningStaysInTheLog) {
    makeStored();
    time.runUntilIdle();
    greet();
    time.advance(3000);
    http.responder = [](const HttpRequest&) { return HttpResponse{0, "", "no network"}; };
    time.advance(600);
    takeLog();
    sockets.last().close(1006);
    time.advance(1);
    EXPECT_THAT(takeLog(), testing::Contains("token fetch failed: no network"));
    EXPECT_TRUE(model->isSignedIn);
    EXPECT_EQ(model->authError.get(), std::nullopt);
}

TEST_F(PaneSession, TooManyConnectionsAreShownUntilTheNextGreeting) {
    open();
    sockets.last().close(4006);
    time.runUntilIdle();
    EXPECT_TRUE(model->connLimited);
    EXPECT_FALSE(model->connected);
    time.advance(5);
    EXPECT_TRUE(model->connLimited);
    greet();
    EXPECT_FALSE(model->connLimited);
    EXPECT_TRUE(model->connected);
}

TEST_F(PaneSession, LiveCountFallsOnceAndAShutDownPaneStaysDown) {
    const int before = AppModel::liveCount();
    {
        AppModel second(surroundings());
        make();
        EXPECT_EQ(AppModel::liveCount(), before + 2);
        second.shutdown();
        second.shutdown();
        EXPECT_EQ(AppModel::liveCount(), before + 1);
    }
    EXPECT_EQ(AppModel::liveCount(), before + 1);
    model->signIn("a@b.c", "secret", true);
    model->shutdown();  // before the answer comes
    time.advance(100);
    EXPECT_EQ(sockets.count(), 0u);
    model.reset();
    EXPECT_EQ(AppModel::liveCount(), before);

    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    const auto& socket = sockets.last();
    model->shutdown();
    time.advance(300);
    EXPECT_EQ(socket.cancelCode, 1001);
    EXPECT_EQ(model->candles.size(), 1u) << "no bars roll any more";
    EXPECT_EQ(sockets.count(), 1u);
}

TEST_F(PaneSession, DelayedWorkEndsSilentlyWithTheModel) {
    openSymbol("NQ");
    snapshot("futures:NQM6", flatBars(minute, 1));
    event("futures:NQM6:trades", R"({"price":1})");
    model->flashToast("t");
    model->flashMarketClosedNotice();
    http.responder = nullptr;
    model->signIn("a@b.c", "secret", true);
    sockets.last().frame(R"({"type":"event","channel":"x","payload":1})");
    model.reset();
    http.answer(200, grant().body);
    time.advance(100);
    EXPECT_EQ(sockets.count(), 1u);
}

}  // namespace
}  // namespace vmr::test
