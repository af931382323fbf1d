// Takes snapshots of the HF flow by strike, the history behind the pressure panel.
#pragma once

#include <deque>
#include <optional>
#include <vector>

#include "market/FieldView.h"
#include "market/HfFlow.h"
#include "market/Records.h"

namespace vmr {

namespace Hfp {

/// Seconds of history that are kept.
inline constexpr double retention = 1800;

/// The spot in strike units: the feed's `spot`, else the last close over `etfRatio`; nothing without bars.
std::optional<double> spotPrice(const FieldView& fields, const std::vector<Candle>& candles, double etfRatio);

/// A snapshot of rows in ascending order; nothing without rows. Without a spot above 0 the band is empty.
std::optional<HfpSample> sample(const std::vector<StrikeRow>& rows, std::optional<double> spot, double t);

/// Drops what is older than `retention` once the first sample is.
void trim(std::deque<HfpSample>& samples, double now);

}  // namespace Hfp
}  // namespace vmr
