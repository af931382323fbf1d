// A rectangle in points.
#pragma once

namespace vmr {

/// Points from the view's top left corner. One without a positive width and height holds nothing.
struct PointRect {
    double x = 0, y = 0, width = 0, height = 0;
    double right() const { return x + width; }
    double bottom() const { return y + height; }
    /// Its edges belong to it.
    bool contains(double px, double py) const {
        return width > 0 && height > 0 && px >= x && px <= right() && py >= y && py <= bottom();
    }
    bool operator==(const PointRect&) const = default;
};

}  // namespace vmr
