// A snapshot of the HF flow by strike.
#pragma once

#include <vector>

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
    const StrikeFlow* atmAt(double strike) const {
        for (const StrikeFlow& flow : atm)
            if (flow.strike == strike) return &flow;
        return nullptr;
    }
    bool operator==(const HfpSample&) const = default;
};

}  // namespace vmr
