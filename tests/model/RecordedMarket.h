// A practice session as a client sees it: recorded from the relay's market, and what each channel makes of it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "market/CandleParser.h"
#include "market/HfHistoryParser.h"
#include "market/MinuteChannel.h"
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

/// What the recorded messages make of each series by the rules of the channels: read by the market's parsers, which
/// have tests of their own, and kept in maps.
struct PlainSeries {
    PlainBars chart{false, true}, second{false, false}, vix{false, false};
    HfByMin flow;
    SRSessions levels;

    void take(double now, const relay::RecordedFrame& frame) {
        const Json message = Json::parse(*frame.frame.bytes).value();
        chart.roll(now);
        for (const JsonView payload : message["events"].items()) takeOne(frame.channel, payload);
        for (const char* body : {"data", "payload"})
            if (message[body].isObject() || message[body].isArray()) takeOne(frame.channel, message[body]);
    }

 private:
    void takeOne(const std::string& channel, JsonView payload) {
        RepairTally tally;
        PlainBars& bars = channel.starts_with("futures:NQ") ? chart : channel.starts_with("futures:ES") ? second : vix;
        if (channel.ends_with(":trades")) return bars.trade(payload["price"].number(), payload["ts"].number());
        if (channel.starts_with("derived:srlevels")) return SRLevelsParser::merge(payload, levels, tally);
        if (!channel.starts_with("derived:")) return bars.merge(CandleParser::parse(payload));
        forEachMinute(payload, hfHistoryMinutes, tally,
                      [this](std::int64_t minute, JsonView one) { flow[minute] = HfHistoryParser::hfCandle(one); });
        while (flow.size() > 5000) flow.erase(flow.begin());
    }
};

}  // namespace vmr::test
