// The channels of per-minute data: bubbles, triangles, the history of the flow and the oscillator.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "base/Clock.h"
#include "relay/ChannelHub.h"
#include "relay/MinuteSeries.h"

namespace vmr::relay {

/// A snapshot holds the newest minutes and the one under way; events bring each minute when it has ended, and the one
/// under way every few seconds. After a jump of the clock by more than a day there is a snapshot instead.
class MinutePublisher final : public Publisher {
 public:
    /// `clock` is the market's. All three must outlive the publisher.
    MinutePublisher(ChannelHub& hub, ChainBook& book, const Clock& clock) : hub_(hub), book_(book), clock_(clock) {}

    bool serves(const std::string& channel) const override;
    int order(const std::string& channel) const override;
    void opened(const std::string& channel, std::int64_t nowMs) override;
    void closed(const std::string& channel) override;
    std::optional<std::string> snapshot(const std::string& channel) override;
    void tick(std::int64_t nowMs) override;

 private:
    struct Open {
        const MinuteFamily* family = nullptr;
        std::unique_ptr<MinuteSeries> series;
        std::map<std::int64_t, std::string> minutes;  // that have ended
        std::int64_t runningMinute = 0;
        std::string running;
        std::int64_t endMs = 0;   // up to where `minutes` goes
        std::int64_t asOfMs = 0;  // of `running`
    };
    void fill(Open& one, std::int64_t nowMs);
    bool run(Open& one, std::int64_t nowMs);
    void advance(const std::string& channel, Open& one, std::int64_t nowMs);
    void publish(const std::string& channel, const Open& one, std::int64_t minute, const std::string& value);

    ChannelHub& hub_;
    ChainBook& book_;
    const Clock& clock_;
    std::map<std::string, Open> open_;
};

}  // namespace vmr::relay
