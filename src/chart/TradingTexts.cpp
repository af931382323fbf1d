#include "chart/TradingTexts.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vmr::TradingTexts {

namespace {

constexpr std::string_view minus = "\u2212", dot = " \u00b7 ";

// What a price is measured from.
struct Entry {
    double price = 0;
    int direction = 1;     // 1 where a higher price is better
    std::int64_t qty = 0;  // contracts that are worth money there; 0 for none
};

std::optional<Entry> entryOf(const TradingLines& lines, const Uuid& id, std::string_view leg,
                             const std::optional<double>& last) {
    const auto order = std::ranges::find(lines.orders, id, &OrderLine::id);
    if (order == lines.orders.end()) return std::nullopt;
    if (!leg.empty()) return Entry{order->price, order->buy ? 1 : -1, order->qty};
    const auto& position = lines.position;
    if (position && (position->qty > 0) != order->buy)
        return Entry{position->avg, position->qty > 0 ? 1 : -1, std::min(order->qty, std::abs(position->qty))};
    if (!last) return std::nullopt;
    return Entry{*last, 1, 0};
}

void addSigned(std::string& out, double value, std::string_view unit, std::string_view number) {
    if (value != 0) out += value > 0 ? std::string_view("+") : minus;
    out.append(unit).append(number);
}

}  // namespace

Result result(double unrealized, double tickValue) {
    const double steps = std::round(unrealized / tickValue);
    const double value = tickValue > 0 && std::isfinite(steps) ? steps * tickValue : unrealized;
    Result out{AxisScale::fmtPrice(value), value >= 0};
    if (!out.gain || out.text.size == out.text.chars.size()) return out;
    std::copy_backward(out.text.chars.begin(), out.text.chars.begin() + static_cast<std::ptrdiff_t>(out.text.size),
                       out.text.chars.begin() + static_cast<std::ptrdiff_t>(out.text.size) + 1);
    out.text.chars[0] = '+';
    ++out.text.size;
    return out;
}

void addDistance(std::string& out, const TradingLines& lines, const Uuid& id, std::string_view leg, double price,
                 const std::optional<double>& last) {
    (out += ' ') += AxisScale::fmtPrice(price).text();
    const auto entry = entryOf(lines, id, leg, last);
    if (!entry || !(lines.tick > 0)) return;
    const double steps = (price - entry->price) / lines.tick * entry->direction;
    const double ticks = std::round(steps);
    if (!std::isfinite(ticks)) return;
    const auto whole = [](double value) {  // without ".00"
        AxisScale::Label label = AxisScale::fmtPrice(std::abs(value));
        if (label.text().ends_with(".00")) label.size -= 3;
        return label;
    };
    out += dot;
    addSigned(out, ticks, "", whole(ticks).text());
    out += " t";
    if (entry->qty == 0) return;
    const double money = std::round(steps * lines.tickValue * static_cast<double>(entry->qty) * 100) / 100;
    out += dot;
    addSigned(out, money, "$", whole(money).text());
}

double room(std::string_view text) {
    double points = 0;
    for (const char c : text) {
        if ((c & 0xC0) == 0x80) continue;  // the rest of a character
        const bool narrow = c == ' ' || c == ',' || c == '.' || c == '\xc2';
        points += narrow ? 3.6 : c == 'M' || c == 'W' || c == 'N' ? 9.5 : 7.6;
    }
    return points;
}

}  // namespace vmr::TradingTexts
