// Opening, losing and reopening the connection, heartbeats, and what comes too late.
#include "RelayFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RelayConnection : public RelayFixture {};

TEST_F(RelayConnection, GreetingTellsItsStoryInOrder) {
    client->connect(giving({"a b/ü%", std::nullopt}));
    time.runUntilIdle();
    ASSERT_EQ(sockets.count(), 1u);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=a%20b/%C3%BC%25");
    greet();
    EXPECT_THAT(takeStory(),
                ElementsAre("connecting…", "socket opened, awaiting hello…", "hello: a@b.c", "<connected>"));
    EXPECT_THAT(sockets.last().sent, IsEmpty()) << "nothing is wanted yet";
}

TEST_F(RelayConnection, EveryFailureBeforeTheSocketRetriesWithAFreshToken) {
    const std::pair<const char*, TokenResult> cases[] = {{"wss://r.test/", {"", "no network"}},
                                                         {"wss://r.test/", {"", std::nullopt}},
                                                         {"ws://elsewhere.test/", {"t", std::nullopt}}};
    for (const auto& [url, token] : cases) {
        make(url);
        client->connect(giving(token));
        const auto told = takeStory();
        EXPECT_EQ(told.at(1), token.error ? "token fetch failed: no network" : told.back());
        EXPECT_EQ(told.back(), "reconnecting in 1s (attempt 1)") << url;
        tokensAsked = 0;
        time.advance(1.001);
        EXPECT_EQ(tokensAsked, 1);
        takeStory();
    }
    EXPECT_EQ(sockets.count(), 0u);
}

TEST_F(RelayConnection, BackOffDoublesToThirtySecondsAndStartsAnewAfterHello) {
    connect();
    int attempt = 0;
    for (const int delay : {1, 2, 4, 8, 16, 30, 30}) {
        story.clear();
        const auto before = sockets.count();
        sockets.last().fail("broken");
        EXPECT_THAT(takeStory(), ElementsAre("receive error: broken", "<disconnected>",
                                             "reconnecting in " + std::to_string(delay) + "s (attempt " +
                                                 std::to_string(++attempt) + ")"));
        time.advance(delay - 0.001);
        EXPECT_EQ(sockets.count(), before);
        time.advance(0.002);
        ASSERT_EQ(sockets.count(), before + 1);
    }
    greet();
    sockets.last().close(1011);
    EXPECT_EQ(takeStory().back(), "reconnecting in 1s (attempt 1)");
}

TEST_F(RelayConnection, TooManyConnectionsIsToldAndWaitsFiveSeconds) {
    goLive().close(4006);
    EXPECT_THAT(takeStory(), ElementsAre("socket closed (code 4006)", "<disconnected>", "<limit>",
                                         "reconnecting in 5s (attempt 1)"));
    time.advance(4.999);
    EXPECT_EQ(sockets.count(), 1u);
    time.advance(0.002);
    ASSERT_EQ(sockets.count(), 2u);
    sockets.last().fail("x");  // the forced delay counted as an attempt
    EXPECT_EQ(takeStory().back(), "reconnecting in 2s (attempt 2)");
}

TEST_F(RelayConnection, SilenceOfMoreThanSixtySecondsIsALoss) {
    auto& socket = goLive();
    time.advance(60);  // the firing at exactly 60 still pings
    EXPECT_EQ(socket.takeSent().size(), 6u);
    time.advance(9.99);
    EXPECT_FALSE(socket.gone());
    time.advance(0.01);
    EXPECT_THAT(takeStory(),
                ElementsAre("heartbeat timeout, reconnecting", "<disconnected>", "reconnecting in 1s (attempt 1)"));
    EXPECT_TRUE(socket.gone());
}

