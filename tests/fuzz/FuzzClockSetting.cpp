// Any text as the setting of the clock.
#include <cmath>

#include "FuzzEntry.h"
#include "market/ClockSetting.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vmr;
    const auto spec = parseClockSetting(fuzz::textOf(data, size));
    if (!spec) return 0;
    fuzz::require(std::isfinite(spec->start) && std::isfinite(spec->speed) && spec->speed > 0);
    const double start = practiceStart(spec->start);
    fuzz::require(start <= spec->start && start > spec->start - 4 * 86400);
    fuzz::require(practiceStart(start) == start);
    return 0;
}
