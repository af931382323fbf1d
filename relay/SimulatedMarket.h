// The made-up market: every instrument's trades as a function of the seed and the minute.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "relay/Instruments.h"
#include "relay/LogPath.h"
#include "relay/SessionCalendar.h"
#include "relay/TradeSource.h"

namespace vmr::relay {

/// Trading that gets busier at a moment: from that minute on, `factor` times as many trades and as much volume on the
/// same path of prices.
struct Rush {
    double factor = 1;            ///< above 0
    std::int64_t fromMinute = 0;  ///< market time in seconds, a whole minute
};

/// Makes the sources of one seed, which share the common movement of equities. One thread.
class SimulatedMarket {
 public:
    SimulatedMarket(std::uint64_t seed, SessionCalendar& calendar, Rush rush = {});

    /// Futures trade at least once in every open minute. The market and its calendar must outlive the source.
    std::unique_ptr<TradeSource> source(const Instrument& instrument);

 private:
    std::uint64_t seed_;
    SessionCalendar& calendar_;
    Rush rush_;
    LogPath equities_;
};

}  // namespace vmr::relay
