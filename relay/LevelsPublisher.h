// The channels "derived:srlevels:ROOT": support and resistance of each session of a futures root.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "relay/ChannelHub.h"
#include "relay/DerivedMarket.h"

namespace vmr::relay {

/// A session's nearest level on each side is in force from its first trade on, each further one from the second in
/// which the price reached the one before it; only levels in force are published. A snapshot holds all sessions of the
/// history, an event the one that has changed.
class LevelsPublisher final : public Publisher {
 public:
    /// Hub and market must outlive the publisher.
    LevelsPublisher(ChannelHub& hub, DerivedMarket& market) : hub_(hub), market_(market) {}

    bool serves(const std::string& channel) const override;
    int order(const std::string&) const override { return 130; }
    void opened(const std::string& channel, std::int64_t nowMs) override;
    void closed(const std::string& channel) override;
    std::optional<std::string> snapshot(const std::string& channel) override;
    void tick(std::int64_t nowMs) override;

 private:
    /// Triggers of the levels in force, nearest first.
    struct Triggers {
        std::array<std::int64_t, MarketSession::levels> times{};  // seconds since 1970
        std::size_t count = 0;
    };
    struct Day {
        MarketSession session;
        Triggers up, down;
    };
    struct Open {
        const Instrument* instrument = nullptr;
        std::int64_t scannedMs = 0;
        std::map<std::int64_t, Day> days;
    };
    bool scan(Open& one, std::int64_t minute, std::int64_t nowMs);
    /// Scans up to `nowMs`; gives the starts of the sessions that have changed.
    std::vector<std::int64_t> advance(Open& one, std::int64_t nowMs);
    static std::string text(const Day& day);

    ChannelHub& hub_;
    DerivedMarket& market_;
    std::map<std::string, Open> open_;
};

}  // namespace vmr::relay
