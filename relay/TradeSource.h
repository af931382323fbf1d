// The seam between a market and the channels that show it.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace vmr::relay {

/// One trade and the quote it leaves behind.
struct Trade {
    std::int64_t timeMs = 0;  ///< milliseconds since 1970
    double price = 0;
    double size = 0;  ///< 0 for a price that moved without volume
    double bid = 0;
    double ask = 0;
    bool operator==(const Trade&) const = default;
};

/// `price` moved by `step` points, as it is printed: the plain sum of 1313.9 and -0.1 is 1313.8000000000002.
inline double besidePrice(double price, double step) {
    constexpr double parts = 1e6;  // finer than any price
    return std::round((price + step) * parts) / parts;
}

/// One symbol's market. The same minute always has the same trades. One thread.
class TradeSource {
 public:
    virtual ~TradeSource() = default;

    /// Puts the trades of [minute, minute + 60 s) into `trades`, in order of time; none while the market is closed.
    virtual void minuteTrades(std::int64_t minute, std::vector<Trade>& trades) = 0;

    /// The first minute of the history that a chart opened at `t` gets.
    virtual std::int64_t historyStart(std::int64_t t) = 0;
};

}  // namespace vmr::relay
