// What a chart reads of the pane that it shows.
#pragma once

#include "chart/ChartContent.h"

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
};

}  // namespace vmr
