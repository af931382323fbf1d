#include "ui/shell/HeroArt.h"

#include "ui/widgets/ArtNode.h"

namespace vmr {

HeroArt::HeroArt(QQuickItem* parent) : QQuickItem(parent) { setFlag(ItemHasContents); }

void HeroArt::setMoving(bool moving) {
    if (moving == timer_.isActive()) return;
    if (moving)
        timer_.start(1000 / framesASecond, this);
    else
        timer_.stop();
    emit movingChanged();
}

void HeroArt::timerEvent(QTimerEvent*) {
    seconds_ += 1.0 / framesASecond;
    update();
}

void HeroArt::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    update();
}

QSGNode* HeroArt::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    makeSignInArt(width(), height(), seconds_, vertices_);
    return artNode(old, vertices_);
}

}  // namespace vmr
