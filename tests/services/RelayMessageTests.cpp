// Subscriptions and the way of a channel message to the main thread.
#include "RelayFixture.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RelayMessages : public RelayFixture {};

TEST_F(RelayMessages, SubscriptionsWaitForTheGreetingAndSurviveReconnects) {
    client->subscribe({"b", "a", "dropped"});
    client->unsubscribe({"dropped", "never wanted"});
    connect();
    client->subscribe({"c"});
    sockets.last().accept();
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
    greet();
    EXPECT_THAT(sockets.last().takeSent(), ElementsAre(R"({"action":"subscribe","channels":["a","c","say \"hi\""]})"));
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
        {R"({"type":"batch","channel":"c","events":{"a":1}})", {}},
        {R"({"type":"snapshot","channel":5,"data":1})", {}},
        {R"({"type":"error","message":"slow down"})", {"server error: slow down"}},
        {R"({"type":"error","message":5})", {"server error: unknown"}},
        {R"({"type":7})", {}},
        {"{\"type\":\"error\"", {}},
        {"{\"type\":\"error\",\"message\":\"\xff\"}", {}, true},
        {"", {}},
    };
    goLive();
    for (const auto& [bytes, told, binary] : cases) {
        frame(bytes, binary);
        EXPECT_EQ(takeStory(), told) << bytes;
    }
    sockets.last().failSend("broken pipe");
    EXPECT_THAT(takeStory(), ElementsAre("send failed: broken pipe"));
    EXPECT_FALSE(sockets.last().gone());
}

TEST_F(RelayMessages, PreparedDataIsMadeAndDestroyedOnTheQueue) {
    std::vector<std::string> places;
    const auto place = [&](const std::string& what) { places.push_back(what + (queue.isCurrent() ? " queue" : "")); };
    auto made = callbacks();
    made.onPrepare = [&](const std::string& channel, JsonView payload) -> std::any {
        place("made");
        return std::shared_ptr<std::string>(new std::string(channel + payload.text()), [&](const std::string* text) {
            place("freed");
            delete text;
        });
    };
    made.onChannelMessage = [&](const ChannelMessage& message, const std::string& type) {
        const auto* prepared = std::any_cast<std::shared_ptr<std::string>>(&message.prepared);
        place(type + " " + (prepared ? **prepared : "none"));
    };
    client->setCallbacks(std::move(made));
    goLive();
    frame(R"({"type":"snapshot","channel":"c","data":[1]})");
    frame(R"({"type":"batch","channel":"e","events":[1]})");
    EXPECT_THAT(places, ElementsAre("made queue", "snapshot c[1]", "freed queue", "batch none"));
}

}  // namespace
}  // namespace vmr::test
