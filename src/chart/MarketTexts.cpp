#include "chart/MarketTexts.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "chart/LabelFormat.h"

namespace vmr {

namespace {

constexpr std::int64_t minuteSeconds = 60, hourSeconds = 3600, daySeconds = 86400;

std::int64_t wholeSecond(double now) {
    constexpr auto farthest = static_cast<double>(SessionTime::farthest);
    return static_cast<std::int64_t>(std::floor(std::clamp(now, -farthest, farthest)));
}

std::int64_t floorDiv(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }

struct WallTime {
    std::int64_t day = 0, second = 0;
};

WallTime newYork(double now) {
    const std::int64_t t = wholeSecond(now);
    const std::int64_t wall = t + SessionTime::calendarOffset(t);
    const std::int64_t day = floorDiv(wall, daySeconds);
    return {day, wall - day * daySeconds};
}

}  // namespace

AxisScale::Label countdownText(double now, int timeframe, bool isStock, SessionTime& session) {
    const std::int64_t second = wholeSecond(now);
    if (!session.marketOpen(second, isStock)) return formatLabel("closed");
    const std::int64_t width = std::max<std::int64_t>(timeframe, 1) * minuteSeconds;
    const std::int64_t end = (floorDiv(second, width) + 1) * width;
    const auto left = static_cast<std::int64_t>(std::ceil(static_cast<double>(end) - now));
    const std::int64_t hours = left / hourSeconds, minutes = left / minuteSeconds % 60, seconds = left % 60;
    if (left >= daySeconds) return formatLabel("{}d {:02}h", left / daySeconds, hours % 24);
    if (hours > 0) return formatLabel("{}:{:02}:{:02}", hours, minutes, seconds);
    return formatLabel("{}:{:02}", minutes, seconds);
}

AxisScale::Label newYorkClock(double now) {
    const std::int64_t second = newYork(now).second;
    return formatLabel("NY {:02}:{:02}", second / hourSeconds, second / minuteSeconds % 60);
}

AxisScale::Label practiceMark(double now, double machineNow) {
    const std::int64_t day = newYork(now).day;
    if (day == newYork(machineNow).day) return formatLabel("practice");
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{day}}};
    return formatLabel("practice {} {}", months.substr((static_cast<unsigned>(date.month()) - 1) * 3, 3),
                       static_cast<unsigned>(date.day()));
}

}  // namespace vmr
