// The oscillator of a chart.
#pragma once

#include "base/Json.h"
#include "base/Signal.h"
#include "market/OscParser.h"
#include "model/PaneWork.h"

namespace vmr {

/// What of it belongs to one chart: all.
struct OscillatorOfChart {
    explicit OscillatorOfChart(NoticeGate* gate = nullptr) : oscLines(gate) {}

    OscByMin oscByMin;
    Observable<OscLines> oscLines;
    bool rebuildScheduled = false;
};

/// Main thread.
class Oscillator : public OscillatorOfChart {
 public:
    /// `work` must outlive it; `gate` may be null.
    explicit Oscillator(PaneWork& work, NoticeGate* gate = nullptr) : OscillatorOfChart(gate), work_(work) {}

    /// Begins another chart, without minutes.
    void open() { OscillatorOfChart::operator=(OscillatorOfChart()); }
    /// The lines follow soon, at most once each 1/120 s.
    void take(JsonView payload);

 private:
    PaneWork& work_;
};

}  // namespace vmr
