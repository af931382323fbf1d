#include "chart/KeptWalls.h"

#include <algorithm>
#include <cmath>

namespace vmr {

namespace {
constexpr Rgba wallColor{0.667F, 0.667F, 0.667F, 0.85F};
constexpr double wallReach = 2.0;  // bars past the last one
}  // namespace

bool KeptWalls::set(std::span<const PriceLevel> levels) {
    if (std::ranges::equal(levels, levels_)) return false;
    levels_.assign(levels.begin(), levels.end());
    dirty = true;
    return true;
}

void KeptWalls::make(bool shown, std::size_t firstBar, std::size_t lastBar, const DataOrigin& origin) {
    dirty = false;
    firstBar_ = firstBar;
    vertices_.clear();
    if (shown) {
        const auto start = static_cast<float>(static_cast<double>(firstBar) - origin.bar);
        const auto end = static_cast<float>(static_cast<double>(lastBar) + wallReach - origin.bar);
        for (const PriceLevel& level : levels_) {
            if (!std::isfinite(level.price)) continue;
            const auto y = static_cast<float>(level.price - origin.price);
            vertices_.resize(vertices_.size() + segmentVertices);
            writeSegment(&*(vertices_.end() - segmentVertices), start, y, end, y, 0.5F, wallColor);
        }
    }
    list_.keep(vertices_);
}

}  // namespace vmr
