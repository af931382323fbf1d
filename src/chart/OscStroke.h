// Smooth lines through points, as ribbons with round ends.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "gpu/Vertices.h"

namespace vmr {

/// Each point but the first adds a quadratic curve to the middle between it and the one before, which is what the curve
/// bends to; the line ends straight at its last point. So it is smooth and goes beyond no value. Where several points
/// share the width of the line, those between the highest and the lowest of them are left out, since they would lie
/// under these. Places in points from the view's top left. Allocates nothing once its lists have grown.
class OscStroke {
 public:
    static constexpr double width = 2;  ///< points

    void clear() {
        used_ = 0;
        caps_.clear();
    }
    /// The next lines have this colour; `dense` for points that lie closer than they can be told apart.
    void setColor(const Rgba& color, bool dense) {
        color_ = capColor_ = color;
        dense_ = dense;
    }
    void add(double x, double y, bool begins);
    /// Ends the line that is under way.
    void end();

    std::span<const LineVertex> segments() const { return {room_.data(), used_}; }
    const std::vector<MarkerVertex>& caps() const { return caps_; }

 private:
    struct Spot {
        double x = 0, y = 0;
    };
    /// The extremes of the points that share a column, in their order.
    struct Column {
        double at = 0;
        Spot first, second;
    };
    void addPoint(const Spot& point);
    void flushColumn();
    void curveTo(const Spot& control, const Spot& to);
    void lineTo(const Spot& to);
    void makeRoom(std::size_t vertices);
    void cap(const Spot& at);

    Rgba8 color_;
    Rgba capColor_{};
    bool dense_ = false, hasColumn_ = false, joins_ = false;
    std::size_t points_ = 0;  ///< of the line under way
    Column column_;
    Spot last_, pen_;
    std::vector<LineVertex> room_;  ///< of which so many are used
    std::size_t used_ = 0;
    std::vector<MarkerVertex> caps_;
};

}  // namespace vmr
