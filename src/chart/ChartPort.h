// What a pane's model sees of the chart that shows it.
#pragma once

#include <optional>

#include "chart/OscillatorPane.h"
#include "chart/OverlayFacts.h"
#include "chart/TradingFacts.h"
#include "market/Records.h"

namespace vmr {

class CameraPort;

/// Main thread.
class ChartPort {
 public:
    virtual ~ChartPort() = default;
    /// Something of the pane's `ChartContent` is not what it was. The chart reads it later, at most once a turn of the
    /// main loop.
    virtual void contentChanged() = 0;
    /// A drag is under way: rebuilding overlay series waits for its end.
    virtual bool interacting() const = 0;
    /// The camera of the last frame; nothing before the first one with bars.
    virtual std::optional<Viewport> viewport() const = 0;
    /// What is written on it in the last frame; nothing before the first one with bars.
    virtual std::optional<OverlayFacts> overlayFacts() const { return std::nullopt; }
    /// What it shows of the paper account; nothing where it does not trade, and before the first frame with bars.
    virtual std::optional<TradingFacts> tradingFacts() const { return std::nullopt; }
    /// What the oscillator below it shows; nothing where it is not shown.
    virtual std::optional<OscFacts> oscFacts() const { return std::nullopt; }
    /// For a linked pane; null where the chart cannot be followed.
    virtual CameraPort* cameraPort() { return nullptr; }
};

}  // namespace vmr
