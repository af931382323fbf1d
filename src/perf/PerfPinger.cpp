#include "perf/PerfPinger.h"

namespace vmr {

PerfPinger::PerfPinger(Perf& perf, MainLoop& main) : thread_("perf") {
    thread_.loop().every(1.0, 0.016, [this, &perf, &main] {
        const SystemClock clock = clock_;  // the answer may come when the pinger is gone
        main.post([&perf, clock, asked = clock.monotonic()] { perf.lag((clock.monotonic() - asked) * 1000); });
    });
}

}  // namespace vmr
