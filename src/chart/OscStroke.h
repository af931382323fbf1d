// Smooth lines through points, as ribbons with round ends.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "gpu/Vertices.h"

namespace vmr {

/// Each point but the first adds a quadratic curve to the middle between it and the one before, which is what the curve
/// bends to; the line ends straight at its last point. So it is smooth and goes beyond no value.
/// Points that lie closer than they can be told apart are joined by straight lines. Places in points from the view's
/// top left. Allocates nothing once its lists have grown.
class OscStroke {
 public:
    static constexpr double width = 2;  ///< points

    void clear();
    /// The next lines have this colour; `dense` for points that lie closer than they can be told apart.
    void setColor(const Rgba& color, bool dense) {
        color_ = capColor_ = color;
        dense_ = dense;
    }
    void add(double x, double y, bool begins);
    /// Ends the line that is under way.
    void end();

    std::size_t segmentCount() const { return spots_ - lines_.size(); }
    /// Writes `segmentCount()` segments at `out`.
    void write(LineVertex* out) const;
    const std::vector<MarkerVertex>& caps() const { return caps_; }

 private:
    struct Spot {
        double x = 0, y = 0;
    };
    struct Line {
        Rgba8 color;
        std::size_t first = 0;  ///< of its spots, which end where the next line's begin
    };
    void curveTo(const Spot& control, const Spot& to);
    void lineTo(const Spot& to);
    void addSpot(const Spot& spot);
    void cap(const Spot& at);

    Rgba8 color_;
    Rgba capColor_{};
    bool dense_ = false;
    std::size_t points_ = 0;  ///< of the line under way
    Spot last_, pen_;
    std::vector<std::array<float, 2>> room_;  ///< of the spots that straight parts join, of which so many are used
    std::size_t spots_ = 0;
    std::vector<Line> lines_;
    std::vector<MarkerVertex> caps_;
};

}  // namespace vmr
