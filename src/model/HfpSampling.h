// The history of HF flow, redrawn apart from the rest of the pane.
#pragma once

#include <deque>
#include <optional>
#include <vector>

#include "base/Signal.h"
#include "model/HfpSample.h"

namespace vmr {

/// What of it belongs to one chart.
struct SamplesOfChart {
    std::deque<HfpSample> samples;  ///< oldest first
};

/// Main thread.
class HfpSampling : public SamplesOfChart {
 public:
    /// `gate` may be null.
    explicit HfpSampling(NoticeGate* gate = nullptr) : changed(gate), windowMin(gate, 5) {}

    Signal<> changed;           ///< of the samples
    Observable<int> windowMin;  ///< minutes that the panel shows

    /// Begins another chart, without samples.
    void open();
    /// Adds a sample of market time `now`, if there are rows, and drops what is too old. `spot` in strike units.
    void take(const std::vector<StrikeRow>& rows, std::optional<double> spot, double now);
};

}  // namespace vmr
