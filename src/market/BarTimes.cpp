#include "market/BarTimes.h"

#include <algorithm>
#include <cmath>

namespace vmr {

namespace {
double secondsOf(double timeframe) { return std::max(timeframe, 1.0) * 60; }
double startOf(const Candle& bar) { return static_cast<double>(bar.time); }
}  // namespace

double timeAtPlace(std::span<const Candle> bars, double timeframe, double place) {
    const double width = secondsOf(timeframe);
    const double bar = std::clamp(std::floor(place + 0.5), 0.0, static_cast<double>(bars.size() - 1));
    return startOf(bars[static_cast<std::size_t>(bar)]) + (place + 0.5 - bar) * width;
}

double placeOfTime(std::span<const Candle> bars, double timeframe, double time) {
    const double width = secondsOf(timeframe);
    const auto after =
        std::ranges::upper_bound(bars, time, {}, [](const Candle& bar) { return startOf(bar); }) - bars.begin();
    const auto bar = std::max<std::ptrdiff_t>(after - 1, 0);
    const double within = (time - startOf(bars[static_cast<std::size_t>(bar)])) / width;
    const bool another = after > 0 && after < std::ssize(bars);
    return static_cast<double>(bar) - 0.5 + (another ? std::min(within, 1.0) : within);
}

}  // namespace vmr
