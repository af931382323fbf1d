#include "chart/FlowWaves.h"

#include <cmath>
#include <utility>

namespace vmr {

namespace {

using WaveEntry = StrikeMap<WaveDisp>::Entry;

constexpr std::size_t pairVertices = 6;
constexpr float strokeHalf = 0.7F;  // points
constexpr float dotRadius = 2.5F;   // points
constexpr double axisFade = 0.1;    // of the fill's alpha, at the axis

/// A point in clip space.
struct Place {
    float x, y;
};

ChartVertex* write(ChartVertex* out, const Place& at, const Rgba8& color) {
    *out = {{at.x, at.y}, color};
    return out + 1;
}

bool stepPoints(StrikeMap<WaveDisp>& display, std::span<const PlacedRow> placed, StrikeMetric metric, double maxHf,
                const EdgeStage& stage, bool snap) {
    const double anchor = stage.axisX(), maxW = stage.maxW();
    bool animating = false;
    const auto seen = [&](const PlacedRow& row, const WaveDisp* old, WaveDisp& next) {
        const double value = metric(*row.row);
        if (!std::isfinite(value)) return false;
        next = {anchor - maxW * std::min(std::abs(value) / maxHf, 1.0), row.py};
        if (old != nullptr && !snap) {
            animating |= ease(next.x, old->x, stage.alphaX);
            animating |= ease(next.py, old->py, stage.alphaY);
        }
        return true;
    };
    const auto unseen = [&](WaveDisp& point) {
        double x = anchor;
        if (snap || !ease(x, point.x, stage.alphaX)) return false;
        point.x = x;
        animating = true;
        return true;
    };
    display.merge(scales(maxHf) ? placed : placed.first(0), seen, unseen);
    return animating;
}

/// 1 for a strike whose net is below 0.
std::size_t signOf(double strike, std::span<const PlacedRow> placed, StrikeMetric net) {
    if (net == nullptr) return 0;
    const auto found = std::lower_bound(placed.begin(), placed.end(), strike,
                                        [](const PlacedRow& row, double s) { return row.strike < s; });
    return found != placed.end() && found->strike == strike && net(*found->row) < 0 ? 1 : 0;
}

/// Writes the quads between two successive points.
class PairBrush {
 public:
    PairBrush(const EdgeStage& stage, const Rgba& fill)
        : stage_(stage), fill_(fill), anchor_(stage.axisX()), maxW_(stage.maxW()), axisX_(stage.clipX(anchor_)) {}

    ChartVertex* writeFill(ChartVertex* out, const WaveDisp& a, const WaveDisp& b) const {
        const Rgba8 axis = faded(axisFade), colorA = faded(fadeAt(a.x)), colorB = faded(fadeAt(b.x));
        const Place axisA{axisX_, stage_.clipY(a.py)}, axisB{axisX_, stage_.clipY(b.py)};
        const Place pointA{stage_.clipX(a.x), axisA.y}, pointB{stage_.clipX(b.x), axisB.y};
        out = write(out, axisA, axis);
        out = write(out, pointA, colorA);
        out = write(out, pointB, colorB);
        out = write(out, axisA, axis);
        out = write(out, pointB, colorB);
        return write(out, axisB, axis);
    }

 private:
    double fadeAt(double x) const {
        const double t = std::clamp((x - (anchor_ - maxW_)) / maxW_, 0.0, 1.0);
        return std::max(1.2 - t * 1.1, 0.0);
    }
    Rgba faded(double share) const { return {fill_[0], fill_[1], fill_[2], fill_[3] * static_cast<float>(share)}; }

    const EdgeStage& stage_;
    const Rgba fill_;
    const double anchor_, maxW_;
    const float axisX_;
};

}  // namespace

bool steppedWave(StrikeMap<WaveDisp>& display, std::span<const PlacedRow> placed, StrikeMetric metric, double maxHf,
                 const EdgeStage& stage) {
    return stepPoints(display, placed, metric, maxHf, stage, stage.snapLerps);
}

bool steppedNetWave(StrikeMap<WaveDisp>& display, std::span<const PlacedRow> placed, StrikeMetric metric, double maxHf,
                    const EdgeStage& stage) {
    return stepPoints(display, placed, metric, maxHf, stage, false);
}

std::size_t fillVertices(std::size_t points) { return points < 2 ? 0 : (points - 1) * pairVertices; }
std::size_t strokeVertices(std::size_t points) { return points < 2 ? 0 : (points - 1) * segmentVertices; }

ChartVertex* writeFill(StrikeMap<WaveDisp>& display, const WaveLook& look, const EdgeStage& stage, ChartVertex* out) {
    const std::span<const WaveEntry> points = display.byRow();
    const PairBrush pair(stage, look.fill);
    for (std::size_t i = 0; i + 1 < points.size(); ++i) out = pair.writeFill(out, points[i].disp, points[i + 1].disp);
    return out;
}

LineVertex* writeStroke(StrikeMap<WaveDisp>& display, const WaveLook& look, const EdgeStage& stage,
                        std::span<const PlacedRow> placed, StrikeMetric net, LineVertex* out) {
    const std::span<const WaveEntry> points = display.byRow();
    LineVertex* before = nullptr;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        const WaveDisp &a = points[i].disp, &b = points[i + 1].disp;
        LineVertex* const end =
            writeSegment(out, stage.clipX(a.x), stage.clipY(a.py), stage.clipX(b.x), stage.clipY(b.py), strokeHalf,
                         look.stroke[signOf(points[i].strike, placed, net)]);
        if (before) joinSegments(before, out);
        before = std::exchange(out, end);
    }
    return out;
}

MarkerVertex* writeDots(StrikeMap<WaveDisp>& display, const WaveLook& look, const EdgeStage& stage,
                        std::span<const PlacedRow> placed, StrikeMetric net, MarkerVertex* out) {
    const std::span<const WaveEntry> points = display.byRow();
    if (points.size() < 2) return out;
    for (const WaveEntry& point : points) {
        out = writeMarker(out, stage.clipX(point.disp.x), stage.clipY(point.disp.py), dotRadius, MarkerShape::disc,
                          look.dot[signOf(point.strike, placed, net)]);
    }
    return out;
}

}  // namespace vmr
