#include "chart/PerfDrive.h"

#include <utility>

namespace vmr {

PerfDrive::PerfDrive(ChartRenderer& renderer, ChartInput& input, MainLoop& main, Perf& perf,
                     const BenchSettings& settings, std::function<void(const std::string&)> print,
                     std::function<void()> done)
    : renderer_(renderer),
      input_(input),
      main_(main),
      perf_(perf),
      settings_(settings),
      print_(std::move(print)),
      done_(std::move(done)) {
    driveTimer_ = main_.every(firstTick, tickPeriod, [this] { tick(); });
    print_("[perf] VMR_PERF_DRIVE active — synthetic 120 Hz drag");
    if (!settings_.bench) return;
    main_.after(settings_.warmup, whileThere_([this] {
                    print_("[bench] dataset: " + renderer_.benchDataSummary());
                    measures_ = perf_.benchBegin();
                }));
    main_.after(settings_.warmup + settings_.secs, whileThere_([this] {
                    if (!measures_) return;
                    perf_.benchEnd();
                    if (done_) done_();
                }));
}

PerfDrive::~PerfDrive() { main_.cancel(driveTimer_); }

// The price moves to and fro by a pixel, so that the view stays where it is.
void PerfDrive::tick() {
    if (driveTick_ == 0 && !renderer_.hasOverlays() && ++waited_ * tickPeriod < patience) return;
    ++driveTick_;
    if (settings_.live || !settings_.bench) input_.beginLiveRefresh();
    renderer_.setInteracting(true);
    const int phase = driveTick_ / phaseTicks;
    const double sign = phase % 2 != 0 ? -1 : 1;
    renderer_.pan(sign * renderer_.camera().visibleCount / 240);
    if (phase % 4 == 3) input_.panByPoints(driveTick_ % 2 != 0 ? 1 : -1);
}

}  // namespace vmr
