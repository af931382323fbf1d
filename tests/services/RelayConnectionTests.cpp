// A relay client in virtual time, with its server, its token provider and its owner played by the test.
#include <gmock/gmock.h>

#include "services/feed/RelayClient.h"
#include "support/pane/FakeWebSocket.h"
#include "support/time/TestTime.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RelayConnection : public testing::Test {
 protected:
    void SetUp() override { client->setCallbacks(callbacks()); }

    RelayClient::Callbacks callbacks() {
        RelayClient::Callbacks made;
        made.onLog = [this](const std::string& text) { tell(text); };
        made.onConnected = [this] { tell("<connected>"); };
        made.onConnectionLimit = [this] { tell("<limit>"); };
        made.onTokenRefused = [this](const std::string& token) { tell("<refused " + token + ">"); };
        made.onDisconnected = [this] { tell("<disconnected>"); };
        made.onChannelMessage = [this](const ChannelMessage& message, const std::string& type) {
            tell("<" + type + " " + message.channel + " " + message.payload.text() + ">");
        };
        return made;
    }
    void tell(const std::string& what) {
        EXPECT_TRUE(main.isCurrent()) << what;
        story.push_back(what);
    }

    /// Connects with a provider that answers every attempt with `result`.
    void connect(const TokenResult& result = {"token", std::nullopt}) {
        client->connect([this, result](const std::function<void(TokenResult)>& done) {
            ++tokensAsked;
            done(result);
        });
        time.runUntilIdle();
    }
    /// Connected and greeted; the story so far is forgotten.
    FakeWebSockets::Socket& goLive() {
        connect();
        greet();
        story.clear();
        return sockets.last();
    }
    void greet() {
        sockets.last().accept();
        frame(R"({"type":"hello","email":"a@b.c"})");
    }
    void frame(const std::string& bytes, bool binary = false) {
        sockets.last().frame(bytes, binary);
        time.runUntilIdle();
    }
    std::vector<std::string> takeStory() {
        time.runUntilIdle();
        return std::exchange(story, {});
    }

    TestTime time;
    TestQueue queue{time};
    TestQueue main{time};
    FakeWebSockets sockets{queue};
    std::vector<std::string> story;  ///< every callback in the order in which it came
    int tokensAsked = 0;
    std::unique_ptr<RelayClient> client =
        std::make_unique<RelayClient>("wss://relay.test/", sockets.factory(), queue, main, time);
};

TEST_F(RelayConnection, EveryFailureBeforeTheSocketRetriesWithAFreshToken) {
    connect({"", "no network"});
    EXPECT_THAT(takeStory(),
                ElementsAre("connecting…", "token fetch failed: no network", "reconnecting in 1s (attempt 1)"));
    connect({"", std::nullopt});  // by the owner, before the second is over
    EXPECT_THAT(takeStory(), ElementsAre("connecting…"));
    time.advance(1.001);
    EXPECT_THAT(takeStory(), ElementsAre("connecting…", "reconnecting in 2s (attempt 2)"));
    EXPECT_EQ(tokensAsked, 3);
    EXPECT_EQ(sockets.count(), 0u);
}

TEST_F(RelayConnection, BackOffDoublesToThirtySecondsAndIsFiveAfterTooManyConnections) {
    connect();
    int attempt = 0;
    // how each connection ends, 0 for a failure before the greeting, and the seconds until the next one
    const std::pair<int, int> ends[] = {{0, 1},  {0, 2},  {0, 4},    {0, 8},    {0, 16},
                                        {0, 30}, {0, 30}, {1011, 1}, {4006, 5}, {0, 2}};
    for (const auto& [code, delay] : ends) {
        if (code != 0) greet();
        attempt = code != 0 ? 1 : attempt + 1;  // the forced delay counts as one
        story.clear();
        const auto before = sockets.count();
        code != 0 ? sockets.last().close(code) : sockets.last().fail("broken");
        std::vector<std::string> expected{"receive error: broken", "<disconnected>"};
        if (code != 0) expected[0] = "socket closed (code " + std::to_string(code) + ")";
        if (code == 4006) expected.push_back("<limit>");
        expected.push_back("reconnecting in " + std::to_string(delay) + "s (attempt " + std::to_string(attempt) + ")");
        EXPECT_EQ(takeStory(), expected);
        time.advance(delay - 0.001);
        EXPECT_EQ(sockets.count(), before);
        time.advance(0.002);
        ASSERT_EQ(sockets.count(), before + 1);
    }
}

TEST_F(RelayConnection, ARefusedTokenIsToldOnceUntilTheNextGreeting) {
    connect();
    for (const auto& [status, told] : {std::pair(500, false), {401, true}, {403, false}, {0, false}, {403, true}}) {
        story.clear();
        if (status == 0)
            greet();
        else
            sockets.last().refuse(status);
        time.runUntilIdle();
        EXPECT_EQ(story.front() == "<refused token>", told) << status;
        if (status == 0) sockets.last().fail("dropped");
        time.advance(31);
    }
}

