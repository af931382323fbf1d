#include "base/Clock.h"

#include <chrono>
#include <cmath>
#include <ctime>
#ifdef __linux__
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#endif

#include "base/NumberText.h"

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

namespace {
// On machineMonotonic's clock.
double processStart() {
#ifdef __linux__
    // the 22nd field, counted from the end of the name in brackets, which is the second
    std::ifstream file("/proc/self/stat");
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    std::istringstream fields(text.substr(std::min(text.rfind(')') + 1, text.size())));
    std::string field;
    for (int i = 3; i <= 22; ++i) fields >> field;
    if (const auto ticks = parseInt(field); ticks && fields)
        return static_cast<double>(*ticks) / static_cast<double>(sysconf(_SC_CLK_TCK));
#endif
    return machineMonotonic();
}

const double startOfProcess = processStart();
}  // namespace

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double secondsSinceProcessStart() { return machineMonotonic() - startOfProcess; }

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
