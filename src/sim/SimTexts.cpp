#include "sim/SimTexts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

#include "base/LocalDay.h"
#include "base/NumberText.h"

namespace vmr::sim {

namespace {
// "," before every third digit of the whole part.
std::string grouped(std::string digits) {
    const std::size_t first = digits.starts_with('-') ? 1 : 0;
    for (std::size_t at = std::min(digits.find('.'), digits.size()); at > first + 3;) digits.insert(at -= 3, 1, ',');
    return digits;
}

// A price of the feed has a few digits after the point; more are the noise of a calculation.
std::string plainPrice(double price, std::size_t leastDigits) {
    constexpr std::size_t mostDigits = 8;
    std::string text = fmt::format("{:.{}f}", price, mostDigits);
    const std::size_t point = text.find('.');
    const std::size_t last = text.find_last_not_of('0');
    const std::size_t digits = last > point ? last - point : 0;
    if (digits == 0 && leastDigits == 0) return text.substr(0, point);
    return text.substr(0, point + 1 + std::max<std::size_t>(digits, 2));
}

std::optional<LocalTime> wallTime(Date date) { return localTime(secondsSince1970(date)); }
}  // namespace

std::string num(double value) {
    if (std::isnan(value)) return "–";
    if (std::isinf(value)) return value > 0 ? "∞" : "-∞";
    const std::string text = fmt::format("{:.2f}", value);
    return text == "-0.00" ? "0.00" : grouped(text);
}

std::string dur(double seconds) {
    if (seconds < 60) return fmt::format("{:.0f}s", seconds);
    if (seconds < 3600) return fmt::format("{:.0f}m", seconds / 60);
    return fmt::format("{:.1f}h", seconds / 3600);
}

std::string hhmm(Date date) {
    const auto at = wallTime(date);
    return at ? fmt::format("{:02}:{:02}", at->hour, at->minute) : "";
}

std::string hhmmss(Date date) {
    const auto at = wallTime(date);
    return at ? fmt::format("{:02}:{:02}:{:02}", at->hour, at->minute, at->second) : "";
}

std::string dayText(std::int64_t day) {
    constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days(day)}};
    return fmt::format("{} {}", months[unsigned(date.month()) - 1], unsigned(date.day()));
}

std::string priceText(double price, std::size_t leastDigits) {
    return std::isfinite(price) ? grouped(plainPrice(price, leastDigits)) : num(price);
}

std::string typedPrice(double price) { return plainPrice(price, 2); }

double snappedPnl(double pnl, double tickValue) {
    constexpr double unknownRoot = 5.0;
    const double step = tickValue > 0 ? tickValue : unknownRoot;
    return step * std::round(pnl / step) + 0.0;  // never -0
}

std::string pnlText(double pnl, double tickValue) {
    const double value = snappedPnl(pnl, tickValue);
    return (value >= 0 ? "+" : "") + num(value);
}

std::optional<double> readPrice(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return std::nullopt;
    std::string plain(text.substr(first, text.find_last_not_of(blanks) + 1 - first));
    std::replace(plain.begin(), plain.end(), ',', '.');
    const auto price = parseDouble(plain);
    return price && *price > 0 && std::isfinite(*price) ? price : std::nullopt;
}

}  // namespace vmr::sim
