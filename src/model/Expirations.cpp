#include "model/Expirations.h"

#include <date/tz.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "base/LocalDay.h"

namespace vmr {

namespace {
using date::local_days;

const date::time_zone* newYork() {
    static const date::time_zone* const zone = [] {
        try {
            return date::locate_zone("America/New_York");
        } catch (const std::exception&) {
            return static_cast<const date::time_zone*>(nullptr);
        }
    }();
    return zone;
}

// UTC where there is no zone.
date::local_seconds newYorkTime(double now) {
    constexpr double far = 1e11;  // keeps the year within the calendar
    const auto seconds = static_cast<std::int64_t>(std::floor(std::isfinite(now) ? std::clamp(now, -far, far) : 0));
    const date::sys_seconds moment{std::chrono::seconds(seconds)};
    return newYork() ? newYork()->to_local(moment) : date::local_seconds(moment.time_since_epoch());
}

std::string isoText(local_days day) {
    const date::year_month_day ymd(day);
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(ymd.year()), static_cast<unsigned>(ymd.month()),
                       static_cast<unsigned>(ymd.day()));
}

std::optional<int> digits(std::string_view text) {
    int value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

std::optional<date::year_month_day> parseIso(std::string_view iso) {
    if (iso.size() != 10 || iso[4] != '-' || iso[7] != '-') return std::nullopt;
    const auto year = digits(iso.substr(0, 4));
    const auto month = digits(iso.substr(5, 2));
    const auto day = digits(iso.substr(8, 2));
    if (!year || !month || !day) return std::nullopt;
    const date::year_month_day ymd = date::year(*year) / *month / *day;
    if (!ymd.ok()) return std::nullopt;
    return ymd;
}

// Monday to Friday among the days after `from` up to and including `to`.
int weekdaysBetween(local_days from, local_days to) {
    if (to <= from) return 0;
    const int days = (to - from).count();
    int count = days / 7 * 5;
    for (local_days day = to; day > to - date::days(days % 7); day -= date::days(1)) {
        const unsigned weekday = date::weekday(day).c_encoding();
        if (weekday != 0 && weekday != 6) ++count;
    }
    return count;
}

// "Wed 6/10"
std::string dayText(local_days day) {
    constexpr const char* names[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    const date::year_month_day ymd(day);
    return fmt::format("{} {}/{}", names[date::weekday(day).c_encoding()], static_cast<unsigned>(ymd.month()),
                       static_cast<unsigned>(ymd.day()));
}
}  // namespace

std::vector<std::string> computeFutureExps(const std::vector<std::string>& list, double now) {
    constexpr std::chrono::hours lateEvening(20);
    const auto local = newYorkTime(now);
    local_days base = date::floor<date::days>(local);
    if (local - base >= lateEvening) base += date::days(1);
    const unsigned weekday = date::weekday(base).c_encoding();  // Sunday 0
    const local_days monday = base + date::days(1) - date::days(weekday);
    const std::string first = isoText(base);
    const std::string weeks[2][2] = {{isoText(monday), isoText(monday + date::days(4))},
                                     {isoText(monday + date::days(7)), isoText(monday + date::days(11))}};
    std::vector<std::string> offered;
    for (const std::string& iso : list) {
        const bool inWeeks = std::any_of(std::begin(weeks), std::end(weeks),
                                         [&iso](const auto& week) { return iso >= week[0] && iso <= week[1]; });
        if (iso >= first && inWeeks) offered.push_back(iso);
    }
    std::sort(offered.begin(), offered.end());
    return offered;
}

std::string expLabel(const std::string& iso, double now) {
    const auto ymd = parseIso(iso);
    if (!ymd) return iso;
    return fmt::format("{}/{} ({}DTE)", static_cast<unsigned>(ymd->month()), static_cast<unsigned>(ymd->day()),
                       weekdaysBetween(date::floor<date::days>(newYorkTime(now)), local_days(*ymd)));
}

std::string expDteLabel(const std::string& iso, double now) {
    const auto ymd = parseIso(iso);
    if (!ymd) return iso;
    const local_days target(*ymd);
    const local_days today{date::days(localDay(now))};
    return fmt::format("{}DTE {}", weekdaysBetween(today, target), dayText(target));
}

std::string odteLabel(double now) { return "ODTE " + dayText(date::floor<date::days>(newYorkTime(now))); }

}  // namespace vmr
