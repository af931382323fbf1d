// A relay client in virtual time with its server, its token provider and its owner played by the test.
#pragma once

#include <gmock/gmock.h>

#include "FakeWebSocket.h"
#include "services/RelayClient.h"
#include "support/TestTime.h"

namespace vmr::test {

class RelayFixture : public testing::Test {
 protected:
    void SetUp() override {
        RelayClient::setPrinter([](const std::string&) {});
        make("wss://relay.test/");
    }
    void TearDown() override { RelayClient::setPrinter(nullptr); }

    void make(const std::string& url) {
        client = std::make_unique<RelayClient>(url, sockets.factory(), queue, main, time);
        client->setCallbacks(callbacks());
    }

    RelayClient::Callbacks callbacks() {
        RelayClient::Callbacks made;
        made.onLog = [this](const std::string& text) { tell(text); };
        made.onConnected = [this] { tell("<connected>"); };
        made.onConnectionLimit = [this] { tell("<limit>"); };
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

    /// A provider that answers every attempt with `result`.
    TokenProvider giving(TokenResult result) {
        return [this, result](const std::function<void(TokenResult)>& done) {
            ++tokensAsked;
            done(result);
        };
    }
    /// A provider that keeps every callback in `answers`.
    TokenProvider slow() {
        return [this](std::function<void(TokenResult)> done) { answers.push_back(std::move(done)); };
    }

    void connect() {
        client->connect(giving({"token", std::nullopt}));
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
    std::vector<std::function<void(TokenResult)>> answers;
    int tokensAsked = 0;
    std::unique_ptr<RelayClient> client;
};

}  // namespace vmr::test
