// A practice session as a client sees it: recorded from the relay's market, and read with no part of the program.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "market/HfHistoryParser.h"
#include "market/SRLevelsParser.h"
#include "model/PlainBars.h"
#include "relay/LevelsPublisher.h"
#include "relay/MarketPublisher.h"
#include "relay/MetaPublisher.h"
#include "relay/MinutePublisher.h"
#include "relay/Recording.h"

namespace vmr::test {

/// A stretch of time in which the relay runs, in steps; between two stretches it sleeps.
struct LiveStretch {
    std::int64_t from, to;
    double step;
};

/// What a chart of NQ, its contract with the month `month`, is sent. The same seed gives the same recording.
inline std::vector<relay::RecordedFrame> record(std::uint64_t seed, const std::string& month,
                                                const std::vector<LiveStretch>& stretches) {
    std::vector<relay::RecordedFrame> frames;
    relay::MarketPublisher* market = nullptr;
    relay::DerivedMarket derived(
        seed, [&market](const relay::Instrument& one) -> relay::TradeSource& { return market->trades(one); });
    relay::ChainBook chains(derived);
    const SystemClock clock;  // for its speed alone
    relay::ChannelHub hub;
    auto prices = std::make_unique<relay::MarketPublisher>(hub, seed, relay::Rush{}, nullptr, nullptr);
    market = prices.get();
    hub.add(std::move(prices));
    hub.add(std::make_unique<relay::MetaPublisher>(hub));
    hub.add(std::make_unique<relay::MinutePublisher>(hub, chains, clock));
    hub.add(std::make_unique<relay::LevelsPublisher>(hub, derived));
    hub.setTap([&frames](std::int64_t nowMs, const std::string& channel, const relay::Frame& frame) {
        frames.push_back({nowMs, channel, frame});
    });
    struct Silent final : relay::Subscriber {
        void send(const relay::Frame&) override {}
    } client;
    const auto ms = [](double t) { return static_cast<std::int64_t>(t * 1000); };
    const std::string nq = "futures:NQ" + month, es = "futures:ES" + month, vix = "indices:I:VIX";
    const std::vector<std::string> lists[] = {
        {"meta:instruments", "meta:contracts"},
        {nq, nq + ":1m", nq + ":trades", nq + ":quote", es, es + ":1m", es + ":trades", vix, vix + ":1m",
         "derived:hfHistory:QQQ", "derived:srlevels:NQ"}};
    for (const auto& channels : lists)
        EXPECT_TRUE(hub.subscribe(client, channels, ms(static_cast<double>(stretches.front().from))).empty());
    for (const auto& [from, to, step] : stretches)
        for (double t = static_cast<double>(from) + 0.4; t <= static_cast<double>(to); t += step) hub.tick(ms(t));
    hub.leave(client);
    return frames;
}

/// What the recorded messages make of each series, by the rules of the channels alone.
struct PlainSeries {
    PlainBars chart{false, true}, second{false, false}, vix{false, false};
    HfByMin flow;
    SRSessions levels;

    void take(double now, const relay::RecordedFrame& frame) {
        json message = json::parse(*frame.frame.bytes);
        chart.roll(now);
        if (message.contains("events")) {
            for (const json& payload : message["events"]) takeOne(frame.channel, payload);
        } else {
            takeOne(frame.channel, message[message.contains("data") ? "data" : "payload"]);
        }
    }

 private:
    using json = nlohmann::json;
    void takeOne(const std::string& channel, const json& payload) {
        if (channel.starts_with("futures:NQ")) take(chart, channel, payload);
        if (channel.starts_with("futures:ES")) take(second, channel, payload);
        if (channel.starts_with("indices:")) take(vix, channel, payload);
        if (channel.starts_with("derived:hfHistory")) takeFlow(payload);
        if (channel.starts_with("derived:srlevels")) takeLevels(payload);
    }
    static std::int64_t seconds(const std::string& text) { return std::stoll(text); }

    static Candle bar(const json& one, std::int64_t time) {
        const auto number = [&one](const char* brief, const char* full) {
            return one[one.contains("open") ? full : brief].get<double>();
        };
        return {.time = time,
                .open = number("o", "open"),
                .high = number("h", "high"),
                .low = number("l", "low"),
                .close = number("c", "close"),
                .volume = number("v", "volume")};
    }
    static void take(PlainBars& series, const std::string& channel, const json& payload) {
        if (channel.ends_with(":quote")) return;
        if (channel.ends_with(":trades")) return series.trade(payload["price"], payload["ts"]);
        Bars bars;
        if (payload.contains("candle")) {
            bars.push_back(bar(payload["candle"], payload["minuteTs"]));
        } else if (payload.contains("time")) {
            bars.push_back(bar(payload, payload["time"]));
        } else {
            for (const auto& [key, one] : payload["candles"].items())
                bars.push_back(bar(one, one.contains("ts") ? one["ts"].get<std::int64_t>() / 1000 : seconds(key)));
        }
        series.merge(bars);
    }
    void takeFlow(const json& payload) {
        const auto set = [this](std::int64_t minute, const json& one) { flow[minute].c = one["c"].get<double>(); };
        if (payload.contains("candle"))
            set(payload["minuteTs"], payload["candle"]);
        else
            for (const auto& [minute, one] : payload["candles"].items()) set(seconds(minute), one);
        while (flow.size() > 5000) flow.erase(flow.begin());
    }
    void takeLevels(const json& payload) {
        const auto side = [](const json& list) {
            std::vector<SRLevel> out;
            for (const json& one : list) out.push_back({one["i"], one["label"], one["price"], one["triggerTime"]});
            return out;
        };
        const json sessions = payload.contains("sessions") ? payload["sessions"] : json::array({payload});
        for (const json& one : sessions)
            levels[one["sessionOpenTs"]] = {one["sessionOpenTs"], one["openPrice"], side(one["up"]), side(one["dn"])};
    }
};

}  // namespace vmr::test
