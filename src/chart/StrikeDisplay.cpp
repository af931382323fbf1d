#include "chart/StrikeDisplay.h"

#include <cmath>

namespace vmr {

void placeRows(std::span<const StrikeRow> rows, double ratio, double yScale, double yOffset, double viewH,
               std::vector<PlacedRow>& placed) {
    constexpr double farthest = 1e30;  // so that neither a vertex nor a distance of two rows overflows
    placed.clear();
    for (const StrikeRow& row : rows) {
        const double py = viewH * (1.0 - (yOffset + yScale * (ratio * row.strike))) * 0.5;
        if (std::abs(py) < farthest) placed.push_back({row.strike, py, &row});
    }
    const auto ascends = [](const PlacedRow& a, const PlacedRow& b) { return a.strike < b.strike; };
    const auto falls = [&](const PlacedRow& a, const PlacedRow& b) { return !ascends(a, b); };
    if (std::adjacent_find(placed.begin(), placed.end(), falls) == placed.end()) return;

    std::sort(placed.begin(), placed.end(), [&](const PlacedRow& a, const PlacedRow& b) {
        return ascends(a, b) || (a.strike == b.strike && a.row < b.row);
    });
    std::size_t kept = 0;
    for (const PlacedRow& row : placed) {
        const bool again = kept > 0 && placed[kept - 1].strike == row.strike;
        placed[again ? kept - 1 : kept++] = row;
    }
    placed.resize(kept);
}

double greatest(std::span<const StrikeRow> rows, StrikeMetric metric) {
    double found = 0;
    for (const StrikeRow& row : rows) {
        const double size = std::abs(metric(row));
        if (size > found) found = size;
    }
    return found;
}

bool scales(double maxAbs) { return std::isfinite(maxAbs) && maxAbs > 0; }

bool ease(double& value, double from, double alpha) {
    if (!(std::abs(value - from) > pixelSettle)) return false;
    value = from + (value - from) * alpha;
    return true;
}

}  // namespace vmr
