// What all options-derived channels of the practice market share: prices, sessions and the flow of option trades.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string_view>

#include "relay/OptionSources.h"
#include "relay/PricePath.h"
#include "relay/SessionCalendar.h"

namespace vmr::relay {

/// A trading day of one instrument, with its support and resistance levels.
struct MarketSession {
    static constexpr std::size_t levels = 4;
    std::int64_t start = 0;  ///< the evening open, seconds since 1970
    std::int64_t date = 0;   ///< the day's New York date, days since 1970
    double open = 0;
    std::array<double, levels> up{}, down{};  ///< from the nearest on, on the instrument's ticks
};

/// High-frequency flow since the session opened, in dollars of premium: bought calls count up, bought puts down.
struct OptionFlow {
    double call = 0;
    double put = 0;
    double net() const { return call + put; }
};

/// Everything depends on the seed, the trade sources and the moment asked about alone. The relay's thread.
class DerivedMarket {
 public:
    /// Gives the trades of an instrument, which live as long as the market.
    using Sources = std::function<TradeSource&(const Instrument&)>;

    DerivedMarket(std::uint64_t seed, Sources sources) : seed_(seed), sources_(std::move(sources)) {}

    std::uint64_t seed() const { return seed_; }
    PricePath& path(const Instrument& instrument);

    /// The session that `t` (seconds) lies in or, on a pause, follows; nothing while it has no price up to `nowMs`.
    const MarketSession* session(const Instrument& instrument, std::int64_t t, std::int64_t nowMs);

    /// Drops the paths and sessions made so far; nobody may hold one.
    void forget() { places_.clear(); }

    /// Leans with the price: at the first level the net flow of a futures source is about 1e8 on that level's side.
    /// Calls and puts are bought in bursts, each on its own.
    OptionFlow flow(const OptionSource& source, const MarketSession& session, double price, std::int64_t timeMs) const;

    /// The size that flows of the source have.
    static double flowUnit(const OptionSource& source, const MarketSession& session);

 private:
    std::int64_t sessionStart(std::int64_t t, std::int64_t& end);

    struct Known {
        std::int64_t end = 0;  // of the stretch that the session answers for
        MarketSession session;
    };
    struct Place {
        std::optional<PricePath> path;
        std::map<std::int64_t, Known> sessions;  // by their start
    };
    std::uint64_t seed_;
    Sources sources_;
    SessionCalendar calendar_;
    std::map<const Instrument*, Place> places_;
};

/// A smooth random curve about 0, within ±1, with a value of its own about every `period` milliseconds.
double valueNoise(std::uint64_t key, std::int64_t timeMs, std::int64_t period);

}  // namespace vmr::relay
