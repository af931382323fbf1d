// Whether a pane shows the oscillator, and how high.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <utility>

namespace vmr {

/// Main thread.
class OscillatorViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(bool enabled READ enabled NOTIFY changed)
    Q_PROPERTY(qreal height READ height NOTIFY changed)

 public:
    using QObject::QObject;

    bool enabled() const { return enabled_; }
    /// Points that the settings ask for; the pane may have room for fewer.
    qreal height() const { return height_; }
    void set(bool enabled, qreal height) {
        const bool same = std::exchange(enabled_, enabled) == enabled;
        if (std::exchange(height_, height) != height || !same) emit changed();
    }

 signals:
    void changed();

 private:
    bool enabled_ = false;
    qreal height_ = 200;
};

}  // namespace vmr
