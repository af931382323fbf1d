// A number that glides to its target instead of jumping there.
#pragma once

#include <limits>

namespace vmr {

/// Moments are seconds on any clock that only grows. Nothing is shown as NaN.
class Tween {
 public:
    /// `speed` is the share of the rest of the way that is gone in 1/60 s, kept within 0.001 to 1.
    explicit Tween(double speed);

    /// Glides to `target` from what is shown at `at`; the first target, and one after nothing, is shown at once.
    void aim(double target, double at);
    /// Shows the target from now on.
    void jump() { from_ = target_; }
    void setSpeed(double speed);

    double target() const { return target_; }
    double displayed(double at) const;
    /// Whether the target is shown: closer than 0.2 % of it, or so late that no reading shows the rest of the way,
    /// which is how it ends at 0.
    bool arrived(double at) const;

 private:
    double remaining(double at) const;
    double gliding(double at) const;

    static constexpr double nothing = std::numeric_limits<double>::quiet_NaN();
    double from_ = nothing, target_ = nothing;
    double start_ = 0;
    double speed_ = 1;
};

}  // namespace vmr
