#include "market/SessionTime.h"

#include <date/tz.h>
#include <algorithm>

#include <limits>

#include "base/Fatal.h"

namespace vmr {

namespace {
constexpr std::int64_t day = 86400;
constexpr std::int64_t openStocks = 34200;    // 09:30
constexpr std::int64_t closeStocks = 57600;   // 16:00
constexpr std::int64_t closeFutures = 61200;  // 17:00
constexpr std::int64_t openFutures = 64800;   // 18:00

std::int64_t floorDiv(std::int64_t a, std::int64_t b) {
    const std::int64_t q = a / b;
    return q * b > a ? q - 1 : q;
}

// A setting may hold any number here, so the product is made in 64 bits.
std::int64_t secondsOf(std::int64_t hhmm) { return (hhmm / 100) * 3600 + (hhmm % 100) * 60; }

const date::time_zone& newYork() {
    static const date::time_zone* const zone = [] {
        try {
            return date::locate_zone("America/New_York");
        } catch (const std::exception&) {
            fatal("the time zone America/New_York is missing; install the tzdata package");
        }
    }();
    return *zone;
}
}  // namespace

namespace {
// No arithmetic on these overflows.
std::int64_t bounded(std::int64_t t) { return std::clamp(t, -SessionTime::farthest, SessionTime::farthest); }
}  // namespace

SessionTime::SessionTime() : lastDay_(std::numeric_limits<std::int64_t>::min()) { newYork(); }

std::int64_t SessionTime::offset(std::int64_t t) {
    const std::int64_t key = floorDiv(t, day);
    if (key == lastDay_) return lastOffset_;
    auto found = offsetByDay_.find(key);
    if (found == offsetByDay_.end()) {
        const date::sys_seconds moment{std::chrono::seconds(t)};
        found = offsetByDay_.emplace(key, newYork().get_info(moment).offset.count()).first;
    }
    lastDay_ = key;
    lastOffset_ = found->second;
    return lastOffset_;
}

int SessionTime::weekday(std::int64_t t) {
    t = bounded(t);
    const std::int64_t days = floorDiv(t + offset(t), day);
    return static_cast<int>(((days + 4) % 7 + 7) % 7);
}

bool SessionTime::marketOpen(std::int64_t t, bool isStock) {
    t = bounded(t);
    const std::int64_t local = t + offset(t);
    const std::int64_t s = local - floorDiv(local, day) * day;
    const int w = weekday(t);
    if (isStock) return w >= 1 && w <= 5 && s >= openStocks && s < closeStocks;
    if (w == 6) return false;
    if (w == 0) return s >= openFutures;
    if (w == 5) return s < closeFutures;
    return s < closeFutures || s >= openFutures;
}

std::int64_t SessionTime::sessionOpenSec(std::int64_t t, int hhmm) {
    t = bounded(t);
    const std::int64_t off = offset(t);
    const std::int64_t local = t + off;
    std::int64_t open = floorDiv(local, day) * day + secondsOf(hhmm);
    if (local < open) open -= day;
    return open - off;
}

std::int64_t SessionTime::calendarOffset(std::int64_t t) {
    return newYork().get_info(date::sys_seconds{std::chrono::seconds(bounded(t))}).offset.count();
}

std::int64_t SessionTime::calendarSessionOpenSec(std::int64_t t, int hhmm) {
    t = bounded(t);
    const date::sys_seconds moment{std::chrono::seconds(t)};
    const auto local = date::make_zoned(&newYork(), moment).get_local_time();
    const auto wanted = date::floor<date::days>(local) + std::chrono::seconds(secondsOf(hhmm));
    const auto open = newYork().to_sys(wanted, date::choose::earliest).time_since_epoch().count();
    return open > t ? open - day : open;
}

}  // namespace vmr
