#include "base/Clock.h"

#include <chrono>
#include <cmath>
#ifdef __linux__
#include <time.h>
#endif

namespace vmr {

namespace {
double machineWall() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// Includes the time that the machine slept where the system can tell: a token is as old after a sleep, and a socket as
// silent.
double machineMonotonic() {
#ifdef __linux__
    timespec t{};
    if (clock_gettime(CLOCK_BOOTTIME, &t) == 0)
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
#endif
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
}  // namespace

SystemClock::SystemClock() : startWall_(0), startMonotonic_(0), speed_(1), machineTime_(true) {}

SystemClock::SystemClock(double startSeconds, double speed)
    : startWall_(startSeconds),
      startMonotonic_(machineMonotonic()),
      speed_(std::isfinite(speed) && speed > 0 ? speed : 1),
      machineTime_(false) {}

double SystemClock::now() const {
    return machineTime_ ? machineWall() : startWall_ + (machineMonotonic() - startMonotonic_) * speed_;
}

double SystemClock::monotonic() const { return machineMonotonic(); }

}  // namespace vmr
