#include "ui/widgets/ArtNode.h"

#include <QSGVertexColorMaterial>

namespace vmr {

QSGGeometryNode* artNode(QSGNode* old, std::span<const ArtVertex> triangles) {
    auto* node = static_cast<QSGGeometryNode*>(old);
    const int count = static_cast<int>(triangles.size());
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
    for (const ArtVertex& from : triangles) (to++)->set(from.x, from.y, from.red, from.green, from.blue, from.opacity);
    node->markDirty(QSGNode::DirtyGeometry);
    return node;
}

}  // namespace vmr
