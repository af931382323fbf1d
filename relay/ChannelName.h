// What a channel's name asks for.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "relay/Instruments.h"

namespace vmr::relay {

/// A channel of one instrument's market.
struct MarketChannel {
    enum class Kind { history, minutes, trades, quote };
    Kind kind = Kind::history;
    const Instrument* instrument = nullptr;
    std::string base;  ///< without the kind's ending, such as "futures:NQM6"
};

/// Reads "futures:" + any contract of a known root, "stocks:" + symbol, "indices:I:VIX" or "indices:I:VIX1D", each
/// alone or with ":1m", futures and stocks with ":trades", futures with ":quote". Nothing for any other name.
std::optional<MarketChannel> marketChannel(std::string_view name);

/// The root of a contract: "NQ" of "NQM6" or "NQM26". Empty when a month's letter and one to four digits do not end it.
std::string_view contractRoot(std::string_view contract);

}  // namespace vmr::relay
