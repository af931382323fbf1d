// Probes that are always on: how often, how long, how late; reported every two seconds, and for a benchmark at its end.
#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/Clock.h"
#include "perf/StartUp.h"

namespace vmr {

/// Any thread may call anything; each call is a lock and an append. All times are milliseconds.
class Perf {
 public:
    using Print = std::function<void(const std::string& line)>;

    /// `clock` must outlive the probe; `print` gets whole lines, on the thread whose call completed them.
    Perf(const Clock& clock, Print print);

    /// The process's own, which prints to standard output.
    static Perf& shared();

    /// Counts one `name`.
    void bump(std::string_view name);
    /// One duration of `name`.
    void time(std::string_view name, double ms);
    /// How late the main thread answered.
    void lag(double ms);
    /// A run of the main thread from waking to waiting; one longer than 16 ms counts as a duration of "turn".
    void turn(double ms);
    /// The end of a frame of `plot` that took `drawMs` of CPU time to record. Every two seconds it prints the report.
    /// Plots are told apart by their addresses, and each has the intervals of its window.
    void frame(double drawMs, const void* plot);
    /// Bytes given to the graphics card.
    void uploaded(double bytes);

    /// The process has come to a stage of its start: "main", "window", "bars", "drawn" and the like; at "drawn" all are
    /// printed. Main thread.
    void startUp(std::string_view stage) {
        if (const auto line = startUp_.stage(stage)) print_(*line);
    }

    /// Opens the benchmark's window of measurement. False when it is open: the process has one, and whoever opened it
    /// closes it.
    bool benchBegin();
    /// Prints the benchmark's figures and its verdict, and closes the window. Intervals and verdict are those of the
    /// plot that did worst.
    void benchEnd();

    /// The sample that a share `p` of all is below: element min(n - 1, int(p * n)) of the sorted list; 0 for none.
    /// Reorders the list.
    static double percentile(std::vector<double>& list, double p);

    /// The newest samples that a list keeps between reports, for a window that nobody draws for hours. A benchmark
    /// keeps all.
    static constexpr std::size_t maxSamples = 16384;

 private:
    struct Samples {
        explicit Samples(std::size_t limit = maxSamples) : most(limit) {}
        std::vector<double> list;
        std::size_t most;  ///< the newest that it keeps
        std::size_t oldest = 0;
        void add(double value);
        void clear();
    };
    /// One plot's share of a benchmark.
    struct PlotFrames {
        double lastAt = 0;
        std::vector<double> intervals;
    };
    static constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();
    using Timings = std::map<std::string, Samples, std::less<>>;

    static Samples& named(Timings& timings, std::string_view name, std::size_t most);
    std::string takeReport(double now);
    std::vector<double> worstIntervals();

    const Clock& clock_;
    const Print print_;
    StartUp startUp_;
    std::mutex lock_;
    std::map<std::string, int, std::less<>> counts_;
    Samples drawTimes_, lags_;
    Timings timings_;
    int frames_ = 0;
    double lastReport_;
    bool benchActive_ = false;
    Samples benchDrawTimes_{noLimit}, benchLags_{noLimit};
    std::map<const void*, PlotFrames> benchPlots_;
    Timings benchTimings_;
    int benchFrames_ = 0;
    double benchUploaded_ = 0;
    double benchStart_ = 0;
};

}  // namespace vmr
