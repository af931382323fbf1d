#include "sim/TickGrid.h"

#include <cmath>

namespace vmr::sim {

namespace {
bool isWhole(double value) { return value >= 1 && std::abs(value - std::round(value)) < 1e-9 * value; }
}  // namespace

TickGrid::TickGrid(double tick) : tick_(tick) {
    constexpr double mostParts = 1e9;
    if (!(tick > 0) || !std::isfinite(tick)) return;
    if (isWhole(1 / tick)) {
        parts_ = std::round(1 / tick);
        return;
    }
    for (double parts = 1; parts <= mostParts; parts *= 10) {
        if (!isWhole(tick * parts)) continue;
        steps_ = std::round(tick * parts);
        parts_ = parts;
        return;
    }
}

double TickGrid::nearest(double price) const {
    if (!(tick_ > 0)) return price;
    if (parts_ == 0) return tick_ * std::round(price / tick_);
    return std::round(price * parts_ / steps_) * steps_ / parts_;
}

double TickGrid::moved(double price, double halfTicks) const {
    constexpr double close = 1e-6;  // of half a tick: what sums of doubles lose, and far less than any step
    const double at = price * parts_ / steps_ * 2;
    const double whole = std::round(at);
    if (parts_ == 0 || !(std::abs(at - whole) < close)) return price + tick_ * (halfTicks * 0.5);
    return (whole + halfTicks) * steps_ / (2 * parts_);
}

}  // namespace vmr::sim
