#include "relay/ExchangeHolidays.h"

#include <chrono>

namespace vmr::relay {

namespace {
using namespace std::chrono;

constexpr sys_days daysOf(year_month_day date) { return sys_days{date}; }

/// Gauss's reckoning of Easter, in the Gregorian calendar.
sys_days easter(year y) {
    const int n = static_cast<int>(y);
    const int a = n % 19, b = n / 100, c = n % 100;
    const int h = (19 * a + b - b / 4 - (b - (b + 8) / 25 + 1) / 3 + 15) % 30;
    const int l = (32 + 2 * (b % 4) + 2 * (c / 4) - h - c % 4) % 7;
    const int m = (a + 11 * h + 22 * l) / 451;
    const int k = h + l - 7 * m + 114;
    return daysOf(y / month(static_cast<unsigned>(k / 31)) / day(static_cast<unsigned>(k % 31 + 1)));
}

/// A fixed date that falls on a Sunday is kept on the Monday, one on a Saturday on the Friday.
bool isKept(sys_days fixed, sys_days date) {
    const weekday day(fixed);
    return date == fixed + days(day == Sunday ? 1 : day == Saturday ? -1 : 0);
}
}  // namespace

bool isExchangeHoliday(std::int64_t number) {
    const sys_days date{days{number}};
    const year y = year_month_day(date).year();
    const auto is = [date](const auto& day) { return date == sys_days(day); };
    // a New Year on a Saturday is not kept at all: the Friday before lies in another year
    if (isKept(daysOf(y / January / 1), date)) return true;
    if (is(y / January / Monday[3]) || is(y / February / Monday[3]) || is(easter(y) - days(2))) return true;
    if (is(y / May / Monday[last]) || is(y / September / Monday[1]) || is(y / November / Thursday[4])) return true;
    if (y >= year(2022) && isKept(daysOf(y / June / 19), date)) return true;
    return isKept(daysOf(y / July / 4), date) || isKept(daysOf(y / December / 25), date);
}

}  // namespace vmr::relay
