// The line of values at a chart's top left: a bar's prices, and the options at a price.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "chart/AxisScale.h"
#include "market/BarTimes.h"
#include "market/Records.h"

namespace vmr {

struct ChartContent;

/// How a value of the line is coloured.
enum class HudTone : std::uint8_t {
    none,  ///< not known: a dash
    plain,
    rise,
    fall,
    hfBlue,
    hfRed,
};

/// One label with its value.
struct HudSegment {
    std::string_view label;  ///< a literal; empty where the value explains itself
    AxisScale::Label value;  ///< empty: the segment is left out
    HudTone tone = HudTone::none;
};

/// Open, high, low, close and change of one bar, then options and volume. Made without the heap.
struct HudText {
    static constexpr std::size_t ofBar = 5;  ///< segments about the bar; the others are the second line's
    std::array<HudSegment, 11> segments;
    std::optional<double> strike;  ///< whose options it tells; nothing for the totals

    /// The whole line: segments two blanks apart, groups four.
    std::string text() const;
};

/// Sign and unit by size: "-1.5K", "2.0M", "3.1B", "0". A dash for what is not finite.
AxisScale::Label fmtNum(double v);
/// "2k", "1.25M", "3.10B", "850". A dash for 0 and for what is not finite.
AxisScale::Label fmtHF(double v);

/// The row whose strike lies nearest to a chart price, if within one step of the strikes there; of several rows of one
/// strike the last. Null for none. Rows may come in any order.
const StrikeRow* strikeNear(std::span<const StrikeRow> rows, double ratio, double price);

/// Of the bar under the pointer and the strike at its price; without a pointer of the last bar and all strikes. A
/// pointer beside the bars tells of the last one.
HudText hudText(const ChartContent& content, const std::optional<ChartSpot>& pointer);

}  // namespace vmr
