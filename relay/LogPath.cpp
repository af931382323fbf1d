#include "relay/LogPath.h"

#include <cmath>

#include "relay/RandomStream.h"

namespace vmr::relay {

namespace {
constexpr int memoryDays = 250;  // older days weigh 0.98^250, under 1 %
constexpr double dailyDecay = 0.98;
constexpr double heatPersistence = 0.98;  // per minute
constexpr double heatDeviation = 0.45;
constexpr double burstChance = 0.004;
constexpr double burstHeight = 1.0;
constexpr std::size_t daysKept = 12;
}  // namespace

LogPath::LogPath(std::uint64_t seed, std::string name, double dailyVolatility, const ActivityCurve& curve)
    : seed_(seed), name_(std::move(name)), dailyVolatility_(dailyVolatility), curve_(curve) {}

std::shared_ptr<const PathDay> LogPath::day(std::int64_t day) {
    auto& slot = days_[day];
    if (slot) return slot;
    auto made = slot = make(day);
    if (days_.size() > daysKept) days_.erase(days_.begin()->first == day ? std::prev(days_.end()) : days_.begin());
    return made;
}

double LogPath::levelAtOpen(std::int64_t day) const {
    double level = 0;
    double weight = dailyVolatility_;
    for (int back = 0; back < memoryDays; ++back, weight *= dailyDecay) {
        level += weight * RandomStream(streamKey(seed_, name_ + "/open", day - back)).normal();
    }
    return level;
}

std::shared_ptr<const PathDay> LogPath::make(std::int64_t day) const {
    constexpr int count = SessionCalendar::minutesPerDay;
    auto path = std::make_shared<PathDay>();
    path->level.resize(count + 1);
    path->volatility.resize(count);
    path->heat.resize(count);

    RandomStream random(streamKey(seed_, name_ + "/day", day));
    double logHeat = heatDeviation * random.normal();
    const double step = heatDeviation * std::sqrt(1 - heatPersistence * heatPersistence);
    double walk = 0;
    std::vector<double> variance(count + 1);
    for (int m = 0; m < count; ++m) {
        logHeat = heatPersistence * logHeat + step * random.normal();
        if (random.uniform() < burstChance) logHeat += burstHeight;
        path->heat[m] = std::exp(logHeat - heatDeviation * heatDeviation);
        path->volatility[m] = dailyVolatility_ * curve_.volatility[m] * path->heat[m];
        path->level[m] = walk;
        walk += path->volatility[m] * random.normal();
        variance[m + 1] = variance[m] + path->volatility[m] * path->volatility[m];
    }
    path->level[count] = walk;

    const double open = levelAtOpen(day);
    const double miss = levelAtOpen(day + 1) - open - walk;
    for (int m = 0; m <= count; ++m) path->level[m] += open + miss * variance[m] / variance[count];
    return path;
}

}  // namespace vmr::relay
