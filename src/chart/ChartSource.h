// What a chart reads of the pane that it shows.
#pragma once

#include <optional>

#include "chart/ChartContent.h"
#include "market/BarTimes.h"

namespace vmr {

/// Main thread.
class ChartSource {
 public:
    virtual ~ChartSource() = default;
    /// As of now.
    virtual ChartContent chartContent() const = 0;
    /// A drag of the chart ended; once for each.
    virtual void interactionEnded() = 0;
    /// An order was chosen on the chart while the market is closed.
    virtual void marketClosedOrder() = 0;
    /// The pointer is over this moment and price now, or over none. May come often, and alike.
    virtual void pointerOver(const std::optional<ChartSpot>&) {}
};

}  // namespace vmr
