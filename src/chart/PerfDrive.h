// A drag that no hand makes: moves the chart to and fro at 120 steps a second, for measurements.
#pragma once

#include <functional>

#include "base/WeakTask.h"
#include "chart/ChartInput.h"
#include "perf/BenchSettings.h"
#include "perf/Perf.h"

namespace vmr {

/// From construction to destruction, and in benchmark mode with the window of measurement: after the warm-up it opens,
/// `secs` later it is reported and `done` is called. Of several charts' drives the first one does that for all. The
/// drag begins once the chart's overlays are there, which it would hold back, or after `patience` without any. Main
/// thread.
class PerfDrive {
 public:
    static constexpr double firstTick = 2.5, tickPeriod = 0.008;  ///< seconds
    static constexpr double patience = 10;                        ///< seconds
    static constexpr int phaseTicks = 60;                         ///< the drag turns around so often

    /// All must outlive it.
    PerfDrive(ChartRenderer& renderer, ChartInput& input, MainLoop& main, Perf& perf, const BenchSettings& settings,
              std::function<void(const std::string& line)> print, std::function<void()> done);
    ~PerfDrive();
    PerfDrive(const PerfDrive&) = delete;
    PerfDrive& operator=(const PerfDrive&) = delete;

 private:
    void tick();

    ChartRenderer& renderer_;
    ChartInput& input_;
    MainLoop& main_;
    Perf& perf_;
    BenchSettings settings_;
    std::function<void(const std::string&)> print_;
    std::function<void()> done_;
    SerialQueue::TimerId driveTimer_ = SerialQueue::noTimer;
    int driveTick_ = 0, waited_ = 0;
    bool measures_ = false;  ///< it opened the process's one benchmark
    WeakTask whileThere_;
};

}  // namespace vmr
