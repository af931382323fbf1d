// How a benchmark run was asked for.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vmr {

/// From the environment; for the flags it is enough that a variable is there.
struct BenchSettings {
    bool bench = false;     ///< VMR_PERF_BENCH or --perf-bench: force every overlay on, drive, measure, report, end
    bool baseline = false;  ///< VMR_BENCH_BASELINE: work that a drag holds back goes on
    bool live = false;      ///< VMR_BENCH_LIVE: the benchmark's drag also holds the live refresh open
    bool drive = false;     ///< VMR_PERF_DRIVE: the drag alone
    bool input = false;     ///< VMR_PERF_INPUT: report the time from an input to its picture
    double warmup = 6;      ///< VMR_BENCH_WARMUP: seconds before the measurement
    double secs = 10;       ///< VMR_BENCH_SECS: seconds of it

    bool drives() const { return bench || drive; }

    /// Numbers that cannot be read, or are not finite and at least 0, give the defaults.
    static BenchSettings fromEnvironment(const std::function<std::optional<std::string>(const char*)>& lookup);
};

}  // namespace vmr
