#include "chart/AxisScale.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <tuple>

namespace vmr::AxisScale {

namespace {

constexpr std::int64_t halfHour = 1800;
constexpr std::int64_t daySeconds = 86400;
constexpr double labelPoints = 64.0;  // the room that one time label gets

void append(Label& label, std::string_view text) {
    const std::size_t count = std::min(text.size(), label.chars.size() - label.size);
    std::memcpy(label.chars.data() + label.size, text.data(), count);
    label.size += count;
}

void appendTwoDigits(Label& label, std::int64_t value) {
    const char digits[2] = {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
    append(label, {digits, 2});
}

double pointsPerHalfHour(const Viewport& viewport, double width, double timeframe) {
    return width / viewport.count * std::max(30.0 / std::max(timeframe, 1.0), 0.001);
}

}  // namespace

double xForIndex(const Viewport& viewport, double i, double width) {
    return viewport.count > 0 ? width * (i - viewport.first) / viewport.count : 0.0;
}

double yFor(const Viewport& viewport, double price, double height) {
    if (!(viewport.minP < viewport.maxP)) return std::numeric_limits<double>::quiet_NaN();
    return height * (1.0 - ((price - viewport.minP) * 1.8 / (viewport.maxP - viewport.minP) - 0.9)) * 0.5;
}

double priceAtY(const Viewport& viewport, double yTop, double height) {
    if (!(viewport.minP < viewport.maxP) || !(height > 0)) return std::numeric_limits<double>::quiet_NaN();
    return viewport.minP + (1.0 - 2.0 * yTop / height + 0.9) * (viewport.maxP - viewport.minP) / 1.8;
}

PriceTicks priceTicks(const Viewport& viewport, double height) {
    PriceTicks ticks;
    const double range = viewport.maxP - viewport.minP;
    if (!(range > 0) || !std::isfinite(range) || !(height > 0)) return ticks;
    const double raw = range / std::max(std::round(height / 50.0), 2.0);
    const double mag = std::pow(10.0, std::floor(std::log10(raw)));
    const double norm = raw / mag;
    const double step = mag * (norm < 1.5 ? 1.0 : norm < 3.0 ? 2.0 : norm < 7.0 ? 5.0 : 10.0);
    if (!(step > 0)) return ticks;
    ticks.step = step;
    const double margin = step + range / 18.0;
    const double start = std::ceil((viewport.minP - margin) / step);
    for (int round = 0; round < 90; ++round) {
        const double value = step * (start + round);
        if (value > viewport.maxP + margin) break;
        const double y = yFor(viewport, value, height);
        if (y >= -10.0 && y <= height + 10.0) ticks.values[ticks.count++] = value;
    }
    return ticks;
}

std::int64_t timeTickStep(const Viewport& viewport, double width, double timeframe) {
    const double px = pointsPerHalfHour(viewport, width, timeframe);
    const double need = px > 0 ? labelPoints / px : 1.0;
    std::int64_t halfHours = 1;
    for (const std::int64_t next : {2, 4, 8, 16, 24, 48, 96}) {
        if (static_cast<double>(halfHours) >= need) break;
        halfHours = next;
    }
    return halfHours * halfHour;
}

IndexRange visibleRange(const Viewport& viewport, std::size_t candleCount) {
    if (!(viewport.count > 0) || candleCount == 0 || !std::isfinite(viewport.first + viewport.count)) return {};
    const double first = std::max(std::trunc(viewport.first), 0.0);
    const double last = std::min(static_cast<double>(candleCount) - 1.0, std::trunc(viewport.first + viewport.count));
    if (last < first) return {};
    return {static_cast<std::size_t>(first), static_cast<std::size_t>(last) + 1};
}

void timeTickIndices(const Viewport& viewport, double width, std::span<const Candle> candles, double timeframe,
                     std::vector<std::size_t>& out) {
    out.clear();
    const IndexRange range = visibleRange(viewport, candles.size());
    if (range.begin == range.end) return;
    const std::int64_t step = timeTickStep(viewport, width, timeframe);
    for (std::size_t i = range.begin; i < range.end; ++i) {
        if (candles[i].time % step == 0) out.push_back(i);
    }
}

Label fmtPrice(double value) {
    Label label;
    if (!std::isfinite(value)) {
        append(label, "--");
        return label;
    }
    char raw[32];
    const bool readable = std::abs(value) < 1e15;  // more digits would not fit, nor mean anything
    const auto end = readable ? std::to_chars(raw, raw + sizeof raw, value, std::chars_format::fixed, 2).ptr
                              : std::to_chars(raw, raw + sizeof raw, value, std::chars_format::scientific, 2).ptr;
    std::string_view text(raw, static_cast<std::size_t>(end - raw));
    if (!readable) {
        append(label, text);
        return label;
    }
    if (text == "-0.00") text.remove_prefix(1);
    if (text.front() == '-') {
        append(label, "-");
        text.remove_prefix(1);
    }
    for (std::size_t left = text.size() - 3; left > 0;) {
        const std::size_t group = left % 3 == 0 ? 3 : left % 3;
        append(label, text.substr(0, group));
        text.remove_prefix(group);
        left -= group;
        if (left > 0) append(label, ",");
    }
    append(label, text);
    return label;
}

Label fmtHFPill(double value) {
    Label label;
    append(label, "HF ");
    if (!std::isfinite(value)) {
        append(label, "--");
        return label;
    }
    const double size = std::abs(value);
    const auto [divisor, digits, unit] = size >= 1e6      ? std::tuple{1e6, 2, "M"}
                                         : size >= 1000.0 ? std::tuple{1e3, 1, "K"}
                                                          : std::tuple{1.0, 0, ""};
    char text[352];  // the greatest double in units of a million
    const auto end = std::to_chars(text, text + sizeof text, value / divisor, std::chars_format::fixed, digits).ptr;
    append(label, {text, static_cast<std::size_t>(end - text)});
    append(label, unit);
    return label;
}

std::int64_t dayNumber(SessionTime& session, std::int64_t time) {
    const std::int64_t wall = time + session.offset(time);
    return wall / daySeconds - (wall % daySeconds < 0 ? 1 : 0);
}

Label fmtTime(SessionTime& session, std::int64_t time, bool date) {
    Label label;
    const std::int64_t day = dayNumber(session, time);
    if (date) {
        constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
        const std::chrono::year_month_day ymd{std::chrono::sys_days{std::chrono::days{day}}};
        append(label, months.substr((static_cast<unsigned>(ymd.month()) - 1) * 3, 3));
        append(label, " ");
        const auto number = static_cast<unsigned>(ymd.day());
        if (number < 10) {
            const char digit = static_cast<char>('0' + number);
            append(label, {&digit, 1});
        } else {
            appendTwoDigits(label, number);
        }
        return label;
    }
    const std::int64_t minutes = (time + session.offset(time) - day * daySeconds) / 60;
    appendTwoDigits(label, minutes / 60);
    append(label, ":");
    appendTwoDigits(label, minutes % 60);
    return label;
}

}  // namespace vmr::AxisScale
