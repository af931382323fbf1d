// Any text as the setting of the clock.
#include <cmath>

#include "FuzzEntry.h"
#include "market/ClockSetting.h"

void vmr::fuzz::take(std::string_view text) {
    const auto spec = parseClockSetting(text);
    if (!spec) return;
    require(std::isfinite(spec->start) && std::isfinite(spec->speed) && spec->speed > 0);
    const double start = practiceStart(spec->start);
    require(start <= spec->start && start > spec->start - 4 * 86400);
    require(practiceStart(start) == start);
}
