#include "ui/gpu/WindowFrames.h"

#include <QQuickWindow>

#include "ui/gpu/FrameItem.h"

namespace vmr {

WindowFrames::WindowFrames(QQuickWindow& window)
    : QObject(&window), atlas_(std::make_shared<GlyphAtlas>(QStringLiteral("Saira"))) {}

WindowFrames& WindowFrames::of(QQuickWindow& window) {
    auto* found = window.findChild<WindowFrames*>(QString(), Qt::FindDirectChildrenOnly);
    return found ? *found : *new WindowFrames(window);
}

void WindowFrames::glyphsMoved() {
    for (FrameItem* item : items_) item->glyphsMoved();
}

void WindowFrames::pictureTaken() {
    for (FrameItem* item : items_) item->pictureTaken();
}

}  // namespace vmr
