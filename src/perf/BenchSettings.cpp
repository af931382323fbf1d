#include "perf/BenchSettings.h"

#include <cmath>

#include "base/NumberText.h"

namespace vmr {

BenchSettings BenchSettings::fromEnvironment(const std::function<std::optional<std::string>(const char*)>& lookup) {
    BenchSettings out;
    out.bench = lookup("VMR_PERF_BENCH").has_value();
    out.baseline = lookup("VMR_BENCH_BASELINE").has_value();
    out.live = lookup("VMR_BENCH_LIVE").has_value();
    out.drive = lookup("VMR_PERF_DRIVE").has_value();
    out.input = lookup("VMR_PERF_INPUT").has_value();
    const auto seconds = [&](const char* name, double& value) {
        const auto read = parseDouble(lookup(name).value_or(""));
        if (read && std::isfinite(*read) && *read >= 0) value = *read;
    };
    seconds("VMR_BENCH_WARMUP", out.warmup);
    seconds("VMR_BENCH_SECS", out.secs);
    return out;
}

}  // namespace vmr
