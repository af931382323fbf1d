// A made-up futures market by the New York calendar, taken straight from the date library.
#pragma once

#include <date/tz.h>

#include <cstdint>
#include <random>
#include <vector>

#include "market/Records.h"

namespace vmr::test {

inline const date::time_zone* newYork() {
    static const date::time_zone* const zone = date::locate_zone("America/New_York");
    return zone;
}

inline date::local_seconds newYorkTime(std::int64_t t) {
    return newYork()->to_local(date::sys_seconds(std::chrono::seconds(t)));
}

inline std::int64_t newYorkMoment(date::local_days day, int hour, int minute = 0) {
    const auto local = day + std::chrono::hours(hour) + std::chrono::minutes(minute);
    return newYork()->to_sys(local, date::choose::earliest).time_since_epoch().count();
}

inline std::int64_t newYorkSecondsOfDay(std::int64_t t) {
    const auto local = newYorkTime(t);
    return (local - date::floor<date::days>(local)).count();
}

/// The latest moment not after `t` at which New York's clock showed hh:mm, give or take a clock change since.
inline std::int64_t plainSessionOpen(std::int64_t t, int hhmm) {
    const auto day = date::floor<date::days>(newYorkTime(t));
    const std::int64_t open = newYorkMoment(day, hhmm / 100, hhmm % 100);
    return open > t ? open - 86400 : open;
}

inline bool futuresOpen(std::int64_t t) {
    const auto local = newYorkTime(t);
    const auto day = date::floor<date::days>(local);
    const auto hour = std::chrono::duration_cast<std::chrono::hours>(local - day).count();
    const unsigned weekday = date::weekday(day).c_encoding();
    if (weekday == 6 || (weekday == 5 && hour >= 17) || (weekday == 0 && hour < 18)) return false;
    return hour != 17;
}

inline bool stocksOpen(std::int64_t t) {
    const unsigned weekday = date::weekday(date::floor<date::days>(newYorkTime(t))).c_encoding();
    const std::int64_t ofDay = newYorkSecondsOfDay(t);
    return weekday >= 1 && weekday <= 5 && ofDay >= 34200 && ofDay < 57600;
}

/// One-minute bars of a random walk while the futures market is open; a few minutes are missing, a few lack volume.
inline std::vector<Candle> futuresMinutes(std::int64_t from, std::int64_t to, unsigned seed, double price) {
    std::mt19937 random(seed);
    std::vector<Candle> bars;
    for (std::int64_t t = from / 60 * 60; t < to; t += 60) {
        if (!futuresOpen(t) || random() % 20 == 0) continue;
        const auto tick = [&random](int span) {
            return 0.25 * static_cast<double>(random() % static_cast<unsigned>(span));
        };
        const double close = price + tick(21) - 2.5;
        bars.push_back({t, price, std::max(price, close) + tick(6), std::min(price, close) - tick(6), close,
                        random() % 10 == 0 ? 0.0 : 1 + static_cast<double>(random() % 900)});
        price = close;
    }
    return bars;
}

/// Stretches with six or more sessions and a weekend: a quiet one, and one over each clock change.
struct Stretch {
    std::int64_t from, to;
};
inline std::vector<Stretch> stretches() {
    using namespace date::literals;
    const auto stretch = [](date::year_month_day from) {
        const date::local_days day(from);
        return Stretch{newYorkMoment(day, 18), newYorkMoment(day + date::days(7), 12)};
    };
    return {stretch(2026_y / 6 / 3), stretch(2026_y / 3 / 4), stretch(2025_y / 10 / 29)};
}

}  // namespace vmr::test
