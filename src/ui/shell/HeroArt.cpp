#include "ui/shell/HeroArt.h"

#include <QSGGeometryNode>
#include <QSGVertexColorMaterial>
#include <algorithm>

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
    auto* node = static_cast<QSGGeometryNode*>(old);
    const int count = static_cast<int>(vertices_.size());
    if (!node) {
        node = new QSGGeometryNode;
        auto* geometry = new QSGGeometry(QSGGeometry::defaultAttributes_ColoredPoint2D(), count);
        geometry->setDrawingMode(QSGGeometry::DrawTriangles);
        geometry->setVertexDataPattern(QSGGeometry::StreamPattern);
        node->setGeometry(geometry);
        node->setMaterial(new QSGVertexColorMaterial);
        node->setFlags(QSGNode::OwnsGeometry | QSGNode::OwnsMaterial);
    }
    if (node->geometry()->vertexCount() != count) node->geometry()->allocate(count);
    QSGGeometry::ColoredPoint2D* to = node->geometry()->vertexDataAsColoredPoint2D();
    std::for_each(vertices_.begin(), vertices_.end(), [&to](const ArtVertex& from) {
        (to++)->set(from.x, from.y, from.red, from.green, from.blue, from.opacity);
    });
    node->markDirty(QSGNode::DirtyGeometry);
    return node;
}

}  // namespace vmr
