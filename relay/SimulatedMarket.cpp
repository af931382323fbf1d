#include "relay/SimulatedMarket.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "relay/RandomStream.h"

namespace vmr::relay {

namespace {
constexpr double minuteMs = 60000;
constexpr double sameMomentChance = 0.3;
constexpr double countDeviation = 0.35;
constexpr double mostTrades = 4000;
constexpr std::size_t daysKept = 12;

/// What a minute of one instrument is made from.
struct MinuteShape {
    double first, last;  // efficient price at its ends
    double deviation;    // of the price over the whole minute
    double trades;       // expected
    double volume;       // expected
};

class SimulatedSource final : public TradeSource {
 public:
    SimulatedSource(std::uint64_t seed, const Instrument& instrument, SessionCalendar& calendar, LogPath& equities,
                    const Rush& rush)
        : seed_(seed),
          instrument_(instrument),
          name_(instrument.symbol),
          calendar_(calendar),
          equities_(equities),
          rush_(rush),
          own_(seed, name_, instrument.ownVolatility, activityOf(instrument)) {}

    void minuteTrades(std::int64_t minute, std::vector<Trade>& trades) override {
        trades.clear();
        const auto place = calendar_.place(minute);
        if (!place || !calendar_.open(minute, instrument_.family)) return;
        MinuteShape shape = day(place->day)[static_cast<std::size_t>(place->minute)];
        const double rush = minute >= rush_.fromMinute ? rush_.factor : 1;
        shape.trades *= rush;
        shape.volume *= rush;
        RandomStream random(streamKey(seed_, name_ + "/minute", minute));
        drawTimes(random, minute * 1000, drawCount(random, shape, mostTrades * std::max(1.0, rush)), trades);
        drawPrices(random, minute * 1000, shape, trades);
        drawSizes(random, shape.volume / static_cast<double>(trades.size()), trades);
    }

    std::int64_t historyStart(std::int64_t t) override { return calendar_.historyStart(t); }

 private:
    const std::vector<MinuteShape>& day(std::int64_t day) {
        auto& shapes = days_[day];
        if (!shapes.empty()) return shapes;
        shapes = makeDay(day);
        if (days_.size() > daysKept) days_.erase(days_.begin()->first == day ? std::prev(days_.end()) : days_.begin());
        return shapes;
    }

    std::vector<MinuteShape> makeDay(std::int64_t day) {
        const auto common = equities_.day(day);
        const auto own = own_.day(day);
        const ActivityCurve& curve = activityOf(instrument_);
        const auto price = [&](std::size_t m) {
            return instrument_.anchor * std::exp(instrument_.beta * common->level[m] + own->level[m]);
        };
        std::vector<MinuteShape> shapes(SessionCalendar::minutesPerDay);
        for (std::size_t m = 0; m < shapes.size(); ++m) {
            const double busy = std::sqrt(common->heat[m] * own->heat[m]) * curve.volume[m];
            shapes[m].first = price(m);
            shapes[m].last = price(m + 1);
            shapes[m].deviation =
                shapes[m].first * std::hypot(instrument_.beta * common->volatility[m], own->volatility[m]);
            shapes[m].trades = instrument_.tradesPerMinute * busy;
            shapes[m].volume = instrument_.volumePerMinute * busy;
        }
        return shapes;
    }

    std::size_t drawCount(RandomStream& random, const MinuteShape& shape, double most) const {
        if (instrument_.family == Family::indices) return static_cast<std::size_t>(instrument_.tradesPerMinute);
        const double count = shape.trades * std::exp(countDeviation * random.normal());
        return static_cast<std::size_t>(std::clamp(std::round(count), 1.0, most));
    }

    void drawTimes(RandomStream& random, std::int64_t startMs, std::size_t count, std::vector<Trade>& trades) const {
        trades.resize(count);
        if (instrument_.family == Family::indices) {  // an index is published at even intervals
            for (std::size_t i = 0; i < count; ++i)
                trades[i].timeMs = startMs + static_cast<std::int64_t>(i * 60000 / count);
            return;
        }
        gaps_.resize(count);
        double total = random.exponential();  // the pause after the last trade
        for (double& gap : gaps_) {
            gap = random.uniform() < sameMomentChance ? 0 : random.exponential();
            total += gap;
        }
        double sum = 0;
        for (std::size_t i = 0; i < count; ++i) {
            sum += gaps_[i];
            trades[i].timeMs =
                startMs + std::min<std::int64_t>(59999, static_cast<std::int64_t>(minuteMs * sum / total));
        }
    }

    /// The efficient price wanders from the minute's first to its last; each trade then hits the bid or the ask about
    /// it.
    void drawPrices(RandomStream& random, std::int64_t startMs, const MinuteShape& shape,
                    std::vector<Trade>& trades) const {
        const double scale = instrument_.ticksPerPoint;
        const double spread = instrument_.spreadTicks;
        double price = shape.first;
        double at = 0;
        for (Trade& trade : trades) {
            const double next = static_cast<double>(trade.timeMs - startMs) / minuteMs;
            if (next > at) {
                const double share = (next - at) / (1 - at);
                price += (shape.last - price) * share +
                         shape.deviation * std::sqrt((next - at) * (1 - share)) * random.quickNormal();
                at = next;
            }
            const double ticks = std::max(price * scale, 1 + spread);
            const double low = std::floor(ticks - (spread - 1) / 2);
            trade.bid = low / scale;
            trade.ask = (low + spread) / scale;
            trade.price = random.uniform() * spread < ticks - low ? trade.ask : trade.bid;
        }
    }

    static void drawSizes(RandomStream& random, double mean, std::vector<Trade>& trades) {
        if (mean <= 0) return;
        for (Trade& trade : trades) trade.size = 1 + std::floor(random.exponential() * std::max(mean - 0.5, 0.3));
    }

    std::uint64_t seed_;
    const Instrument& instrument_;
    std::string name_;
    SessionCalendar& calendar_;
    LogPath& equities_;
    Rush rush_;
    LogPath own_;
    std::map<std::int64_t, std::vector<MinuteShape>> days_;
    mutable std::vector<double> gaps_;
};
}  // namespace

SimulatedMarket::SimulatedMarket(std::uint64_t seed, SessionCalendar& calendar, Rush rush)
    : seed_(seed), calendar_(calendar), rush_(rush), equities_(seed, "equities", equityVolatility, equityActivity()) {}

std::unique_ptr<TradeSource> SimulatedMarket::source(const Instrument& instrument) {
    return std::make_unique<SimulatedSource>(seed_, instrument, calendar_, equities_, rush_);
}

}  // namespace vmr::relay
