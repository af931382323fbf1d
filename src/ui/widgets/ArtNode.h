// Coloured triangles in the scene graph.
#pragma once

#include <QSGGeometryNode>
#include <span>

#include "workspace/ArtVertex.h"

namespace vmr {

/// A node with these triangles, for an item's `updatePaintNode`: `old` where that is not null, else a new one that the
/// scene graph owns. Render thread, while the main thread waits.
QSGGeometryNode* artNode(QSGNode* old, std::span<const ArtVertex> triangles);

}  // namespace vmr
