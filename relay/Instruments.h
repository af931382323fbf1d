// The instruments of the practice market and what their trading is like.
#pragma once

#include <span>
#include <string_view>

namespace vmr::relay {

enum class Family { futures, stocks, indices };

/// One instrument. Volatilities are per day as a share of the price; rates are averages of the day session.
struct Instrument {
    std::string_view symbol;  ///< futures root, stock symbol, or "I:VIX"
    Family family;
    int ticksPerPoint;  ///< 4 is a tick of 0.25
    double anchor;      ///< price that the market wanders about
    double beta;        ///< share in the common movement of equities
    double ownVolatility;
    double tradesPerMinute;
    double volumePerMinute;  ///< 0 for an index
    int spreadTicks;

    double tick() const { return 1.0 / ticksPerPoint; }
};

std::span<const Instrument> instruments();

/// Nothing for an unknown symbol.
const Instrument* findInstrument(Family family, std::string_view symbol);

/// The futures root or stock of that symbol; nothing for an index or an unknown one.
const Instrument* findTradable(std::string_view symbol);

/// The daily volatility of the common movement of equities.
inline constexpr double equityVolatility = 0.009;

}  // namespace vmr::relay
