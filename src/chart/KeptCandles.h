// The closed bars on the GPU: bodies, wicks and outlines.
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
    explicit KeptCandles(Gpu& gpu) : bodies(gpu), wicks(gpu), borders(gpu) {}

    /// All but the last of `candles`, which are not empty and which `FormingBar` draws, relative to `origin`.
    void make(std::span<const Candle> candles, std::string_view theme, const DataOrigin& origin);

    KeptList bodies, wicks;
    KeptList borders;  ///< ribbons
    bool dirty = true;

 private:
    std::vector<BoxVertex> boxes_;
    std::vector<LineVertex> ribbons_;
};

}  // namespace vmr
