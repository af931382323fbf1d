#include "relay/OptionChain.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "market/SessionTime.h"
#include "relay/ExchangeHolidays.h"
#include "relay/RandomStream.h"

namespace vmr::relay {

namespace {
constexpr int daysAhead = 21;
constexpr double sharesPerContract = 100;
constexpr double secondsPerYear = 365.0 * 86400;
constexpr double shortestLife = 1200;  // seconds; shorter lives would let gamma grow without limit at the close
constexpr double leastHalf = 32, mostHalf = 110, wantedStrikes = 120;
constexpr std::array niceSteps{0.05, 0.1, 0.25, 0.5, 1.0, 2.5, 5.0, 10.0, 25.0, 50.0, 100.0, 250.0, 500.0, 1000.0};
constexpr double weeklyBoost = 3.0, monthlyBoost = 1.6;
constexpr double frontBoost = 1.5;  // what is about to expire is traded the most

std::string isoDate(std::int64_t date) {
    const std::chrono::year_month_day day{std::chrono::sys_days{std::chrono::days{date}}};
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u", static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    return text.data();
}

/// Monday 0 to Sunday 6.
std::int64_t weekdayOf(std::int64_t date) { return ((date + 3) % 7 + 7) % 7; }

/// The weekly expiration: on Friday, or on Thursday where the Friday is a holiday.
bool isWeekly(std::int64_t date) {
    const std::int64_t weekday = weekdayOf(date);
    return weekday == 4 ? !isExchangeHoliday(date) : weekday == 3 && isExchangeHoliday(date + 1);
}

bool isMonthly(std::int64_t date) {
    const std::int64_t friday = date + 4 - weekdayOf(date);
    const std::chrono::year_month_day day{std::chrono::sys_days{std::chrono::days{friday}}};
    const auto dayOfMonth = static_cast<unsigned>(day.day());
    return isWeekly(date) && dayOfMonth > 14 && dayOfMonth < 22;
}

bool isMultiple(double strike, double of) { return std::abs(strike / of - std::round(strike / of)) < 1e-9; }

/// How much rounder strikes draw more interest.
double roundness(double strike, double step) {
    if (isMultiple(strike, 20 * step)) return 6;
    if (isMultiple(strike, 10 * step)) return 3.5;
    return isMultiple(strike, 5 * step) ? 2 : 1;
}

double normalDensity(double x) { return 0.3989422804014327 * std::exp(-0.5 * x * x); }
double normalBelow(double x) { return 0.5 * std::erfc(-x * 0.7071067811865476); }

std::int64_t whole(double value) { return static_cast<std::int64_t>(std::llround(value)); }

/// Black-Scholes without interest, for one expiration at one moment.
struct Pricing {
    double spot, logSpot, rootLife;
    double d1(double logStrike, double volatility) const {
        const double deviation = volatility * rootLife;
        return (logSpot - logStrike) / deviation + 0.5 * deviation;
    }
    double gamma(double d, double volatility) const { return normalDensity(d) / (spot * volatility * rootLife); }
    /// Dollars of delta that a move of 1% adds, per unit of gamma and contract.
    double gammaDollars() const { return sharesPerContract * spot * spot * 0.01; }
};

Pricing pricing(double spot, std::int64_t expiry, std::int64_t timeMs) {
    const double life = std::max(static_cast<double>(expiry) - static_cast<double>(timeMs) / 1000, shortestLife);
    return {spot, std::log(spot), std::sqrt(life / secondsPerYear)};
}
}  // namespace

StrikeSums& StrikeSums::operator+=(const StrikeSums& other) {
    callGex += other.callGex;
    putGex += other.putGex;
    callDex += other.callDex;
    putDex += other.putDex;
    callHf += other.callHf;
    putHf += other.putHf;
    callOI += other.callOI;
    putOI += other.putOI;
    return *this;
}

StrikeSums totalOf(const StrikeTable& table) {
    StrikeSums sum;
    for (const StrikeSums& row : table.rows) sum += row;
    return sum;
}

OptionChain::OptionChain(const OptionSource& source, const MarketSession& session, double ratio, std::uint64_t seed)
    : source_(source),
      session_(session),
      ratio_(ratio),
      seed_(seed),
      spot_(session.open / ratio),
      volatility_(dailyVolatility(source.instrument()) * std::sqrt(252.0)) {
    listStrikes();
    listExpirations();
}

void OptionChain::listStrikes() {
    const double span = 2 * source_.reach * spot_;
    double step = niceSteps.front();
    for (const double nice : niceSteps) {
        step = nice;
        if (span / step <= wantedStrikes) break;
    }
    const auto half = static_cast<int>(std::clamp(std::round(source_.reach * spot_ / step), leastHalf, mostHalf));
    const double middle = std::round(spot_ / step);
    for (int i = -half; i <= half; ++i) {
        const double strike = std::round((middle + i) * step * 100) / 100;
        if (strike <= 0) continue;
        strikes_.push_back(strike);
        logStrikes_.push_back(std::log(strike));
    }
}

void OptionChain::listExpirations() {
    double shares = 0;
    for (int ahead = 0; ahead < daysAhead; ++ahead) {
        const std::int64_t date = session_.date + ahead;
        if (weekdayOf(date) > 4 || isExchangeHoliday(date) || (!source_.dailies && !isWeekly(date))) continue;
        dates_.push_back(isoDate(date));
        expirations_.push_back(list(date, ahead));
        shares += expirations_.back().share;
    }
    for (Expiration& one : expirations_) one.share /= shares;
}

OptionChain::Expiration OptionChain::list(std::int64_t date, int ahead) const {
    Expiration one;
    // 16:00 on its date, which a clock change moves: late in the evening UTC that was the last one
    one.expiry = SessionTime::calendarSessionOpenSec(date * 86400 + 23 * std::int64_t{3600}, 1600);
    one.share = (isWeekly(date) ? 1.5 : 1.0) / (1.0 + 1.6 * ahead);
    // Weeklies list every strike; other dates list those within a few standard deviations of the price.
    const double width =
        isWeekly(date) ? 1.0 : std::max(0.35 * source_.reach, 4.5 * volatility_ * std::sqrt((ahead + 1) / 365.0));
    const auto near = [&](double strike) { return std::abs(strike / spot_ - 1) <= width; };
    const auto first = std::find_if(strikes_.begin(), strikes_.end(), near);
    const auto last = std::find_if_not(first, strikes_.end(), near);
    one.first = static_cast<std::size_t>(first - strikes_.begin());
    for (auto strike = first; strike != last; ++strike)
        one.strikes.push_back(listing(static_cast<std::size_t>(strike - strikes_.begin()), date, ahead));
    return one;
}

OptionChain::Listing OptionChain::listing(std::size_t strike, std::int64_t date, int ahead) const {
    const double at = strikes_[strike];
    const double step = strikes_[1] - strikes_[0];
    const double away = at / spot_ - 1;
    // Open interest belongs to the contract (`random`) and shifts a little from day to day (`today`).
    const std::uint64_t contract = streamKey(seed_, source_.name, date * 1000003 + whole(at * 100));
    RandomStream random(contract), today(mixedBits(contract ^ static_cast<std::uint64_t>(session_.date)));
    double size =
        900 * roundness(at, step) * (isWeekly(date) ? weeklyBoost : 1.0) * (isMonthly(date) ? monthlyBoost : 1);
    size *= 1 + frontBoost / (1 + ahead);
    size *= std::exp(0.6 * random.quickNormal() + 0.08 * today.quickNormal()) / (1 + 0.03 * ahead);
    const double wide = 0.45 * source_.reach;
    const auto bell = [&](double centre) { return std::exp(-0.5 * std::pow((away - centre) / wide, 2)); };
    const double deviation = away / (volatility_ * std::sqrt((ahead + 1.0) / 365.0));
    const double smile = std::clamp(1 - 0.06 * deviation + 0.015 * deviation * deviation, 0.7, 2.0);
    const double above = 1 / (1 + std::exp(-away / (0.05 * source_.reach)));  // calls are written above the price
    const double calls = size * bell(0.25 * source_.reach) * (0.25 + above) * (0.8 + 0.4 * random.uniform());
    const double puts = 1.2 * size * bell(-0.3 * source_.reach) * (1.25 - above) * (0.8 + 0.4 * random.uniform());
    return {std::round(calls), std::round(puts), volatility_ * smile};
}

void OptionChain::weigh(double spot, std::int64_t timeMs, FlowWeights& weights) const {
    const double width = std::max(0.6 * dailyVolatility(source_.instrument()) * spot, strikes_[1] - strikes_[0]);
    weights.call.resize(strikes_.size());
    weights.put.resize(strikes_.size());
    for (std::size_t i = 0; i < strikes_.size(); ++i) {
        const double away = (strikes_[i] - spot) / width;
        const auto weight = [&](double centre, std::int64_t side) {
            const double square = (away - centre) * (away - centre);
            const double bell = 1.0 / (1 + square * square);
            const std::uint64_t key =
                mixedBits(seed_ ^ static_cast<std::uint64_t>(whole(strikes_[i] * 100) * 2 + side));
            return bell * (1 + 0.7 * valueNoise(key ^ static_cast<std::uint64_t>(session_.start), timeMs, 600000));
        };
        weights.call[i] = weight(0.5, 1);
        weights.put[i] = weight(-0.5, 0);
    }
}

void OptionChain::state(double chartPrice, std::int64_t timeMs, const OptionFlow& flow, ChainState& out) const {
    out.spot = chartPrice / ratio_;
    out.all.first = 0;
    out.all.rows.assign(strikes_.size(), {});
    out.byExpiration.resize(expirations_.size());
    weigh(out.spot, timeMs, weights_);
    for (std::size_t e = 0; e < expirations_.size(); ++e) {
        const Expiration& one = expirations_[e];
        const Pricing model = pricing(out.spot, one.expiry, timeMs);
        StrikeTable& table = out.byExpiration[e];
        table.first = one.first;
        table.rows.resize(one.strikes.size());
        double calls = 0, puts = 0;
        for (std::size_t i = 0; i < one.strikes.size(); ++i) {
            calls += weights_.call[one.first + i];
            puts += weights_.put[one.first + i];
        }
        for (std::size_t i = 0; i < one.strikes.size(); ++i) {
            const Listing& listed = one.strikes[i];
            const std::size_t at = one.first + i;
            const double d = model.d1(logStrikes_[at], listed.volatility);
            const double gamma = model.gamma(d, listed.volatility) * model.gammaDollars();
            const double delta = normalBelow(d);
            const double dollars = sharesPerContract * out.spot;
            table.rows[i] = {whole(gamma * listed.callOI),
                             whole(gamma * listed.putOI),
                             whole(delta * listed.callOI * dollars),
                             whole((delta - 1) * listed.putOI * dollars),
                             whole(flow.call * one.share * weights_.call[at] / calls),
                             whole(flow.put * one.share * weights_.put[at] / puts),
                             whole(listed.callOI),
                             whole(listed.putOI)};
            out.all.rows[at] += table.rows[i];
        }
    }
}

void OptionChain::netGamma(double chartPrice, std::int64_t timeMs, std::vector<double>& out) const {
    const double spot = chartPrice / ratio_;
    out.assign(strikes_.size(), 0);
    for (const Expiration& one : expirations_) {
        const Pricing model = pricing(spot, one.expiry, timeMs);
        for (std::size_t i = 0; i < one.strikes.size(); ++i) {
            const Listing& listed = one.strikes[i];
            const double d = model.d1(logStrikes_[one.first + i], listed.volatility);
            out[one.first + i] +=
                model.gamma(d, listed.volatility) * model.gammaDollars() * (listed.callOI - listed.putOI);
        }
    }
}

void OptionChain::netFlow(double chartPrice, std::int64_t timeMs, const OptionFlow& flow,
                          std::vector<double>& out) const {
    weigh(chartPrice / ratio_, timeMs, weights_);
    double calls = 0, puts = 0;
    for (std::size_t i = 0; i < strikes_.size(); ++i) {
        calls += weights_.call[i];
        puts += weights_.put[i];
    }
    out.resize(strikes_.size());
    for (std::size_t i = 0; i < strikes_.size(); ++i)
        out[i] = flow.call * weights_.call[i] / calls + flow.put * weights_.put[i] / puts;
}

ChainLevels OptionChain::levels(const StrikeTable& table, double spot) const {
    ChainLevels found;
    std::int64_t mostCall = 0, mostPut = 0;
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        const StrikeSums& row = table.rows[i];
        const double strike = strikes_[table.first + i];
        if (row.callGex > mostCall) mostCall = row.callGex, found.callWall = strike;
        if (row.putGex > mostPut) mostPut = row.putGex, found.putWall = strike;
        const bool flips = i > 0 && row.netGex() > 0 && table.rows[i - 1].netGex() <= 0;
        if (flips && (found.gammaFlip == 0 || std::abs(strike - spot) < std::abs(found.gammaFlip - spot)))
            found.gammaFlip = strike;
    }
    return found;
}

}  // namespace vmr::relay
