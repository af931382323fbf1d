#include "relay/ActivityCurve.h"

#include <cmath>
#include <span>

namespace vmr::relay {

namespace {
/// Hours since 18:00 and the volume there; linear in between.
struct Knot {
    double hour, volume;
};

constexpr std::array equityKnots{
    Knot{0, 0.10},    Knot{1, 0.05},    Knot{2.5, 0.035}, Knot{6, 0.02},    Knot{8, 0.03},   Knot{9, 0.10},
    Knot{11, 0.06},   Knot{13, 0.09},   Knot{14.4, 0.16}, Knot{14.5, 0.40}, Knot{15, 0.30},  Knot{15.49, 0.40},
    Knot{15.5, 1.60}, Knot{16, 1.20},   Knot{17, 0.85},   Knot{18.5, 0.60}, Knot{19.5, 0.6}, Knot{20.5, 0.75},
    Knot{21.5, 1.15}, Knot{21.98, 1.9}, Knot{22, 0.45},   Knot{22.3, 0.12}, Knot{23, 0.05}};
constexpr std::array commodityKnots{Knot{0, 0.15},   Knot{3, 0.15},    Knot{6, 0.07}, Knot{9, 0.32}, Knot{13, 0.35},
                                    Knot{14, 0.7},   Knot{14.33, 1.3}, Knot{16, 1.1}, Knot{17, 0.9}, Knot{19, 0.65},
                                    Knot{19.5, 0.8}, Knot{19.6, 0.4},  Knot{22, 0.2}, Knot{23, 0.1}};

double valueAt(std::span<const Knot> knots, double hour) {
    for (std::size_t i = 1; i < knots.size(); ++i) {
        const Knot& a = knots[i - 1];
        const Knot& b = knots[i];
        if (hour <= b.hour) return a.volume + (b.volume - a.volume) * (hour - a.hour) / (b.hour - a.hour);
    }
    return knots.back().volume;
}

ActivityCurve makeCurve(std::span<const Knot> knots) {
    ActivityCurve curve{};
    double squares = 0;
    for (int minute = 0; minute < SessionCalendar::minutesPerDay; ++minute) {
        const double volume = valueAt(knots, (minute + 0.5) / 60);
        curve.volume[minute] = volume;
        curve.volatility[minute] = std::pow(volume, 0.32);
        squares += curve.volatility[minute] * curve.volatility[minute];
    }
    for (double& one : curve.volatility) one /= std::sqrt(squares);
    return curve;
}
}  // namespace

const ActivityCurve& equityActivity() {
    static const ActivityCurve curve = makeCurve(equityKnots);
    return curve;
}

const ActivityCurve& commodityActivity() {
    static const ActivityCurve curve = makeCurve(commodityKnots);
    return curve;
}

const ActivityCurve& activityOf(const Instrument& instrument) {
    const bool commodity = instrument.symbol == "GC" || instrument.symbol == "CL";
    return commodity ? commodityActivity() : equityActivity();
}

}  // namespace vmr::relay
