#include "workspace/Tween.h"

#include <algorithm>
#include <cmath>

namespace vmr {

namespace {
constexpr double framesASecond = 60;
constexpr double closeEnough = 0.002;  // of the target
constexpr double nothingOfTheWay = 1e-9;
}  // namespace

Tween::Tween(double speed) { setSpeed(speed); }

void Tween::setSpeed(double speed) { speed_ = std::clamp(speed, 0.001, 1.0); }

void Tween::aim(double target, double at) {
    from_ = displayed(at);
    target_ = target;
    start_ = at;
}

double Tween::remaining(double at) const { return std::pow(1 - speed_, std::max(0.0, at - start_) * framesASecond); }

double Tween::gliding(double at) const { return target_ + (from_ - target_) * remaining(at); }

bool Tween::arrived(double at) const {
    if (!std::isfinite(from_) || !std::isfinite(target_) || from_ == target_) return true;
    return std::abs(gliding(at) - target_) < std::abs(target_) * closeEnough || remaining(at) < nothingOfTheWay;
}

double Tween::displayed(double at) const { return arrived(at) ? target_ : gliding(at); }

}  // namespace vmr
