#include "model/OrbitCamera.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vmr {

namespace {

constexpr ScenePoint firstPosition{139.38294591105623, 79.93483318692975, 241.41834402657415};
constexpr ScenePoint firstTarget{0, 10, 0};
constexpr double degreesAPoint = 0.4, unitsAPoint = 0.35;
constexpr double leastPitch = 1, mostPitch = 89, leastDistance = 30, mostDistance = 800;
constexpr double leastHeight = 3;               // of the camera over the floor
constexpr ScenePoint targetReach{100, 90, 60};  // from the origin; y upwards alone
constexpr double narrowest = 1.2;               // a view's width over its height that needs no wider field

constexpr double radians(double degrees) { return degrees * std::numbers::pi / 180; }
constexpr double degrees(double angle) { return angle * 180 / std::numbers::pi; }

}  // namespace

void OrbitCamera::home() {
    target_ = firstTarget;
    const double x = firstPosition[0] - target_[0], y = firstPosition[1] - target_[1],
                 z = firstPosition[2] - target_[2];
    distance_ = std::hypot(x, y, z);
    yaw_ = degrees(std::atan2(x, z));
    pitch_ = degrees(std::asin(y / distance_));
}

void OrbitCamera::orbit(double dx, double dy) {
    yaw_ = std::remainder(yaw_ - dx * degreesAPoint, 360);
    pitch_ += dy * degreesAPoint;
    limit();
}

void OrbitCamera::dolly(double units) {
    distance_ -= units;
    limit();
}

void OrbitCamera::pan(double dx, double dy) {
    const Axes at = axes();
    for (std::size_t i = 0; i < 3; ++i) target_[i] += at.right[i] * -unitsAPoint * dx + at.up[i] * unitsAPoint * dy;
    limit();
}

void OrbitCamera::limit() {
    for (std::size_t i = 0; i < 3; ++i)
        target_[i] = std::clamp(target_[i], i == 1 ? 0 : -targetReach[i], targetReach[i]);
    distance_ = std::clamp(distance_, leastDistance, mostDistance);
    const double least = degrees(std::asin(std::clamp((leastHeight - target_[1]) / distance_, 0.0, 1.0)));
    pitch_ = std::clamp(pitch_, std::max(least, leastPitch), mostPitch);
}

OrbitCamera::Axes OrbitCamera::axes() const {
    const double y = radians(yaw_), p = radians(pitch_);
    return {{std::cos(y), 0, -std::sin(y)},
            {-std::sin(y) * std::sin(p), std::cos(p), -std::cos(y) * std::sin(p)},
            {-std::sin(y) * std::cos(p), -std::sin(p), -std::cos(y) * std::cos(p)}};
}

ScenePoint OrbitCamera::position() const {
    const ScenePoint forward = axes().forward;
    return {target_[0] - forward[0] * distance_, target_[1] - forward[1] * distance_,
            target_[2] - forward[2] * distance_};
}

double OrbitCamera::fieldOfView(double width, double height) {
    const double aspect = height > 0 ? width / height : narrowest;
    if (!(aspect > 0) || aspect >= narrowest) return verticalField;
    return degrees(2 * std::atan(std::tan(radians(verticalField) / 2) * narrowest / aspect));
}

SceneRay OrbitCamera::rayThrough(double x, double y, double width, double height) const {
    const Axes at = axes();
    const double half = std::tan(radians(fieldOfView(width, height)) / 2) * 2 / height;
    const double dx = (x - width / 2) * half, dy = (height / 2 - y) * half, length = std::hypot(dx, dy, 1);
    SceneRay ray{position(), {}, at.right, at.up};
    for (std::size_t i = 0; i < 3; ++i) ray.direction[i] = (at.forward[i] + at.right[i] * dx + at.up[i] * dy) / length;
    return ray;
}

std::optional<std::array<double, 2>> OrbitCamera::project(const ScenePoint& point, double width, double height) const {
    const Axes at = axes();
    const ScenePoint from = position();
    double x = 0, y = 0, depth = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const double away = point[i] - from[i];
        x += away * at.right[i];
        y += away * at.up[i];
        depth += away * at.forward[i];
    }
    if (!(depth > 0)) return std::nullopt;
    const double half = std::tan(radians(fieldOfView(width, height)) / 2) * 2 / height;
    return std::array{width / 2 + x / depth / half, height / 2 - y / depth / half};
}

}  // namespace vmr
