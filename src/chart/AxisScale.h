// Where bars and prices lie on the screen, and which of them the axes name. Pure functions over a viewport.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "market/Records.h"
#include "market/SessionTime.h"

namespace vmr::AxisScale {

/// A short text made without the heap.
struct Label {
    std::array<char, 32> chars{};
    std::size_t size = 0;
    std::string_view text() const { return {chars.data(), size}; }
};

/// Round prices in ascending order, at most 90.
struct PriceTicks {
    std::array<double, 90> values{};
    std::size_t count = 0;
    double step = 0;
    std::span<const double> span() const { return {values.data(), count}; }
};

/// Points from the left of bar `i`; 0 without a positive viewport count.
double xForIndex(const Viewport& viewport, double i, double width);

/// Points from the top of `price`; NaN without a valid price range.
double yFor(const Viewport& viewport, double price, double height);

/// The price `yTop` points below the top; NaN without a valid price range or a positive height.
double priceAtY(const Viewport& viewport, double yTop, double height);

/// The prices to label: about one in 50 points, a little beyond the view at both ends. None without a valid range.
PriceTicks priceTicks(const Viewport& viewport, double height);

/// Indices [begin, end) of the bars in view; empty (equal) when there are none.
struct IndexRange {
    std::size_t begin = 0, end = 0;
};
IndexRange visibleRange(const Viewport& viewport, std::size_t candleCount);

/// Seconds between time ticks: half hours doubled until one takes 64 points, 48 hours at most. `timeframe` in minutes.
std::int64_t timeTickStep(const Viewport& viewport, double width, double timeframe);

/// Indices of visible bars whose time is an exact multiple of the step, ascending. `out` keeps its capacity.
void timeTickIndices(const Viewport& viewport, double width, std::span<const Candle> candles, double timeframe,
                     std::vector<std::size_t>& out);

/// "21,000.25": grouped, two decimals, in any locale. "--" for what is not finite; no negative zero.
Label fmtPrice(double value);

/// A net flow in short: "HF 1.25M", "HF -12.5K", "HF 940", "HF --" for what is not finite.
Label fmtHFPill(double value);

/// New York wall time: "09:30", or "Jun 10" when `date` is set.
Label fmtTime(SessionTime& session, std::int64_t time, bool date);

/// Number of the New York calendar day that `time` falls on.
std::int64_t dayNumber(SessionTime& session, std::int64_t time);

}  // namespace vmr::AxisScale
