#include "base/LocalDay.h"

#include <chrono>
#include <cmath>
#include <ctime>

namespace vmr {

namespace {
bool toLocal(std::time_t time, std::tm& local) {
#ifdef _WIN32
    return ::localtime_s(&local, &time) == 0;
#else
    return ::localtime_r(&time, &local) != nullptr;
#endif
}
}  // namespace

std::int64_t localDay(double seconds) {
    constexpr double far = 1e11;  // keeps the year within the calendar
    const double whole = std::floor(std::fmin(std::fmax(seconds, -far), far));
    std::tm local{};
    if (!toLocal(static_cast<std::time_t>(whole), local)) return static_cast<std::int64_t>(std::floor(whole / 86400));
    const std::chrono::year_month_day date(std::chrono::year(local.tm_year + 1900),
                                           std::chrono::month(static_cast<unsigned>(local.tm_mon + 1)),
                                           std::chrono::day(static_cast<unsigned>(local.tm_mday)));
    return std::chrono::sys_days(date).time_since_epoch().count();
}

std::optional<LocalTime> localTime(double seconds) {
    constexpr double far = 1e11;
    std::tm local{};
    if (!(std::abs(seconds) < far) || !toLocal(static_cast<std::time_t>(std::floor(seconds)), local))
        return std::nullopt;
    return LocalTime{local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

}  // namespace vmr
