// What the panel of HF pressure tells, as numbers and texts: the history of the flow thinned, its shares, the strikes
// around the money. Pure functions of the samples.
#pragma once

#include <array>
#include <cstddef>
#include <deque>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "chart/AxisScale.h"
#include "market/HfFlow.h"

namespace vmr {

namespace HfPressure {

/// Pointers into the pane's samples; good until those change.
using Samples = std::vector<const HfpSample*>;
using AxisScale::Label;

/// What a developer may switch off to see what it costs.
struct Switches {
    bool stats = true, chart = true, ladder = true, anim = true;
    bool view = true;  ///< the panel as a whole
    bool operator==(const Switches&) const = default;
};
/// Of "nostats,nochart,noladder,noanim" and "noview", which may stand anywhere in the text. Other words count for
/// nothing.
Switches switchesOf(std::string_view words);

inline constexpr std::size_t mostPoints = 600;                  ///< that are drawn
inline constexpr std::array<int, 5> windows{1, 5, 10, 15, 30};  ///< minutes to choose from
inline constexpr std::string_view unknown = "—";

/// Samples not older than `windowMin` minutes at market time `now`, thinned to `mostPoints`. `out` keeps its capacity.
void visible(const std::deque<HfpSample>& samples, double now, int windowMin, Samples& out);

/// At most `maxPoints` samples at equal steps, and the last one always, so that there may be one more. All of them when
/// they are not more; none for 0.
void decimate(Samples& samples, std::size_t maxPoints);

/// "-1.25B", "3.4M", "12K", "850"; never a plus, and no sign before 0. A dash for what is not finite.
Label fmt(double value);

/// "5000", or "5000.5" where it is no whole number.
Label strikeText(double strike);

/// "62.5%".
Label shareText(double percent);

/// The shares and sums of one sample.
struct Readouts {
    double callShare = 0, putShare = 0;  ///< percent of |call| + |put|; both 0 where that is 0
    double call = 0, put = 0;
    bool known = false;  ///< false: every value is `unknown`
};
Readouts readouts(const Samples& samples);

/// The scale of the main plot. Nothing is drawn unless `drawn`.
struct Scale {
    bool drawn = false;
    double t0 = 0, span = 0;  ///< market seconds
    double peak = 0, step = 0, top = 0;
    double timeStep = 0;  ///< seconds
};
/// Of two samples or more at different times with a flow other than 0.
Scale scale(const Samples& samples);

/// 15, 60, 120 or 300 seconds between two times.
double timeStep(double span);

/// Multiples of the step in [t0, t0 + span], ascending.
void timeTicks(const Scale& scale, std::vector<double>& out);

/// Margins of the main plot, points.
inline constexpr double plotLeft = 6, plotRight = 50, plotTop = 14, plotBottom = 16;
/// Where a time lies in a main plot of that width, points.
double mainX(const Scale& scale, double t, double width);
/// Where the size of a flow lies, points from the top.
double mainY(const Scale& scale, double value, double height);
/// Where a time lies on the strip below; its margins differ from the plot's.
double stripX(const Scale& scale, double t, double width);

/// The sample that lies nearest to `x` points from the left of a main plot of that width; null where nothing is drawn.
const HfpSample* nearest(const Samples& samples, const Scale& scale, double x, double width);

/// The values that the horizontal lines of the main plot stand for, from 0 up. None where nothing is drawn.
std::vector<double> valueTicks(const Scale& scale);

/// "09:31", or "09:31:15" for steps below a minute; New York time.
Label timeText(double t, double timeStep);

/// A time on the strip.
struct StripTick {
    double t = 0, x = 0;  ///< points
    Label text;           ///< empty: there was no room for it
    double left = 0;      ///< of the text, points
};
/// `textWidth` measures in points. A text keeps 8 points from the one before it.
void stripTicks(const Scale& scale, double width, const std::function<double(std::string_view)>& textWidth,
                std::vector<StripTick>& out);

/// The strikes of the last sample's band.
struct Ladder {
    std::span<const double> band;  ///< ascending; empty: there is none
    std::size_t atm = 0;           ///< place of the strike at the money
};
Ladder ladder(const Samples& samples);
/// The largest size of a flow at any strike of any sample's band.
double ladderPeak(const Samples& samples);

/// Where a flow lies in a sparkline, points from the top.
double sparkY(double value, double maxAbs, double height);

}  // namespace HfPressure
}  // namespace vmr
