// What is drawn in screen space around the chart's own layers: axes and the like.
#pragma once

#include <span>

#include "gpu/Painter.h"
#include "market/Records.h"

namespace vmr {

/// The frame being recorded, its camera settled.
struct ScreenFrame : PaintSurface {
    Viewport viewport;
    std::span<const Candle> candles;           ///< not empty
    double lastPrice = 0;                      ///< the eased close, where the price line lies
    bool rising = true;                        ///< the forming bar is up
    std::span<const BarLabel> barLabels = {};  ///< beside the strike bars; valid for the frame
    std::size_t wallsFrom = 0;                 ///< the bar at which walls begin
};

/// A layer of the renderer's frame, drawn with the very camera that the candles have. It sets pipeline and uniforms of
/// its own before it draws. Called in frames with bars only.
class ScreenLayer {
 public:
    virtual ~ScreenLayer() = default;
    /// Behind the chart's layers.
    virtual void drawBelow(ScreenFrame&) {}
    /// Over the chart's layers. Tells whether it needs another frame.
    virtual bool drawAbove(ScreenFrame& frame) = 0;
};

}  // namespace vmr
