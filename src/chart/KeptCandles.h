// The closed bars on the GPU.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "chart/KeptList.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr {

/// Made anew when bars came or went, one that was closed changed, or the theme. Main thread.
class KeptCandles {
 public:
    explicit KeptCandles(Gpu& gpu) : list(gpu) {}

    /// All but the last of `candles`, which are not empty and which `FormingBar` draws, relative to `origin`.
    void make(std::span<const Candle> candles, std::string_view theme, const DataOrigin& origin);

    KeptList list;
    bool dirty = true;

 private:
    std::vector<CandleVertex> vertices_;
};

}  // namespace vmr
