// Horizontal bars, one a strike, and the texts beside them.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "chart/StrikeDisplay.h"

namespace vmr {

inline constexpr double barHMaxPx = 20.0;            ///< largest bar thickness, points
inline constexpr double barHMinPx = 2.0;             ///< smallest
inline constexpr double barFillFactor = 0.8;         ///< thickness as a share of the gap to the nearest strike
inline constexpr double barLabelMinHeightPx = 10.0;  ///< thinnest bar that still gets a label
inline constexpr std::size_t barVertices = boxVertices;

/// Labels of a frame; their texts' memory is used again.
class BarLabelList {
 public:
    void clear() { used_ = 0; }
    BarLabel& add() {
        if (used_ == pool_.size()) pool_.emplace_back();
        return pool_[used_++];
    }
    std::span<const BarLabel> span() const { return {pool_.data(), used_}; }

 private:
    std::vector<BarLabel> pool_;
    std::size_t used_ = 0;
};

/// How a set of bars looks.
struct BarLook {
    Rgba pos{}, neg{};
    bool fromRight = true;  ///< from the price axis leftward, else from the left edge rightward
    bool showLabels = false;
    std::optional<double> kgsStrike, flipStrike;  ///< marked "KGS" and "Gamma Flip", with `fromRight` only
};

/// The strike of the greatest |net GEX| above 0, the first of equals.
std::optional<double> keyGammaStrike(std::span<const StrikeRow> rows);
/// The strike nearest to `flipStrike`, the first of equals.
std::optional<double> nearestStrike(std::span<const StrikeRow> rows, std::optional<double> flipStrike);

/// Moves the bars on by a frame; `rows` give the scale, `placed` the bars. A new strike is there at once, one that went
/// away shrinks. True while something moves.
bool steppedBars(StrikeMap<BarDisp>& display, std::span<const StrikeRow> rows, std::span<const PlacedRow> placed,
                 StrikeMetric metric, const EdgeStage& stage);

/// Writes at most `barVertices` for each bar at `out` and returns the place after them; labels are added to `labels`.
BoxVertex* writeBars(StrikeMap<BarDisp>& display, const BarLook& look, const EdgeStage& stage, BoxVertex* out,
                     BarLabelList& labels);

}  // namespace vmr
