#include "relay/DerivedMarket.h"

#include <algorithm>
#include <cmath>

#include "relay/RandomStream.h"

namespace vmr::relay {

namespace {
constexpr std::size_t sessionsKept = 16;
constexpr std::array distances{1.0, 1.75, 2.6, 3.6};  // of the levels, in those of the first

double signedUnit(std::uint64_t bits) { return static_cast<double>(bits >> 11) * 0x1.0p-52 - 1; }

/// How much of what large traders have bought in the last minutes stands: now and then one buys a lot within seconds,
/// of 1 on average, and closes it again over a minute or two. At least 0.
double bursts(std::uint64_t key, std::int64_t timeMs) {
    constexpr std::int64_t apart = 45000;
    constexpr int remembered = 8;
    constexpr std::uint64_t seldom = 3;  // one stretch in so many and one more has one
    constexpr double rise = 1500, fall = 40000;
    double sum = 0;
    for (std::int64_t knot = timeMs / apart - remembered; knot <= timeMs / apart; ++knot) {
        RandomStream random(mixedBits(key + static_cast<std::uint64_t>(knot)));
        if ((random.next() & seldom) != 0) continue;
        const double age = static_cast<double>(timeMs - knot * apart) - random.uniform() * static_cast<double>(apart);
        if (age > 0) sum += random.exponential() * (1 - std::exp(-age / rise)) * std::exp(-age / fall);
    }
    return sum;
}

MarketSession makeSession(const Instrument& instrument, std::uint64_t seed, std::int64_t start, double open) {
    MarketSession session;
    session.start = start;
    session.open = open;
    RandomStream random(streamKey(seed, instrument.symbol, start));
    const double reach = open * dailyVolatility(instrument) * 0.4;
    for (std::size_t i = 0; i < MarketSession::levels; ++i) {
        const auto onTick = [&](double price) {
            return std::round(price * instrument.ticksPerPoint) / instrument.ticksPerPoint;
        };
        const auto rung = static_cast<double>(i + 1);  // keeps levels apart where ticks are coarse
        session.up[i] =
            onTick(open + std::max(reach * distances[i] * (0.85 + 0.3 * random.uniform()), rung * instrument.tick()));
        session.down[i] =
            onTick(open - std::max(reach * distances[i] * (0.85 + 0.3 * random.uniform()), rung * instrument.tick()));
    }
    return session;
}
}  // namespace

double valueNoise(std::uint64_t key, std::int64_t timeMs, std::int64_t period) {
    const std::int64_t knot = timeMs / period;
    const double share = static_cast<double>(timeMs - knot * period) / static_cast<double>(period);
    const double a = signedUnit(mixedBits(key + static_cast<std::uint64_t>(knot)));
    const double b = signedUnit(mixedBits(key + static_cast<std::uint64_t>(knot) + 1));
    return a + (b - a) * share * share * (3 - 2 * share);
}

PricePath& DerivedMarket::path(const Instrument& instrument) {
    Place& place = places_[&instrument];
    if (!place.path) place.path.emplace(sources_(instrument));
    return *place.path;
}

std::int64_t DerivedMarket::sessionStart(std::int64_t t, std::int64_t& end) {
    std::int64_t moment = t;
    for (int hours = 0; !calendar_.place(moment) && hours < 72; ++hours) moment -= 3600;
    const auto place = calendar_.place(moment);
    const std::int64_t day = place ? place->day : 0;
    end = calendar_.dayStart(day + 1);
    return calendar_.dayStart(day);
}

const MarketSession* DerivedMarket::session(const Instrument& instrument, std::int64_t t, std::int64_t nowMs) {
    auto& known = places_[&instrument].sessions;
    auto after = known.upper_bound(t);
    if (after != known.begin() && t < std::prev(after)->second.end) return &std::prev(after)->second.session;
    std::int64_t end = 0;
    const std::int64_t start = sessionStart(t, end);
    const auto open = path(instrument).firstPrice(start, nowMs);
    if (!open) return nullptr;
    if (known.size() >= sessionsKept) known.erase(known.begin());
    MarketSession session = makeSession(instrument, seed_, start, *open);
    session.date = calendar_.date(start + 12 * 3600);
    return &known.insert_or_assign(start, Known{end, session}).first->second.session;
}

double DerivedMarket::flowUnit(const OptionSource& source, const MarketSession& session) {
    // Futures share one unit, the flow at a first level. Stocks have no levels: their unit follows the price.
    return source.instrument().family == Family::futures ? 1e8 : session.open * 15000;
}

OptionFlow DerivedMarket::flow(const OptionSource& source, const MarketSession& session, double price,
                               std::int64_t timeMs) const {
    const auto noise = [&](int stream, std::int64_t period) {
        return valueNoise(streamKey(seed_, source.name, stream), timeMs, period);
    };
    const double age = std::clamp(static_cast<double>(timeMs - session.start * 1000) / 7.2e6, 0.0, 1.0);
    const double side = price >= session.open ? session.up[0] - session.open : session.open - session.down[0];
    const double lean = std::clamp((price - session.open) / side, -6.0, 6.0);
    const double wander = 0.25 * noise(0, 2700000) + 0.1 * noise(1, 420000) + 0.03 * noise(2, 20000);
    const double net = 0.8 * lean + age * wander;
    const double busy = 0.5 + 0.8 * age + 0.15 * noise(3, 1200000);
    const double gross = std::max(busy, 1.1 * std::abs(net));
    const double unit = flowUnit(source, session);
    constexpr double burst = 0.06;
    const auto bought = [&](int stream) { return age * burst * bursts(streamKey(seed_, source.name, stream), timeMs); };
    return {unit * ((gross + net) / 2 + bought(4)), -unit * ((gross - net) / 2 + bought(5))};
}

}  // namespace vmr::relay
