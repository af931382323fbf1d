// A gliding number for QML, and whether things may move at all.
#pragma once

#include <QObject>
#include <QQmlEngine>

#include "base/ReducedMotion.h"
#include "workspace/Tween.h"

namespace vmr {

/// What the person has asked for, as it was when the first view asked.
class Motion : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool reduced READ reduced CONSTANT)

 public:
    using QObject::QObject;
    bool reduced() const { return reduced_; }

 private:
    const bool reduced_ = wantsReducedMotion(environment);
};

/// The rule of `Tween` on a clock that only runs while the number glides: whoever shows it calls `step` with each
/// frame's seconds while `gliding`, and nothing at rest. Main thread.
class TweenValue : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(qreal target READ target WRITE setTarget NOTIFY targetChanged)
    Q_PROPERTY(qreal speed READ speed WRITE setSpeed NOTIFY speedChanged)
    Q_PROPERTY(bool still READ still WRITE setStill NOTIFY stillChanged)
    Q_PROPERTY(qreal value READ value NOTIFY valueChanged)
    Q_PROPERTY(bool gliding READ gliding NOTIFY glidingChanged)

 public:
    static constexpr qreal usualSpeed = 0.06;

    using QObject::QObject;

    qreal target() const { return tween_.target(); }
    void setTarget(qreal target);
    qreal speed() const { return speed_; }
    void setSpeed(qreal speed);
    /// While it is on, every target is shown at once.
    bool still() const { return still_; }
    void setStill(bool still);
    qreal value() const { return value_; }
    bool gliding() const { return gliding_; }

    Q_INVOKABLE void step(qreal seconds);
    /// Shows the target at once.
    Q_INVOKABLE void jump();

 signals:
    void targetChanged();
    void speedChanged();
    void stillChanged();
    void valueChanged();
    void glidingChanged();

 private:
    void show();

    qreal speed_ = usualSpeed;
    Tween tween_{usualSpeed};
    double now_ = 0;  // seconds of gliding so far
    qreal value_ = tween_.displayed(0);
    bool still_ = false, gliding_ = false;
};

}  // namespace vmr
