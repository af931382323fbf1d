// Opening, losing and reopening the connection, heartbeats, and what comes too late.
#include "RelayFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RelayConnection : public RelayFixture {};

TEST_F(RelayConnection, GreetingTellsItsStoryInOrderOnBothLogs) {
    client->connect(giving({"a b/ü%", std::nullopt}));
    time.runUntilIdle();
    ASSERT_EQ(sockets.count(), 1u);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=a%20b/%C3%BC%25");
    EXPECT_EQ(sockets.last().maxMessageBytes, 67108864u);
    greet();
    EXPECT_THAT(takeStory(),
                ElementsAre("connecting…", "socket opened, awaiting hello…", "hello: a@b.c", "<connected>"));
    EXPECT_THAT(printed(), ElementsAre("[relay] connecting…\n", "[relay] socket opened, awaiting hello…\n",
                                       "[relay] hello: a@b.c\n"));
}

TEST_F(RelayConnection, EveryFailureBeforeTheSocketRetriesWithBackOff) {
    struct Case {
        const char* url;
        TokenResult token;
        std::vector<std::string> story;
    };
    const Case cases[] = {
        {"wss://r.test/", {"", "no network"}, {"connecting…", "token fetch failed: no network"}},
        {"wss://r.test/", {"", std::nullopt}, {"connecting…"}},
        {"not an address", {"t", std::nullopt}, {"connecting…"}},
        {"ws://elsewhere.test/", {"t", std::nullopt}, {"connecting…"}},
    };
    for (const auto& [url, token, told] : cases) {
        SCOPED_TRACE(url);
        make(url);
        client->connect(giving(token));
        auto expected = told;
        expected.push_back("reconnecting in 1s (attempt 1)");
        EXPECT_EQ(takeStory(), expected);
        tokensAsked = 0;
        time.advance(0.999);
        EXPECT_EQ(tokensAsked, 0);
        time.advance(0.002);
        EXPECT_EQ(tokensAsked, 1);
        client->disconnect();
        takeStory();
    }
    EXPECT_EQ(sockets.count(), 0u);
}

TEST_F(RelayConnection, BackOffDoublesToThirtySecondsAndStartsAnewAfterHello) {
    connect();
    int attempt = 0;
    for (const int delay : {1, 2, 4, 8, 16, 30, 30, 30}) {
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
    sockets.last().close(1000);
    takeStory();
    EXPECT_EQ(printed().back(), "[relay] reconnecting in 1s (attempt 1)\n");
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
    EXPECT_THAT(takeStory(), IsEmpty());
    time.advance(9.99);
    EXPECT_FALSE(socket.gone());
    time.advance(0.01);
    EXPECT_THAT(takeStory(),
                ElementsAre("heartbeat timeout, reconnecting", "<disconnected>", "reconnecting in 1s (attempt 1)"));
    EXPECT_EQ(socket.cancelCode, 1006);
    time.advance(0.5);
    EXPECT_THAT(socket.sent, IsEmpty());
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

TEST_F(RelayConnection, AServerThatNeverGreetsIsNotLeft) {
    connect();
    sockets.last().accept();
    time.advance(7200);
    EXPECT_FALSE(sockets.last().gone());
    EXPECT_THAT(sockets.last().sent, IsEmpty());
    sockets.last().close(1012);
    EXPECT_EQ(takeStory().back(), "reconnecting in 1s (attempt 1)");
}

TEST_F(RelayConnection, AConnectThatHangsIsAReceiveError) {
    connect();
    story.clear();
    time.advance(59.9);
    EXPECT_FALSE(sockets.last().gone());
    time.advance(0.2);
    EXPECT_THAT(takeStory(),
                ElementsAre("receive error: connect timed out", "<disconnected>", "reconnecting in 1s (attempt 1)"));
    EXPECT_TRUE(sockets.at(0).gone());
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
    time.runUntilIdle();
    EXPECT_EQ(sockets.last().cancelCode, 1001);
    sockets.last().lateEvents = true;
    sockets.last().close(1001);
    allLate();
    time.advance(100);
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
    answers.at(1)({"", "older fails too"});
    answers.at(2)({"twice", std::nullopt});
    time.runUntilIdle();
    ASSERT_EQ(sockets.count(), 1u);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=newer");
    EXPECT_FALSE(sockets.last().gone());
    client.reset();
    answers.at(2)({"after the end", std::nullopt});
    time.runUntilIdle();
    EXPECT_EQ(sockets.count(), 1u);
}

TEST_F(RelayConnection, ASecondLossWhileAReconnectIsDueAddsNone) {
    goLive().fail("first");
    time.advance(0.5);
    connect();  // by the owner, before the second is over
    ASSERT_EQ(sockets.count(), 2u);
    story.clear();
    sockets.last().fail("second");
    EXPECT_THAT(takeStory(), ElementsAre("receive error: second", "<disconnected>"));
    time.advance(0.6);
    EXPECT_EQ(sockets.count(), 3u);
    sockets.last().fail("third");
    EXPECT_EQ(takeStory().back(), "reconnecting in 2s (attempt 2)");
}

TEST_F(RelayConnection, AReconnectThatIsDueLeavesAStandingConnectionAlone) {
    goLive().fail("lost");
    connect();
    greet();
    auto& socket = sockets.last();
    time.advance(5);
    EXPECT_FALSE(socket.gone());
    EXPECT_EQ(sockets.count(), 2u);
    socket.fail("lost again");
    EXPECT_EQ(takeStory().back(), "reconnecting in 1s (attempt 1)");
}

TEST_F(RelayConnection, DisconnectWhileWaitingStaysDownUntilTheNextConnect) {
    goLive().fail("lost");
    takeStory();
    client->disconnect();
    time.advance(60);
    EXPECT_THAT(takeStory(), IsEmpty());
    EXPECT_EQ(sockets.count(), 1u);
    connect();
    EXPECT_EQ(sockets.count(), 2u);
}

TEST_F(RelayConnection, DestructionEndsTheSocketAndEveryCallback) {
    auto& socket = goLive();
    socket.frame(R"({"type":"batch","channel":"c","events":[1,2]})");
    socket.close(4006);
    client.reset();
    time.advance(100);
    EXPECT_THAT(story, IsEmpty());
    EXPECT_EQ(sockets.count(), 1u);
    EXPECT_TRUE(socket.gone());
}

TEST_F(RelayConnection, TheOwnerMayDestroyTheClientWithinACallback) {
    auto made = callbacks();
    made.onChannelMessage = [this, held = std::make_shared<int>(7)](const ChannelMessage&, const std::string&) {
        client.reset();
        story.push_back("ended with " + std::to_string(*held));
    };
    client->setCallbacks(std::move(made));
    goLive().frame(R"({"type":"batch","channel":"c","events":[1,2,3]})");
    EXPECT_THAT(takeStory(), ElementsAre("ended with 7"));
}

}  // namespace
}  // namespace vmr::test
