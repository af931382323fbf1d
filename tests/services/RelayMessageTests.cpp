// Subscriptions and the way of a channel message to the main thread.
#include "RelayFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RelayMessages : public RelayFixture {};

TEST_F(RelayMessages, SubscriptionsWaitForTheGreetingAndSurviveReconnects) {
    client->subscribe({"b", "a"});
    client->subscribe({"a", "dropped"});
    client->unsubscribe({"dropped", "never wanted"});
    connect();
    client->subscribe({"c", "left again"});
    sockets.last().accept();
    client->unsubscribe({"left again"});
    time.runUntilIdle();
    EXPECT_THAT(sockets.last().sent, IsEmpty());
    greet();
    EXPECT_THAT(sockets.last().takeSent(), ElementsAre(R"({"action":"subscribe","channels":["a","b","c"]})"));

    client->subscribe({"z", "a", "say \"hi\""});
    client->unsubscribe({"b", "unknown"});
    time.runUntilIdle();
    EXPECT_THAT(sockets.last().takeSent(), ElementsAre(R"({"action":"subscribe","channels":["z","a","say \"hi\""]})",
                                                       R"({"action":"unsubscribe","channels":["b","unknown"]})"));

    sockets.last().close(1000);
    client->unsubscribe({"z"});
    time.advance(1);
    EXPECT_THAT(sockets.at(0).sent, IsEmpty());
    greet();
    EXPECT_THAT(sockets.last().takeSent(), ElementsAre(R"({"action":"subscribe","channels":["a","c","say \"hi\""]})"));
    client->disconnect();
    connect();
    greet();
    EXPECT_EQ(sockets.last().sent.size(), 1u);
}

TEST_F(RelayMessages, AGreetingWithNothingWantedSendsNothing) {
    connect();
    sockets.last().accept();
    frame(R"({"type":"hello"})");
    EXPECT_THAT(sockets.last().sent, IsEmpty());
    EXPECT_THAT(takeStory(), ElementsAre("connecting…", "socket opened, awaiting hello…", "hello: ?", "<connected>"));
}

TEST_F(RelayMessages, EachFrameHasItsEffectOrNone) {
    struct Case {
        std::string frame;
        std::vector<std::string> story;
        bool binary = false;
    };
    const Case cases[] = {
        {R"({"type":"snapshot","channel":"c","data":{"a":1},"payload":2})", {R"(<snapshot c {"a":1}>)"}},
        {R"({"type":"event","channel":"c","data":2,"payload":[1,"x"]})", {R"(<event c [1,"x"]>)"}},
        {R"({"type":"batch","channel":"c","events":[1,null,{"b":2}]})",
         {"<batch c 1>", "<batch c null>", R"(<batch c {"b":2}>)"}},
        {R"({"type":"event","channel":"c","payload":7})", {"<event c 7>"}, true},
        {R"({"type":"snapshot","channel":"c"})", {"<snapshot c null>"}},
        {R"({"type":"event","channel":"c","payload":null})", {"<event c null>"}},
        {R"({"type":"batch","channel":"c","events":[]})", {}},
        {R"({"type":"batch","channel":"c","events":{"a":1}})", {}},
        {R"({"type":"batch","channel":"c"})", {}},
        {R"({"type":"batch","events":[1]})", {}},
        {R"({"type":"snapshot","channel":5,"data":1})", {}},
        {R"({"type":"event","payload":1})", {}},
        {R"({"type":"error","message":"slow down"})", {"server error: slow down"}},
        {R"({"type":"error","message":5})", {"server error: unknown"}},
        {R"({"type":"other","channel":"c"})", {}},
        {R"({"type":7})", {}},
        {R"({"channel":"c"})", {}},
        {R"([{"type":"error"}])", {}},
        {R"("error")", {}},
        {"{\"type\":\"error\"", {}},
        {"{\"type\":\"error\"}{}", {}},
        {"{\"type\":\"error\",\"message\":\"\xff\"}", {}, true},
        {"", {}},
    };
    goLive();
    for (const auto& [bytes, told, binary] : cases) {
        frame(bytes, binary);
        EXPECT_EQ(takeStory(), told) << bytes;
    }
    EXPECT_FALSE(sockets.last().gone());
}

TEST_F(RelayMessages, ABatchIsOneTurnOfTheMainLoop) {
    auto made = callbacks();
    made.onChannelMessage = [this](const ChannelMessage& message, const std::string&) {
        story.push_back(message.payload.text());
        main.post([this] { story.push_back("a later turn"); });
    };
    client->setCallbacks(std::move(made));
    goLive();
    frame(R"({"type":"batch","channel":"c","events":[1,2]})");
    EXPECT_THAT(takeStory(), ElementsAre("1", "2", "a later turn", "a later turn"));
}

TEST_F(RelayMessages, PreparedDataIsMadeAndDestroyedOnTheQueue) {
    std::vector<std::string> places;
    const auto place = [&](const char* what) {
        places.push_back(what + std::string(main.isCurrent() ? " main" : queue.isCurrent() ? " queue" : " elsewhere"));
    };
    auto made = callbacks();
    made.onPrepare = [&](const std::string& channel, JsonView payload) -> std::any {
        place("made");
        if (payload.isNothing()) return {};
        return std::shared_ptr<std::string>(new std::string(channel + payload.text()), [&](const std::string* text) {
            place("freed");
            delete text;
        });
    };
    made.onChannelMessage = [&](const ChannelMessage& message, const std::string& type) {
        const auto* prepared = std::any_cast<std::shared_ptr<std::string>>(&message.prepared);
        place((type + " " + (prepared ? **prepared : "none")).c_str());
    };
    client->setCallbacks(std::move(made));
    auto& socket = goLive();
    socket.frame(R"({"type":"snapshot","channel":"c","data":[1]})");
    socket.frame(R"({"type":"event","channel":"d"})");
    socket.frame(R"({"type":"batch","channel":"e","events":[1]})");
    time.runUntilIdle();
    std::sort(places.begin(), places.end());  // the two threads run side by side
    EXPECT_THAT(places, ElementsAre("batch none main", "event none main", "freed queue", "made queue", "made queue",
                                    "snapshot c[1] main"));
}

TEST_F(RelayMessages, AFailedSendIsLoggedAndNothingElse) {
    goLive().failSend("broken pipe");
    EXPECT_THAT(takeStory(), ElementsAre("send failed: broken pipe"));
    EXPECT_FALSE(sockets.last().gone());
}

}  // namespace
}  // namespace vmr::test
