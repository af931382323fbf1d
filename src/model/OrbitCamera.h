// The camera of a 3D view, which turns about what it looks at.
#pragma once

#include <array>
#include <optional>

#include "model/Gex3DScene.h"

namespace vmr {

/// It never gets below the floor, and what it looks at stays within the field of bars. Drags count in points.
class OrbitCamera {
 public:
    static constexpr double verticalField = 45;  ///< degrees

    OrbitCamera() { home(); }

    /// The first view.
    void home();
    /// A drag turns the scene with the pointer.
    void orbit(double dx, double dy);
    /// Towards what it looks at by so many units, away from it below 0.
    void dolly(double units);
    /// A drag moves the scene with the pointer.
    void pan(double dx, double dy);

    ScenePoint position() const;
    const ScenePoint& target() const { return target_; }
    double distance() const { return distance_; }
    // Degrees: about y from straight ahead, and above the horizon.
    double yaw() const { return yaw_; }
    double pitch() const { return pitch_; }

    /// Degrees from the lower to the upper edge of a view of this size. A view that is higher than wide sees more, so
    /// that the field of bars is not cut at its sides.
    static double fieldOfView(double width, double height);

    /// Through a place in a view of this size, in points from its top left.
    SceneRay rayThrough(double x, double y, double width, double height) const;
    /// Where a place of the scene is in such a view; nothing for one behind the camera.
    std::optional<std::array<double, 2>> project(const ScenePoint& point, double width, double height) const;

 private:
    struct Axes {
        ScenePoint right, up, forward;
    };
    Axes axes() const;
    void limit();

    ScenePoint target_{};
    double yaw_ = 0, pitch_ = 0, distance_ = 0;
};

}  // namespace vmr
