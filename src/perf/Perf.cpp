#include "perf/Perf.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/Log.h"

namespace vmr {

namespace {
constexpr double reportPeriod = 2.0;  // seconds
constexpr double slowTurn = 16.0;     // milliseconds
constexpr double frameBudget = 16.0;  // milliseconds
constexpr double frameAt60 = 16.7;    // milliseconds

double greatest(const std::vector<double>& list) {
    return list.empty() ? 0 : *std::max_element(list.begin(), list.end());
}

std::string spread(std::vector<double>& list) {
    const double p50 = Perf::percentile(list, 0.50), p95 = Perf::percentile(list, 0.95);
    const double p99 = Perf::percentile(list, 0.99);
    return fmt::format("p50 {:.2f}  p95 {:.2f}  p99 {:.2f}  max {:.2f}", p50, p95, p99, greatest(list));
}
}  // namespace

void Perf::Samples::add(double value) {
    if (list.size() < most) return list.push_back(value);
    list[oldest] = value;
    oldest = (oldest + 1) % most;
}

void Perf::Samples::clear() {
    list.clear();
    oldest = 0;
}

Perf::Perf(const Clock& clock, Print print) : clock_(clock), print_(std::move(print)), lastReport_(clock.monotonic()) {}

Perf& Perf::shared() {
    static const SystemClock clock;
    static Perf perf(clock, [](const std::string& line) { Log::standardOutput().line(line); });
    return perf;
}

double Perf::percentile(std::vector<double>& list, double p) {
    if (list.empty()) return 0;
    const auto at = std::min(list.size() - 1, static_cast<std::size_t>(p * static_cast<double>(list.size())));
    std::nth_element(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(at), list.end());
    return list[at];
}

Perf::Samples& Perf::named(Timings& timings, std::string_view name, std::size_t most) {
    const auto found = timings.find(name);
    return found != timings.end() ? found->second : timings.emplace(name, Samples(most)).first->second;
}

void Perf::bump(std::string_view name) {
    std::lock_guard guard(lock_);
    const auto found = counts_.find(name);
    if (found != counts_.end())
        ++found->second;
    else
        counts_.emplace(name, 1);
}

void Perf::time(std::string_view name, double ms) {
    std::lock_guard guard(lock_);
    named(timings_, name, maxSamples).add(ms);
    if (benchActive_) named(benchTimings_, name, noLimit).add(ms);
}

void Perf::lag(double ms) {
    std::lock_guard guard(lock_);
    lags_.add(ms);
    if (benchActive_) benchLags_.add(ms);
}

void Perf::turn(double ms) {
    if (ms > slowTurn) time("turn", ms);
}

void Perf::uploaded(double bytes) {
    std::lock_guard guard(lock_);
    if (benchActive_) benchUploaded_ += bytes;
}

void Perf::frame(double drawMs, const void* plot) {
    const double now = clock_.monotonic();
    std::string report;
    {
        std::lock_guard guard(lock_);
        drawTimes_.add(drawMs);
        ++frames_;
        if (benchActive_) {
            benchDrawTimes_.add(drawMs);
            ++benchFrames_;
            PlotFrames& own = benchPlots_[plot];
            if (own.lastAt > 0) own.intervals.push_back((now - own.lastAt) * 1000);
            own.lastAt = now;
        }
        if (now - lastReport_ < reportPeriod) return;
        report = takeReport(now);
    }
    print_(report);
}

// Names that fell silent leave the report, but what they were kept in stays for the next time.
std::string Perf::takeReport(double now) {
    const double elapsed = now - lastReport_;
    std::string bodies, times;
    for (auto& [name, count] : counts_) {
        if (count == 0) continue;
        bodies += fmt::format("{}{} {:.0f}", bodies.empty() ? "" : "  ", name, std::round(count / elapsed));
        count = 0;
    }
    for (auto& [name, samples] : timings_) {
        if (samples.list.empty()) continue;
        times += fmt::format("{}{} p95 {:.1f}", times.empty() ? " | ms: " : "  ", name, percentile(samples.list, 0.95));
        samples.clear();
    }
    const double p50 = percentile(drawTimes_.list, 0.50), p95 = percentile(drawTimes_.list, 0.95);
    std::string line =
        fmt::format("[perf] fps {:.0f} | draw p50 {:.2f} p95 {:.2f} | mainlag p95 {:.1f} max {:.1f} | body/s: {}{}",
                    frames_ / elapsed, p50, p95, percentile(lags_.list, 0.95), greatest(lags_.list), bodies, times);
    drawTimes_.clear();
    lags_.clear();
    frames_ = 0;
    lastReport_ = now;
    return line;
}

bool Perf::benchBegin() {
    {
        std::lock_guard guard(lock_);
        if (std::exchange(benchActive_, true)) return false;
        benchPlots_.clear();
        benchDrawTimes_.clear();
        benchLags_.clear();
        benchTimings_.clear();
        benchFrames_ = 0;
        benchUploaded_ = 0;
        benchStart_ = clock_.monotonic();
    }
    print_("[bench] window OPEN — collecting per-frame metrics…");
    return true;
}

std::vector<double> Perf::worstIntervals() {
    std::vector<double> worst;
    for (auto& [plot, frames] : benchPlots_)
        if (worst.empty() || percentile(frames.intervals, 0.95) > percentile(worst, 0.95)) worst = frames.intervals;
    return worst;
}

void Perf::benchEnd() {
    std::vector<std::string> lines;
    {
        std::lock_guard guard(lock_);
        benchActive_ = false;
        const double elapsed = clock_.monotonic() - benchStart_;
        auto intervals = worstIntervals();
        const auto late = std::count_if(intervals.begin(), intervals.end(), [](double ms) { return ms > frameAt60; });
        const double share =
            intervals.empty() ? 0 : 100.0 * static_cast<double>(late) / static_cast<double>(intervals.size());
        lines.push_back(fmt::format("[bench] DONE  {:.1f}s  frames={}  effFPS={:.1f}", elapsed, benchFrames_,
                                    elapsed > 0 ? benchFrames_ / elapsed : 0.0));
        lines.push_back("[bench] frameInterval ms : " + spread(intervals));
        lines.push_back(fmt::format("[bench]   frames >16.7ms  : {} / {}  ({:.1f}%)", late, intervals.size(), share));
        lines.push_back("[bench] draw ms (CPU)    : " + spread(benchDrawTimes_.list));
        lines.push_back("[bench] mainlag ms       : " + spread(benchLags_.list));
        for (auto& [name, samples] : benchTimings_)
            lines.push_back(fmt::format("[bench] {} ms : p50 {:.2f}  p95 {:.2f}  max {:.2f}", name,
                                        percentile(samples.list, 0.50), percentile(samples.list, 0.95),
                                        greatest(samples.list)));
        if (benchUploaded_ > 0)
            lines.push_back(
                fmt::format("[bench] uploaded {:.0f} kB a frame", benchUploaded_ / 1000 / std::max(benchFrames_, 1)));
        lines.push_back(std::string("[bench] VERDICT: frameInterval p95 ") +
                        (percentile(intervals, 0.95) < frameBudget ? "PASS ✓ (<16ms)" : "FAIL ✗ (≥16ms)"));
    }
    std::string rule;
    for (int i = 0; i < 64; ++i) rule += "═";
    print_(rule);
    for (const auto& line : lines) print_(line);
    print_(rule);
}

}  // namespace vmr
