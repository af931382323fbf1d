#include "chart/HfPressure.h"

#include <algorithm>
#include <cmath>

#include "base/NumberText.h"
#include "chart/LabelFormat.h"
#include "market/SessionTime.h"

namespace vmr::HfPressure {

namespace {
constexpr std::size_t mostTicks = 400;  // of whatever times the samples have

// A round number near a quarter of the peak.
double niceStep(double peak) {
    const double raw = peak * 0.25;
    const double mag = std::pow(10.0, std::floor(std::log10(raw)));
    const double norm = raw / mag;
    return mag * (norm < 1.5 ? 1 : norm < 3 ? 2 : norm < 7 ? 5 : 10);
}
}  // namespace

Switches switchesOf(std::string_view words) {
    Switches out;
    out.view = words.find("noview") == std::string_view::npos;
    while (!words.empty()) {
        const std::size_t comma = std::min(words.find(','), words.size());
        const std::string_view word = words.substr(0, comma);
        if (word == "nostats") out.stats = false;
        if (word == "nochart") out.chart = false;
        if (word == "noladder") out.ladder = false;
        if (word == "noanim") out.anim = false;
        words.remove_prefix(std::min(comma + 1, words.size()));
    }
    return out;
}

void decimate(Samples& samples, std::size_t maxPoints) {
    const std::size_t count = samples.size();
    if (maxPoints >= count) return;
    if (maxPoints == 0) return samples.clear();
    const HfpSample* const newest = samples.back();
    const double stride = static_cast<double>(count) / static_cast<double>(maxPoints);
    std::size_t kept = 0;
    double position = 0;
    for (std::size_t i = 0; i < count; i = static_cast<std::size_t>(position)) {
        samples[kept++] = samples[i];  // never ahead of `i`: a stride is above 1
        position += stride;
    }
    samples.resize(kept);
    if (samples.back()->t != newest->t) samples.push_back(newest);
}

void visible(const std::deque<HfpSample>& samples, double now, int windowMin, Samples& out) {
    out.clear();
    const double from = now - windowMin * 60.0;
    for (const HfpSample& sample : samples)
        if (sample.t >= from) out.push_back(&sample);
    decimate(out, mostPoints);
}

Label fmt(double value) {
    if (!std::isfinite(value)) return formatLabel("{}", unknown);
    const double a = std::abs(value);
    const char* const sign = value < 0 ? "-" : "";
    if (a >= 1e9) return formatLabel("{}{:.2f}B", sign, a / 1e9);
    if (a >= 1e6) return formatLabel("{}{:.1f}M", sign, a / 1e6);
    if (a >= 1000) return formatLabel("{}{:.0f}K", sign, a / 1000);
    return formatLabel("{}{:.0f}", a > 0.5 ? sign : "", a);
}

Label strikeText(double strike) { return formatLabel("{}", doubleText(strike)); }

Label shareText(double percent) {
    if (!std::isfinite(percent)) return formatLabel("{}", unknown);
    return formatLabel("{:.1f}%", percent);
}

Readouts readouts(const Samples& samples) {
    if (samples.empty()) return {};
    const HfpSample& last = *samples.back();
    Readouts out{0, 0, last.call, last.put, true};
    const double sum = std::abs(last.call) + std::abs(last.put);
    if (sum > 0) {
        out.callShare = std::abs(last.call) / sum * 100;
        out.putShare = std::abs(last.put) / sum * 100;
    }
    return out;
}

double timeStep(double span) { return span <= 95 ? 15 : span <= 330 ? 60 : span <= 760 ? 120 : 300; }

Scale scale(const Samples& samples) {
    Scale out;
    if (samples.size() < 2 || !(samples.back()->t > samples.front()->t)) return out;
    out.t0 = samples.front()->t;
    out.span = samples.back()->t - out.t0;
    out.timeStep = timeStep(out.span);
    for (const HfpSample* sample : samples)
        out.peak = std::max({out.peak, std::abs(sample->call), std::abs(sample->put)});
    if (!(out.peak > 0) || !std::isfinite(out.peak)) return out;
    out.step = niceStep(out.peak);
    out.top = std::ceil(out.peak / out.step) * out.step;
    out.drawn = out.top > 0 && std::isfinite(out.top);
    return out;
}

void timeTicks(const Scale& scale, std::vector<double>& out) {
    out.clear();
    if (!(scale.timeStep > 0)) return;
    const double end = scale.t0 + scale.span;
    for (double t = std::ceil(scale.t0 / scale.timeStep) * scale.timeStep; t <= end && out.size() < mostTicks;
         t += scale.timeStep)
        out.push_back(t);
}

double mainX(const Scale& scale, double t, double width) {
    return plotLeft + (width - plotLeft - plotRight) * (t - scale.t0) / scale.span;
}

double mainY(const Scale& scale, double value, double height) {
    return plotTop + (height - plotTop - plotBottom) * (1 - std::abs(value) / scale.top);
}

double stripX(const Scale& scale, double t, double width) {
    return plotRight + (width - plotLeft - plotRight) * (t - scale.t0) / scale.span;
}

const HfpSample* nearest(const Samples& samples, const Scale& scale, double x, double width) {
    if (!scale.drawn || samples.empty() || !(width > plotLeft + plotRight)) return nullptr;
    const double t = scale.t0 + scale.span * (x - plotLeft) / (width - plotLeft - plotRight);
    const auto after = std::lower_bound(samples.begin(), samples.end(), t,
                                        [](const HfpSample* one, double at) { return one->t < at; });
    if (after == samples.begin()) return *after;
    if (after == samples.end()) return samples.back();
    return t - (*std::prev(after))->t < (*after)->t - t ? *std::prev(after) : *after;
}

std::vector<double> valueTicks(const Scale& scale) {
    constexpr int most = 10;  // a top is a few steps; a step too small to count up would never get there
    std::vector<double> out;
    for (int i = 0; scale.drawn && i <= most && i * scale.step <= scale.top + scale.step * 0.5; ++i)
        out.push_back(i * scale.step);
    return out;
}

Label timeText(double t, double timeStep) {
    constexpr auto farthest = static_cast<double>(SessionTime::farthest);
    constexpr std::int64_t daySeconds = 86400;
    const auto utc = static_cast<std::int64_t>(std::floor(std::clamp(t, -farthest, farthest)));
    const std::int64_t second = ((utc + SessionTime::calendarOffset(utc)) % daySeconds + daySeconds) % daySeconds;
    const std::int64_t hours = second / 3600, minutes = second / 60 % 60;
    if (timeStep >= 60) return formatLabel("{:02}:{:02}", hours, minutes);
    return formatLabel("{:02}:{:02}:{:02}", hours, minutes, second % 60);
}

void stripTicks(const Scale& scale, double width, const std::function<double(std::string_view)>& textWidth,
                std::vector<StripTick>& out) {
    constexpr double apart = 8, edge = 2;
    out.clear();
    std::vector<double> times;
    timeTicks(scale, times);
    bool first = true;
    double end = 0;  // of the last text
    for (const double t : times) {
        StripTick tick{t, stripX(scale, t, width), timeText(t, scale.timeStep), 0};
        const double size = textWidth(tick.text.text());
        tick.left = std::min(std::max(tick.x - size / 2, plotRight), width - size - edge);
        if (first || end + apart < tick.left) {
            first = false;
            end = tick.left + size;
        } else {
            tick.text = {};
        }
        out.push_back(tick);
    }
}

Ladder ladder(const Samples& samples) {
    if (samples.empty()) return {};
    return {samples.back()->band, samples.back()->band.size() / 2};
}

double ladderPeak(const Samples& samples) {
    double peak = 0;
    for (const HfpSample* sample : samples)
        for (const StrikeFlow& flow : sample->atm) peak = std::max({peak, std::abs(flow.call), std::abs(flow.put)});
    return peak;
}

double sparkY(double value, double maxAbs, double height) {
    constexpr double headroom = 6;
    return height - (height - headroom) * std::abs(value) / maxAbs;
}

}  // namespace vmr::HfPressure
