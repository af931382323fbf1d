// The overlay series and session lines of a chart, on the GPU.
#pragma once

#include <cstdint>
#include <span>

#include "chart/Camera.h"
#include "chart/KeptList.h"
#include "chart/OverlayLists.h"
#include "market/Records.h"

namespace vmr {

/// Main thread.
class KeptOverlays {
 public:
    explicit KeptOverlays(Gpu& gpu) : gpu_(gpu), lines_(gpu), sessionLines_(gpu), sessionFar_(gpu), second_(gpu) {}

    /// Copies what differs to the GPU, and tells whether anything did. Session lines are looked at when their revision
    /// is another.
    bool set(const OverlayLists& lists);

    /// Stays with the bar that the origin lies on: when bars came or went at the front of the list, all moves with
    /// them.
    void follow(std::span<const Candle> candles);

    /// Ribbons, then the paired instrument's candles.
    void draw(const Camera& camera, double width, double height) const;

    std::size_t lineVertices() const { return lines_.size() + sessionLines_.size(); }
    std::size_t secondVertices() const { return second_.size(); }

 private:
    Gpu& gpu_;
    KeptList lines_, sessionLines_, sessionFar_, second_;
    std::uint64_t sessionRevision_ = 0;
    DataOrigin origin_;            ///< of all of them
    std::int64_t originTime_ = 0;  ///< of the bar there
};

}  // namespace vmr
