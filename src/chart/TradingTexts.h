// The texts on the paper account's lines.
#pragma once

#include <string>
#include <string_view>

#include "chart/AxisScale.h"
#include "chart/ChartTrading.h"

namespace vmr::TradingTexts {

/// An open result in whole ticks' worth: "+130.00" or "-5.00"; `tickValue` of one contract.
struct Result {
    AxisScale::Label text;
    bool gain = true;  ///< 0 is one
};
Result result(double unrealized, double tickValue);

/// Where a line is while it is dragged: ` 24,512.25 · −40 t · −$200`, to go behind its name. The ticks and the money
/// are what would be won or lost from the entry: for protective orders and planned legs, and for an order that closes
/// a position, for as many contracts as it closes. Any other order tells its ticks from the last price, without money.
/// `out` keeps its memory.
void addDistance(std::string& out, const TradingLines& lines, const Uuid& id, std::string_view leg, double price,
                 const std::optional<double>& last);

/// Points that a text of 11 points takes at most. From its characters alone, so that a line's badge is as wide where
/// there are no fonts, and keeps its width while only digits change.
double room(std::string_view text);

}  // namespace vmr::TradingTexts
