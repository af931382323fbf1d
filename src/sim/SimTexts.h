// How the simulator writes numbers, times and prices for a person, and reads prices that a person types.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sim/SimRecords.h"

namespace vmr::sim {

/// 12,345.50: two digits after the point, "∞" for what is infinite.
std::string num(double value);
/// "42s", "7m", "1.5h".
std::string dur(double seconds);
/// A moment on the machine's own clock: "14:05", "14:05:59"; empty beyond its calendar.
std::string hhmm(Date date);
std::string hhmmss(Date date);
/// A day of `localDay`: "Nov 22".
std::string dayText(std::int64_t day);

/// 24,600 and 24,600.25: as many digits after the point as the price has, not just one, and at least so many.
std::string priceText(double price, std::size_t leastDigits = 0);
/// An open result, whole tick values (5 where none is known) so that it does not flicker below one: "+10.00".
std::string pnlText(double pnl, double tickValue);
/// The result that `pnlText` writes.
double snappedPnl(double pnl, double tickValue);

/// A typed price. "," counts as "."; blanks around it do not count. Nothing for what is no number above 0.
std::optional<double> readPrice(std::string_view text);
/// A price so that `readPrice` reads it back: no grouping.
std::string typedPrice(double price);

}  // namespace vmr::sim
