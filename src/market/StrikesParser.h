// The per-strike rows of the derived fields, and the order of strikes.
#pragma once

#include <cmath>
#include <optional>
#include <vector>

#include "market/FieldView.h"
#include "market/Records.h"

namespace vmr {

/// Ascending order of strikes; NaN, which text in a payload can be, comes last.
inline bool strikeBefore(double a, double b) { return a < b || (std::isnan(b) && !std::isnan(a)); }

namespace StrikesParser {

/// The rows under `gexByStrike`, ascending by strike, in the source's own strike units; of equal strikes in the order
/// given. A row without a readable strike is left out, any other missing number is 0. Empty when the field is no array
/// of objects. Pure; any thread.
std::vector<StrikeRow> parse(const FieldView& fields);

/// The totals over all strikes; a missing one is 0.
HudMetrics totals(const FieldView& fields);

}  // namespace StrikesParser
}  // namespace vmr
