// Performance figures of finished trades.
#pragma once

#include <span>

#include "sim/SimRecords.h"

namespace vmr::sim {

/// All money in account currency, all results after fees.
struct Stats {
    std::int64_t count = 0;
    std::int64_t wins = 0;  ///< results above 0; exactly 0 counts as a loss
    double winRate = 0;     ///< percent
    double net = 0;
    double fees = 0;
    double profitFactor = 0;  ///< infinite when nothing was lost
    double avgWin = 0;
    double avgLoss = 0;  ///< 0 or below
    double payoff = 0;   ///< average win over the size of the average loss; 0 without losses
    double expectancy = 0;
    double maxDrawdown = 0;  ///< from the running peak of a curve that starts at 0
    double best = 0;         ///< never below 0
    double worst = 0;        ///< never above 0
    double avgDurationSec = 0;
    std::int64_t slExits = 0;
    std::int64_t tpExits = 0;
    std::int64_t manualExits = 0;
    std::vector<double> curve;  ///< running result, one point per trade, oldest first
    bool operator==(const Stats&) const = default;
};

/// The figures of `trades`, in any order; they are sorted by `closedAt`, oldest first, equal ones as given.
Stats statsOf(std::span<const Trade> trades);

}  // namespace vmr::sim
