// The call and put walls of a chart, on the GPU.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "chart/KeptList.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr {

/// Ribbons from the session's start to a little past the last bar. Made anew when the levels or the bars changed, or
/// when they are switched on or off. Main thread.
class KeptWalls {
 public:
    explicit KeptWalls(Gpu& gpu) : list_(gpu) {}

    /// Copies the levels and tells whether they are others.
    bool set(std::span<const PriceLevel> levels);
    /// For bars `firstBar` to `lastBar`; empty unless they are `shown`. A level without a finite price is left out.
    void make(bool shown, std::size_t firstBar, std::size_t lastBar, const DataOrigin& origin);
    void draw() const { list_.draw(); }
    /// The bar that they begin at.
    std::size_t firstBar() const { return firstBar_; }

    bool dirty = true;

 private:
    std::vector<PriceLevel> levels_;
    KeptList list_;
    std::vector<LineVertex> vertices_;
    std::size_t firstBar_ = 0;
};

}  // namespace vmr
