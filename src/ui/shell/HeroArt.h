// The picture beside the sign-in form, as a Qt Quick item.
#pragma once

#include <QBasicTimer>
#include <QQmlEngine>
#include <QQuickItem>
#include <vector>

#include "workspace/SignInArt.h"

namespace vmr {

/// One node of coloured triangles. While `moving` it is drawn anew `framesASecond` times a second, which a window that
/// is drawn by the processor bears; else only when its size changes.
class HeroArt : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool moving READ moving WRITE setMoving NOTIFY movingChanged)

 public:
    static constexpr int framesASecond = 12;

    explicit HeroArt(QQuickItem* parent = nullptr);

    bool moving() const { return timer_.isActive(); }
    void setMoving(bool moving);

 signals:
    void movingChanged();

 protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
    void timerEvent(QTimerEvent* event) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

 private:
    QBasicTimer timer_;
    double seconds_ = 0;  // of moving so far
    std::vector<ArtVertex> vertices_;
};

}  // namespace vmr
