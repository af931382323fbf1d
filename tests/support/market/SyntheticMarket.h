// A made-up futures market by the New York calendar, taken straight from the date library, and the lines of its
// sessions as their definition reads.
#pragma once

#include <date/tz.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "market/SRLevelsParser.h"

namespace vmr {

inline void PrintTo(const Candle& bar, std::ostream* out) {
    *out << "{" << bar.time << " " << bar.open << " " << bar.high << " " << bar.low << " " << bar.close << " v"
         << bar.volume << "}";
}

inline void PrintTo(const OverlayLine& line, std::ostream* out) {
    *out << "{" << line.price << " from " << line.startTime << " to " << line.endTime.value_or(-1) << " " << line.label
         << (line.dashed ? " dashed}" : "}");
}

namespace test {

using Bars = std::vector<Candle>;

inline const date::time_zone* const newYork = date::locate_zone("America/New_York");

inline date::local_seconds newYorkTime(std::int64_t t) {
    return newYork->to_local(date::sys_seconds(std::chrono::seconds(t)));
}

inline std::int64_t newYorkMoment(date::local_days day, int hour, int minute = 0) {
    const auto local = day + std::chrono::hours(hour) + std::chrono::minutes(minute);
    return newYork->to_sys(local, date::choose::earliest).time_since_epoch().count();
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

/// Sunday is 0.
inline unsigned newYorkWeekday(std::int64_t t) {
    return date::weekday(date::floor<date::days>(newYorkTime(t))).c_encoding();
}

inline bool futuresOpen(std::int64_t t) {
    const auto weekday = newYorkWeekday(t);
    const auto hour = newYorkSecondsOfDay(t) / 3600;
    if (weekday == 6 || (weekday == 5 && hour >= 17) || (weekday == 0 && hour < 18)) return false;
    return hour != 17;
}

inline bool stocksOpen(std::int64_t t) {
    const auto ofDay = newYorkSecondsOfDay(t);
    return newYorkWeekday(t) % 6 != 0 && ofDay >= 34200 && ofDay < 57600;
}

/// One-minute bars of a random walk while the futures market is open; a few minutes are missing, a few lack volume.
inline Bars futuresMinutes(std::int64_t from, std::int64_t to, unsigned seed, double price) {
    std::mt19937 random(seed);
    Bars bars;
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
inline std::vector<std::pair<std::int64_t, std::int64_t>> stretches() {
    using namespace date::literals;
    const auto stretch = [](date::local_days day) {
        return std::pair(newYorkMoment(day, 18), newYorkMoment(day + date::days(7), 12));
    };
    return {stretch(date::local_days(2026_y / 6 / 3)), stretch(date::local_days(2026_y / 3 / 4)),
            stretch(date::local_days(2025_y / 10 / 29))};
}

inline std::vector<OverlayLine> plainLines(const Bars& bars, const SRSessions& sessions, int hhmm) {
    std::map<std::int64_t, Bars> days;
    for (const Candle& bar : bars) days[plainSessionOpen(bar.time, hhmm)].push_back(bar);
    std::vector<OverlayLine> lines;
    for (auto day = days.begin(); day != days.end(); ++day) {
        const auto& own = day->second;
        const bool isLast = std::next(day) == days.end();
        const auto end = isLast ? std::nullopt : std::optional(std::next(day)->second.front().time);
        lines.push_back({own.front().open, own.front().time, end, "Open", true});
        if (day != days.begin()) {
            const auto& before = std::prev(day)->second;
            const auto high = std::ranges::max_element(before, {}, &Candle::high);
            const auto low = std::ranges::min_element(before, {}, &Candle::low);
            lines.push_back({before.back().close, before.back().time, end, "Prev Close", true});
            lines.push_back({high->high, high->time, end, "Prev High", false});
            lines.push_back({low->low, low->time, end, "Prev Low", false});
        }
        if (!sessions.contains(day->first)) continue;
        const auto levelEnd = isLast ? std::nullopt : std::optional(own.back().time);
        for (const auto& [side, levels] :
             {std::pair("R", sessions.at(day->first).up), {"S", sessions.at(day->first).dn}})
            for (const SRLevel& level : levels)
                lines.push_back({level.price, std::max(level.triggerTime, own.front().time), levelEnd,
                                 level.label.empty() ? side + std::to_string(level.i) : level.label, true});
    }
    return lines;
}

}  // namespace test
}  // namespace vmr
