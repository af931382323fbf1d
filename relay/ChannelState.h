// What the messages of a channel have made so far, for those who come late.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/Json.h"
#include "market/Records.h"
#include "relay/ChannelName.h"
#include "relay/Payloads.h"

namespace vmr::relay {

/// Takes a channel's messages in order and gives the snapshot that they amount to. One thread.
class ChannelState {
 public:
    virtual ~ChannelState() = default;
    /// The payload of a snapshot or an event. What it cannot read it leaves out.
    virtual void take(const Json& payload, bool snapshot) = 0;
    /// JSON text of a snapshot's data; nothing before there is any.
    virtual std::optional<std::string> data() const = 0;

    /// For any channel but those of bars and trades. Per-minute maps and sessions are merged by their keys, all other
    /// objects by theirs.
    static std::unique_ptr<ChannelState> make(std::string_view channel);
};

/// The bars of one instrument, out of its history, its minutes and its trades.
class BarsState {
 public:
    /// A payload of the history's channel, or of the minutes'.
    void takeBars(const Json& payload, bool history);
    /// One element of the trades' channel; it counts once there are bars.
    void takeTrade(JsonView trade);

    const std::map<std::int64_t, Candle>& bars() const { return bars_; }
    /// The history in the shape that its snapshot had, or the newest two bars; nothing before there are any.
    std::optional<std::string> data(bool history) const;

 private:
    std::map<std::int64_t, Candle> bars_;
    payload::BarsShape shape_ = payload::BarsShape::candles;
};

/// How a channel of prices is named: its base, and what comes behind it.
struct PriceChannel {
    std::string base;
    MarketChannel::Kind kind = MarketChannel::Kind::history;
};
/// Nothing for any other channel. The instrument need not be known.
std::optional<PriceChannel> priceChannel(std::string_view channel);

}  // namespace vmr::relay
