// Net gamma by expiration and strike around the spot price.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "market/FieldView.h"
#include "market/Records.h"

namespace vmr {

/// The surface. `net` is by expiration, then by strike; 0 where an expiration has no such strike or no
/// finite value at it.
struct Gex3DData {
    double spot = 0;
    std::vector<double> strikes;           ///< within 2 percent of the spot, ascending
    std::vector<std::string> expirations;  ///< "2026-06-16", ascending: what each row is, whatever day it is
    std::vector<std::string> expLabels;    ///< "6/16 (1DTE)", as of the day
    std::vector<std::vector<double>> net;
    bool operator==(const Gex3DData&) const = default;
};

namespace Gex3D {

/// The spot in strike units: the last close over `etfRatio`, or without bars the feed's `spot`. Nothing unless above 0.
std::optional<double> spotPrice(const std::vector<Candle>& candles, double etfRatio, const FieldView& fields);

/// The surface of aggregate fields (not overlaid with one expiration) around `spot`. Nothing without expirations or
/// with fewer than 2 strikes in the band. The first expiration takes the aggregate rows when it has none of its own.
std::optional<Gex3DData> build(double spot, const FieldView& fields, double now);

}  // namespace Gex3D
}  // namespace vmr
