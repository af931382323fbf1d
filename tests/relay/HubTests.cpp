#include "relay/ChannelHub.h"

#include <gtest/gtest.h>

namespace vmr::relay {
namespace {

using Texts = std::vector<std::string>;

/// Serves "NAME:1" to "NAME:9" and writes down what the hub asks of it.
class NotingPublisher final : public Publisher {
 public:
    NotingPublisher(ChannelHub& hub, char name, Texts& notes) : hub_(hub), name_(name), notes_(notes) {}
    bool serves(const std::string& channel) const override { return channel[0] == name_; }
    int order(const std::string& channel) const override { return channel.back(); }
    void opened(const std::string& channel, std::int64_t nowMs) override {
        notes_.push_back("open " + channel + " " + std::to_string(nowMs));
    }
    void closed(const std::string& channel) override { notes_.push_back("close " + channel); }
    std::optional<std::string> snapshot(const std::string& channel) override {
        if (channel.ends_with("9")) return std::nullopt;
        return "snapshot " + channel;
    }
    void tick(std::int64_t nowMs) override {
        const std::string channel{name_, ':', '1'};
        hub_.publish(channel, Frame(channel + " at " + std::to_string(nowMs)));
    }

 private:
    ChannelHub& hub_;
    char name_;
    Texts& notes_;
};

struct Ear final : Subscriber {
    void send(const Frame& frame) override { heard.push_back(*frame.bytes); }
    /// What has come since the last call.
    Texts fresh() { return std::exchange(heard, {}); }
    Texts heard;
};

struct Hub : testing::Test {
    void SetUp() override {
        for (const char name : {'a', 'b'}) hub.add(std::make_unique<NotingPublisher>(hub, name, notes));
        hub.setTap([this](auto, const auto&, const Frame& frame) { tapped.push_back(*frame.bytes); });
    }
    Texts notes, tapped;
    ChannelHub hub;
    Ear first, second;
};

TEST_F(Hub, EachListenerGetsItsOwnChannelsAndEachChannelIsOpenOnce) {
    EXPECT_EQ(hub.subscribe(first, {"b:2", "c:1", "a:9", "a:1"}, 1000), Texts{"c:1"});
    EXPECT_EQ(first.fresh(), (Texts{"snapshot a:1", "snapshot b:2"})) << "in the publishers' order";
    EXPECT_EQ(hub.subscribe(second, {"a:1", "b:3"}, 2000), Texts{});
    EXPECT_EQ(first.fresh(), Texts{"a:1 at 2000"}) << "what came before the second one joined";
    EXPECT_EQ(second.fresh(), (Texts{"snapshot a:1", "snapshot b:3"}));
    EXPECT_EQ(tapped.size(), 4u) << "once each, however many listen";

    hub.unsubscribe(first, {"a:1", "b:3"});
    hub.tick(3000);
    EXPECT_EQ(first.fresh(), Texts{});
    EXPECT_EQ(second.fresh(), Texts{"a:1 at 3000"});
    EXPECT_EQ(hub.channels(), (Texts{"a:1", "a:9", "b:2", "b:3"})) << "the other's channels stay";
    hub.leave(second);
    EXPECT_FALSE(hub.wanted("a:1"));
    hub.subscribe(second, {"a:1"}, 4000);
    EXPECT_EQ(notes, (Texts{"open b:2 1000", "open a:9 1000", "open a:1 1000", "open b:3 2000", "close a:1",
                            "close b:3", "open a:1 4000"}));
}

TEST_F(Hub, ASubscriberHolds256ChannelsAndMayAskForThemAgain) {
    Texts many;
    for (int i = 0; i < 256; ++i) many.push_back("a:" + std::to_string(i * 10));
    EXPECT_EQ(hub.subscribe(first, many, 0), Texts{});
    EXPECT_EQ(hub.subscribe(first, {"a:10", "a:7"}, 0), Texts{"a:7"});
    hub.unsubscribe(first, {"a:10"});
    EXPECT_EQ(hub.subscribe(first, {"a:7"}, 0), Texts{});
}

}  // namespace
}  // namespace vmr::relay
