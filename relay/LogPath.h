// One random movement of the market, minute by minute, that any day can be asked for without the days before it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "relay/ActivityCurve.h"

namespace vmr::relay {

/// A trading day of one movement, in logarithms of the price.
struct PathDay {
    std::vector<double> level;       ///< at each minute's start, and at the day's end: 1381 values
    std::vector<double> volatility;  ///< of each minute
    std::vector<double> heat;        ///< how excited each minute is, about 1; volume follows it
};

/// The levels at the days' opens are a stationary process of the seed and the day alone. Within the day a random walk
/// whose logarithmic volatility is an autoregressive process with bursts is bent so that it ends at the next day's
/// open. One thread.
class LogPath {
 public:
    LogPath(std::uint64_t seed, std::string name, double dailyVolatility, const ActivityCurve& curve);

    std::shared_ptr<const PathDay> day(std::int64_t day);

 private:
    double levelAtOpen(std::int64_t day) const;
    std::shared_ptr<const PathDay> make(std::int64_t day) const;

    std::uint64_t seed_;
    std::string name_;
    double dailyVolatility_;
    const ActivityCurve& curve_;
    std::map<std::int64_t, std::shared_ptr<const PathDay>> days_;
};

}  // namespace vmr::relay
