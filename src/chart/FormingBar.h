// The forming candle and the price line at its close, which ease and are made anew in each frame.
#pragma once

#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "chart/Camera.h"
#include "gpu/FrameArena.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr {

/// Main thread.
class FormingBar {
 public:
    static constexpr Rgba priceLineColor{1.0F, 1.0F, 1.0F, 0.38F};

    /// What a frame draws.
    struct Lists {
        std::optional<DynUpload> candle, priceLine;
    };

    /// The close as it is shown; NaN before the first bar.
    double close() const { return close_; }
    /// Shows `close` at once.
    void jumpTo(double close) { close_ = close; }
    /// Moves by a share of the way to `close`; from NaN at once. Tells whether it has not arrived.
    bool ease(double close, double share);

    /// The last of `candles`, which are not empty, with the eased close, relative to `origin`. Sizes in points.
    Lists write(std::span<const Candle> candles, std::string_view theme, const Camera& camera, const DataOrigin& origin,
                double viewW, double viewH, FrameArena& arena);

 private:
    std::optional<DynUpload> writeCandle(std::span<const Candle> candles, std::string_view theme, double minBody,
                                         const DataOrigin& origin, FrameArena& arena) const;
    std::optional<DynUpload> writePriceLine(const Camera& camera, const DataOrigin& origin, double viewW,
                                            FrameArena& arena);

    double close_ = std::numeric_limits<double>::quiet_NaN();
    std::vector<ChartVertex> dashes_;
};

}  // namespace vmr
