#include "sim/SimStats.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vmr::sim {

namespace {
std::vector<const Trade*> oldestFirst(std::span<const Trade> trades) {
    std::vector<const Trade*> sorted;
    sorted.reserve(trades.size());
    for (const Trade& trade : trades) sorted.push_back(&trade);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Trade* a, const Trade* b) { return a->closedAt < b->closedAt; });
    return sorted;
}

void countExit(Stats& stats, const Trade& trade) {
    if (trade.exitTag == slTag)
        ++stats.slExits;
    else if (trade.exitTag == tpTag)
        ++stats.tpExits;
    else
        ++stats.manualExits;
}

void setRatios(Stats& stats, double grossWin, double grossLoss, double duration) {
    const auto count = static_cast<double>(stats.count);
    const auto wins = static_cast<double>(stats.wins);
    const double losses = count - wins;
    stats.winRate = wins / count * 100;
    if (grossLoss > 0)
        stats.profitFactor = grossWin / grossLoss;
    else if (grossWin > 0)
        stats.profitFactor = std::numeric_limits<double>::infinity();
    if (wins > 0) stats.avgWin = grossWin / wins;
    if (losses > 0) stats.avgLoss = (0 - grossLoss) / losses;  // never -0
    if (losses > 0 && stats.avgLoss != 0) stats.payoff = stats.avgWin / std::abs(stats.avgLoss);
    stats.expectancy = stats.net / count;
    stats.avgDurationSec = duration / count;
}
}  // namespace

Stats statsOf(std::span<const Trade> trades) {
    Stats stats;
    if (trades.empty()) return stats;
    stats.count = static_cast<std::int64_t>(trades.size());
    stats.curve.reserve(trades.size());
    double grossWin = 0, grossLoss = 0, duration = 0, peak = 0;
    for (const Trade* trade : oldestFirst(trades)) {
        const double net = trade->pnl - trade->fees;
        if (net > 0) {
            ++stats.wins;
            grossWin += net;
        } else {
            grossLoss -= net;
        }
        stats.best = std::max(stats.best, net);
        stats.worst = std::min(stats.worst, net);
        duration += trade->closedAt - trade->openedAt;
        countExit(stats, *trade);
        stats.net += net;
        stats.fees += trade->fees;
        peak = std::max(peak, stats.net);
        stats.maxDrawdown = std::max(stats.maxDrawdown, peak - stats.net);
        stats.curve.push_back(stats.net);
    }
    setRatios(stats, grossWin, grossLoss, duration);
    return stats;
}

}  // namespace vmr::sim
