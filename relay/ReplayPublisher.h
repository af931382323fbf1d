// Plays a recording on the channels that it was taken from.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "relay/ChannelHub.h"
#include "relay/ChannelState.h"
#include "relay/Recording.h"

namespace vmr::relay {

/// Serves every channel. Each message goes out at its time, as it was recorded; who subscribes later gets a snapshot of
/// what the channel's messages have made until then. After a clock that was set back it begins anew, in silence up to
/// there. A recording that is still being written plays on as it grows.
class ReplayPublisher final : public Publisher {
 public:
    ReplayPublisher(ChannelHub& hub, std::unique_ptr<RecordingReader> reader) : hub_(hub), reader_(std::move(reader)) {}

    bool serves(const std::string&) const override { return true; }
    int order(const std::string& channel) const override;
    std::optional<std::string> snapshot(const std::string& channel) override;
    void tick(std::int64_t nowMs) override;
    void wentBack(std::int64_t nowMs) override;

    /// The bars of "futures:CONTRACT" and its like, as far as they have been played.
    std::vector<Candle> bars(const std::string& channel) const;

 private:
    void take(const RecordedFrame& recorded);
    void takePrices(const PriceChannel& name, const Json& message, const Json& payload);

    ChannelHub& hub_;
    std::unique_ptr<RecordingReader> reader_;
    std::map<std::string, BarsState> bars_;
    std::map<std::string, std::unique_ptr<ChannelState>> others_;
};

}  // namespace vmr::relay
