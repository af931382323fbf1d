// Snapshots of the HF flow by strike, the history behind the pressure panel.
#pragma once

#include <deque>
#include <optional>
#include <vector>

#include "market/FieldView.h"
#include "market/Records.h"

namespace vmr {

/// The flow at one strike.
struct StrikeFlow {
    double strike = 0;
    double call = 0, put = 0;
    bool operator==(const StrikeFlow&) const = default;
};

/// One snapshot.
struct HfpSample {
    double t = 0;                 ///< market time, seconds since 1970
    double call = 0, put = 0;     ///< sums over all strikes
    std::vector<StrikeFlow> atm;  ///< by strike of the band, each strike once
    std::vector<double> band;     ///< the strikes nearest the spot, ascending, at most 5
    /// The flow at a strike of the band; null for any other.
    const StrikeFlow* atmAt(double strike) const;
    bool operator==(const HfpSample&) const = default;
};

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