TEST_F(RelayConnection, PingsCarryTheMarketClockAndSilenceOfMoreThanSixtySecondsIsALoss) {
    time.setNow(1781100000.9996);
    time.setSpeed(10);  // market time runs ten times as fast; heartbeats do not
    auto& socket = goLive();
    time.advance(10);
    EXPECT_THAT(socket.takeSent(), ElementsAre(R"({"ts":1781100100999,"type":"ping"})"));
    for (int i = 0; i < 30; ++i) {
        frame(R"({"type":"pong"})");
        time.advance(10);
    }
    EXPECT_EQ(socket.takeSent().size(), 30u);
    time.advance(50);  // the firing at exactly 60 still pings
    EXPECT_EQ(socket.takeSent().size(), 5u);
    time.advance(9.99);
    EXPECT_FALSE(socket.gone());
    time.advance(0.01);
    EXPECT_THAT(takeStory(),
                ElementsAre("heartbeat timeout, reconnecting", "<disconnected>", "reconnecting in 1s (attempt 1)"));
    EXPECT_TRUE(socket.gone());
}

TEST_F(RelayConnection, OnlyAConnectThatHangsIsLeftAndNotAServerThatNeverGreets) {
    connect();
    story.clear();
    time.advance(60.1);
    EXPECT_EQ(takeStory().front(), "receive error: connect timed out");
    EXPECT_TRUE(sockets.at(0).gone());
    time.advance(1);
    sockets.last().accept();
    time.advance(7200);
    EXPECT_FALSE(sockets.last().gone());
    frame(R"({"type":"hello"})");
    time.advance(10);
    EXPECT_FALSE(sockets.last().gone()) << "silence counts from the greeting";
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
    std::vector<std::function<void(TokenResult)>> answers;
    const auto ask = [&] {
        client->connect([&](std::function<void(TokenResult)> done) { answers.push_back(std::move(done)); });
    };
    ask();
    time.runUntilIdle();
    client->disconnect();
    time.runUntilIdle();
    answers.at(0)({"late", std::nullopt});
    time.runUntilIdle();
    EXPECT_EQ(sockets.count(), 0u);

    ask();
    ask();
    time.runUntilIdle();
    answers.at(2)({"newer", std::nullopt});
    answers.at(1)({"older", std::nullopt});
    answers.at(2)({"twice", std::nullopt});
    time.runUntilIdle();
    ASSERT_EQ(sockets.count(), 1u);
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=newer");
}

TEST_F(RelayConnection, AReconnectThatIsDueLeavesAStandingConnectionAlone) {
    goLive().fail("first");
    time.advance(0.5);
    connect();  // by the owner, before the second is over
    greet();
    time.advance(5);
    EXPECT_FALSE(sockets.last().gone());
    sockets.last().fail("second");
    client->disconnect();
    time.advance(60);
    EXPECT_EQ(sockets.count(), 2u) << "disconnected while it waited";
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

TEST_F(RelayConnection, SubscriptionsWaitForTheGreetingAndSurviveReconnects) {
    client->subscribe({"b", "a", "dropped"});
    client->unsubscribe({"dropped", "never wanted"});
    connect({"a b/ü%", std::nullopt});
    EXPECT_EQ(sockets.last().url, "wss://relay.test/?token=a%20b/%C3%BC%25");
    client->subscribe({"c"});
    sockets.last().accept();
    time.runUntilIdle();
    EXPECT_THAT(sockets.last().sent, IsEmpty());
    frame(R"({"type":"hello","email":"a@b.c\n[cmd] ok\u001b"})");
    EXPECT_THAT(takeStory(), ElementsAre("connecting…", "socket opened, awaiting hello…",
                                         "hello: a@b.c\\n[cmd] ok\\x1b", "<connected>"));
    client->subscribe({"z", "a", "say \"hi\""});
    client->unsubscribe({"b", "unknown"});
    time.runUntilIdle();
    EXPECT_THAT(sockets.last().sent, ElementsAre(R"({"action":"subscribe","channels":["a","b","c"]})",
                                                 R"({"action":"subscribe","channels":["z","a","say \"hi\""]})",
                                                 R"({"action":"unsubscribe","channels":["b","unknown"]})"));
    sockets.last().close(1000);
    client->unsubscribe({"z"});
    time.advance(1);
    greet();
    EXPECT_THAT(sockets.last().sent, ElementsAre(R"({"action":"subscribe","channels":["a","c","say \"hi\""]})"));
}

}  // namespace
}  // namespace vmr::test