TEST_F(RelayConnection, PongsKeepTheSocketAndPingsCarryTheMarketClock) {
    time = TestTime(1781100000.9996, 10.0);  // market time runs ten times as fast; heartbeats do not
    auto& socket = goLive();
    time.advance(10);
    EXPECT_THAT(socket.takeSent(), ElementsAre(R"({"ts":1781100100999,"type":"ping"})"));
    for (int i = 0; i < 30; ++i) {
        frame(R"({"type":"pong"})");
        time.advance(10);
    }
    EXPECT_FALSE(socket.gone());
    EXPECT_EQ(socket.sent.size(), 30u);
}

TEST_F(RelayConnection, OnlyAConnectThatHangsIsLeftAndNotAServerThatNeverGreets) {
    connect();
    story.clear();
    time.advance(60.1);
    EXPECT_THAT(takeStory(),
                ElementsAre("receive error: connect timed out", "<disconnected>", "reconnecting in 1s (attempt 1)"));
    EXPECT_TRUE(sockets.at(0).gone());
    time.advance(1);
    sockets.last().accept();
    time.advance(7200);
    EXPECT_FALSE(sockets.last().gone());
}

TEST_F(RelayConnection, LateEventsOfAReplacedOrDroppedSocketChangeNothing) {
    auto& old = goLive();
    old.lateEvents = true;
    const auto allLate = [&old] {
        old.accept();
        old.frame(R"({"type":"hello"})");
        old.frame(R"({"type":"event","channel":"c"})");
        old.failSend("x");
        old.close(4006);
        old.fail("x");
    };
    connect();
    EXPECT_TRUE(old.gone());
    takeStory();
    allLate();
    EXPECT_THAT(takeStory(), IsEmpty());
    EXPECT_FALSE(sockets.last().gone());
    client->disconnect();
    allLate();
    time.advance(100);
    EXPECT_EQ(sockets.last().cancelCode, 1001);
    EXPECT_THAT(takeStory(), IsEmpty());
    EXPECT_EQ(sockets.count(), 2u);
}

TEST_F(RelayConnection, ATokenThatComesTooLateOpensNothing) {
    client->connect(slow());
    time.runUntilIdle();
    client->disconnect();
    time.runUntilIdle();
    answers.at(0)({"late", std::nullopt});
    time.runUntilIdle();
    EXPECT_EQ(sockets.count(), 0u);

    client->connect(slow());
    client->connect(slow());
    time.runUntilIdle();
    answers.at(2)({"newer", std::nullopt});
    answers.at(1)({"older", std::nullopt});
    answers.at(2)({"twice", std::nullopt});
    time.runUntilIdle();
    ASSERT_EQ(sockets.count(), 1u);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=newer");
}

TEST_F(RelayConnection, AReconnectThatIsDueAddsNoneAndLeavesAStandingConnectionAlone) {
    goLive().fail("first");
    time.advance(0.5);
    connect();  // by the owner, before the second is over
    story.clear();
    sockets.last().fail("second");
    EXPECT_THAT(takeStory(), ElementsAre("receive error: second", "<disconnected>"));
    time.advance(0.6);
    EXPECT_EQ(sockets.count(), 3u);
    sockets.last().fail("third");
    connect();
    greet();
    time.advance(5);
    EXPECT_FALSE(sockets.last().gone());
    sockets.last().fail("fourth");
    client->disconnect();
    time.advance(60);
    EXPECT_EQ(sockets.count(), 4u) << "disconnected while it waited";
}

TEST_F(RelayConnection, NoCallbackComesAfterTheOwnerHasDestroyedTheClient) {
    auto made = callbacks();
    made.onChannelMessage = [this, held = std::make_shared<int>(7)](const ChannelMessage&, const std::string&) {
        client.reset();
        story.push_back("ended with " + std::to_string(*held));
    };
    client->setCallbacks(std::move(made));
    auto& socket = goLive();
    socket.frame(R"({"type":"batch","channel":"c","events":[1,2,3]})");
    socket.close(4006);
    time.advance(100);
    EXPECT_THAT(takeStory(), ElementsAre("ended with 7"));
    EXPECT_TRUE(socket.gone());
    EXPECT_EQ(sockets.count(), 1u);
}

}  // namespace
}  // namespace vmr::test
