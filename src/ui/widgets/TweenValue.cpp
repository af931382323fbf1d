#include "ui/widgets/TweenValue.h"

#include <cmath>
#include <utility>

namespace vmr {

namespace {
// no number is the same as no number
bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }
}  // namespace

void TweenValue::setTarget(qreal target) {
    if (same(target, tween_.target())) return;
    tween_.aim(target, now_);
    if (still_) tween_.jump();
    emit targetChanged();
    show();
}

void TweenValue::setSpeed(qreal speed) {
    if (std::exchange(speed_, speed) == speed) return;
    tween_.setSpeed(speed);
    emit speedChanged();
}

void TweenValue::setStill(bool still) {
    if (std::exchange(still_, still) == still) return;
    if (still) tween_.jump();
    emit stillChanged();
    show();
}

void TweenValue::step(qreal seconds) {
    if (!gliding_) return;
    now_ += seconds;
    show();
}

void TweenValue::jump() {
    tween_.jump();
    show();
}

void TweenValue::show() {
    const qreal before = std::exchange(value_, tween_.displayed(now_));
    const bool glided = std::exchange(gliding_, !tween_.arrived(now_));
    if (!same(before, value_)) emit valueChanged();
    if (glided != gliding_) emit glidingChanged();
}

}  // namespace vmr
