// Asks the main thread again and again how long it takes to answer.
#pragma once

#include <memory>

#include "base/AsioLoop.h"
#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "perf/Perf.h"

namespace vmr {

/// From a thread of its own posts to the main loop every 16 ms, the first time after a second, and tells `perf` the
/// delay. Both must outlive it. Made and destroyed on the main thread.
class PerfPinger {
 public:
    PerfPinger(Perf& perf, MainLoop& main);

 private:
    SystemClock clock_;
    AsioThread thread_;
};

}  // namespace vmr
