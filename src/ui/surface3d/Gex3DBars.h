// The bars of one sign as the instances of one model.
#pragma once

#include <QPointer>
#include <QQmlEngine>
#include <QQuick3DInstancing>

#include "ui/pane/Gex3DViewModel.h"

namespace vmr {

/// For a cube of 100 units. Main thread, or the render thread while that one waits.
class Gex3DBars : public QQuick3DInstancing {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vmr::Gex3DViewModel* surface READ surface WRITE setSurface NOTIFY surfaceChanged)
    Q_PROPERTY(bool positive MEMBER positive_ NOTIFY surfaceChanged)

 public:
    using QQuick3DInstancing::QQuick3DInstancing;

    Gex3DViewModel* surface() const { return surface_; }
    void setSurface(Gex3DViewModel* surface);

 signals:
    void surfaceChanged();

 protected:
    QByteArray getInstanceBuffer(int* instanceCount) override;

 private:
    QPointer<Gex3DViewModel> surface_;
    bool positive_ = false;
    QByteArray table_;
};

}  // namespace vmr
