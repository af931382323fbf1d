// Profiles along the price axis, one point a strike: flow and open interest.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "chart/StrikeDisplay.h"

namespace vmr {

/// The colours of a wave; of strokes and dots, [1] is for points whose net is below 0.
struct WaveLook {
    Rgba fill{};
    std::array<Rgba, 2> stroke{}, dot{};
};

/// Moves a wave's points on by a frame, on |metric| over `maxHf`. Points of strikes that went away fall back to the
/// axis. True while something moves.
bool steppedWave(StrikeMap<WaveDisp>& display, std::span<const PlacedRow> placed, StrikeMetric metric, double maxHf,
                 const EdgeStage& stage);

/// The same, but easing through camera moves too.
bool steppedNetWave(StrikeMap<WaveDisp>& display, std::span<const PlacedRow> placed, StrikeMetric metric, double maxHf,
                    const EdgeStage& stage);

/// Vertices that fill and stroke of a wave of so many points take: none under two points.
std::size_t fillVertices(std::size_t points);
std::size_t strokeVertices(std::size_t points);

/// Writes the area between the points and the axis as quads and returns the place after them. Its first and its last
/// quad fade in and out over the device pixel of the outermost points, so that the level edges there are smooth; the
/// slanted one lies under the stroke.
ChartVertex* writeFill(StrikeMap<WaveDisp>& display, const WaveLook& look, const EdgeStage& stage, ChartVertex* out);

/// Writes the line through the points as ribbons and returns the place after them. With `net`, a point is painted by
/// the sign of its row in `placed`; without, or without a row, as 0 and above.
LineVertex* writeStroke(StrikeMap<WaveDisp>& display, const WaveLook& look, const EdgeStage& stage,
                        std::span<const PlacedRow> placed, StrikeMetric net, LineVertex* out);

/// Writes a dot on each point of a wave of two or more, `discVertices` each, to be drawn over it.
MarkerVertex* writeDots(StrikeMap<WaveDisp>& display, const WaveLook& look, const EdgeStage& stage,
                        std::span<const PlacedRow> placed, StrikeMetric net, MarkerVertex* out);

}  // namespace vmr
