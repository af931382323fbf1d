#include "relay/SessionCalendar.h"

namespace vmr::relay {

namespace {
constexpr std::int64_t daySeconds = 86400;
constexpr std::int64_t evening = 6 * 3600;  // the trading day begins six hours before its date

std::int64_t floorDiv(std::int64_t a, std::int64_t b) {
    const std::int64_t q = a / b;
    return q * b > a ? q - 1 : q;
}
}  // namespace

std::int64_t SessionCalendar::offset(std::int64_t t) {
    // SessionTime keeps its first answer for a UTC day. On a clock-change Sunday that answer would depend on who asks
    // first, so the day's last hour is asked first: the session opens after the change.
    session_.offset(floorDiv(t, daySeconds) * daySeconds + 23 * 3600);
    return session_.offset(t);
}

std::optional<SessionPlace> SessionCalendar::place(std::int64_t t) {
    const std::int64_t shifted = t + offset(t) + evening;
    const std::int64_t monday = floorDiv(shifted, daySeconds) + 3;  // days since a Monday
    const std::int64_t week = floorDiv(monday, 7);
    const std::int64_t weekday = monday - week * 7;
    const auto minute = static_cast<int>((shifted - floorDiv(shifted, daySeconds) * daySeconds) / 60);
    if (weekday > 4 || minute >= minutesPerDay) return std::nullopt;
    return SessionPlace{week * 5 + weekday, minute};
}

bool SessionCalendar::open(std::int64_t t, Family family) {
    offset(t);
    return session_.marketOpen(t, family != Family::futures);
}

std::int64_t SessionCalendar::dayStart(std::int64_t day) {
    const std::int64_t week = floorDiv(day, 5);
    const std::int64_t local = (week * 7 + (day - week * 5) - 3) * daySeconds - evening;
    return local - offset(local + 5 * 3600);
}

std::int64_t SessionCalendar::historyStart(std::int64_t t) {
    std::int64_t moment = t;
    for (int hours = 0; !place(moment) && hours < 72; ++hours) moment -= 3600;
    const auto found = place(moment);
    return dayStart((found ? found->day : 0) - 5);
}

std::int64_t SessionCalendar::date(std::int64_t t) { return floorDiv(t + offset(t), daySeconds); }

}  // namespace vmr::relay
