#include "chart/FlowWaves.h"

#include <cmath>
#include <utility>

namespace vmr {

namespace {

using WaveEntry = StrikeMap<WaveDisp>::Entry;

constexpr std::size_t quadVertices = 4;
constexpr float strokeHalf = 0.7F;  // points
constexpr float dotRadius = 2.5F;   // points
constexpr double axisFade = 0.1;    // of the fill's alpha, at the axis

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

/// Writes quads of a wave's area, from the axis to the points.
class AreaBrush {
 public:
    AreaBrush(const EdgeStage& stage, const Rgba& fill)
        : stage_(stage), fill_(fill), anchor_(stage.axisX()), maxW_(stage.maxW()), axisX_(stage.clipX(anchor_)) {}

    /// A level cut through the area: where it lies, and how opaque the area is there.
    struct Cut {
        double x, py;  // of its end at the wave
        double opacity = 1;
    };

    ChartVertex* write(ChartVertex* out, const Cut& a, const Cut& b) const {
        const float yA = stage_.clipY(a.py), yB = stage_.clipY(b.py);
        *out++ = {{axisX_, yA}, faded(axisFade * a.opacity)};
        *out++ = {{stage_.clipX(a.x), yA}, faded(fadeAt(a.x) * a.opacity)};
        *out++ = {{stage_.clipX(b.x), yB}, faded(fadeAt(b.x) * b.opacity)};
        *out++ = {{axisX_, yB}, faded(axisFade * b.opacity)};
        return out;
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

std::size_t fillVertices(std::size_t points) { return points < 2 ? 0 : (points + 1) * quadVertices; }
std::size_t strokeVertices(std::size_t points) { return points < 2 ? 0 : (points - 1) * segmentVertices; }

ChartVertex* writeFill(StrikeMap<WaveDisp>& display, const WaveLook& look, const EdgeStage& stage, ChartVertex* out) {
    const std::span<const WaveEntry> points = display.byRow();
    if (points.size() < 2) return out;
    const AreaBrush brush(stage, look.fill);
    const WaveDisp &first = points.front().disp, &last = points.back().disp;
    const double edge = std::min(0.5 / stage.pixelRatio, (last.py - first.py) / 4);  // half a device pixel
    AreaBrush::Cut above{first.x, first.py + edge};
    out = brush.write(out, {first.x, first.py - edge, 0}, above);
    for (std::size_t i = 1; i < points.size(); ++i) {
        const WaveDisp& point = points[i].disp;
        const AreaBrush::Cut below{point.x, std::clamp(point.py, first.py + edge, last.py - edge)};
        out = brush.write(out, above, below);
        above = below;
    }
    return brush.write(out, above, {last.x, last.py + edge, 0});
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
        out = writeDisc(out, stage.clipX(point.disp.x), stage.clipY(point.disp.py), dotRadius,
                        look.dot[signOf(point.strike, placed, net)]);
    }
    return out;
}

}  // namespace vmr
