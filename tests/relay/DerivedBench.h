// The publishers of derived data on a hub of their own, without sockets.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/SteerableClock.h"
#include "market/ClockSetting.h"
#include "relay/ChainPublisher.h"
#include "relay/LevelsPublisher.h"
#include "relay/MinutePublisher.h"
#include "relay/SimulatedMarket.h"

namespace vmr::relay::test {

using nlohmann::json;

inline std::int64_t msOf(const std::string& moment) { return static_cast<std::int64_t>(*parseMoment(moment) * 1000); }

/// Keeps what it is sent and merges it as a chart does.
class Listener final : public Subscriber {
 public:
    void send(const Frame& frame) override {
        const json message = json::parse(*frame.bytes);
        ++heard[message["channel"]];
        merge(message["channel"], message[message["type"] == "snapshot" ? "data" : "payload"]);
    }
    std::map<std::string, int> heard;   ///< how many messages of each channel
    std::map<std::string, json> state;  ///< of each channel, in the shape of its snapshot

 private:
    void merge(const std::string& channel, const json& payload) {
        json& all = state[channel];
        for (const auto& [many, single] :
             {std::pair("bubbles", "bubble"), {"triangles", "triangle"}, {"candles", "candle"}}) {
            if (!payload.contains(single)) continue;
            all[many][std::to_string(payload["minuteTs"].get<std::int64_t>())] = payload[single];
            return;
        }
        if (payload.contains("sessionOpenTs")) {
            all["sessions"][std::to_string(payload["sessionOpenTs"].get<std::int64_t>())] = payload;
        } else if (payload.contains("points")) {
            for (const auto& [minute, values] : payload["points"].items()) all["points"][minute] = values;
        } else {
            for (const auto& [key, value] : payload.items()) all[key] = value;
        }
    }
};

/// Keeps what it is sent, in order.
class Inbox final : public Subscriber {
 public:
    void send(const Frame& frame) override { messages.push_back(json::parse(*frame.bytes)); }
    /// The messages of a channel, or only those of a type.
    std::vector<json> of(const std::string& channel, const std::string& type = {}) const {
        std::vector<json> found;
        for (const json& one : messages)
            if (one["channel"] == channel && (type.empty() || one["type"] == type)) found.push_back(one);
        return found;
    }
    std::vector<json> messages;
};

/// One run of the market.
class DerivedBench {
 public:
    explicit DerivedBench(double speed = 1) : clock(0, speed) {
        hub.add(std::make_unique<ChainPublisher>(hub, chains, clock));
        hub.add(std::make_unique<MinutePublisher>(hub, chains, clock));
        hub.add(std::make_unique<LevelsPublisher>(hub, market));
    }

    TradeSource& source(const Instrument& one) {
        auto& made = sources_[std::string(one.symbol)];
        if (!made) made = simulated_.source(one);
        return *made;
    }

    /// A new listener's snapshot of one channel at a moment.
    json snapshot(const std::string& channel, std::int64_t nowMs) {
        Listener one;
        EXPECT_TRUE(hub.subscribe(one, {channel}, nowMs).empty()) << channel;
        hub.leave(one);
        return one.state[channel];
    }

 private:
    SessionCalendar calendar_;
    SimulatedMarket simulated_{1, calendar_};
    std::map<std::string, std::unique_ptr<TradeSource>> sources_;

 public:
    DerivedMarket market{1, [this](const Instrument& one) -> TradeSource& { return source(one); }};
    ChainBook chains{market};
    SteerableClock clock;  // for its speed alone
    ChannelHub hub;
};

}  // namespace vmr::relay::test
