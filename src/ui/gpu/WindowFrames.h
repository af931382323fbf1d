// What the frame items of one window share.
#pragma once

#include <QObject>
#include <memory>
#include <vector>

#include "ui/gpu/GlyphAtlas.h"

class QQuickWindow;

namespace vmr {

class FrameItem;

/// The window's one glyph atlas, and the items that draw from it. Belongs to the window. Main thread.
class WindowFrames final : public QObject {
    Q_OBJECT

 public:
    /// That of `window`, made at the first call.
    static WindowFrames& of(QQuickWindow& window);

    const std::shared_ptr<GlyphAtlas>& atlas() const { return atlas_; }
    void add(FrameItem& item) { items_.push_back(&item); }
    void remove(FrameItem& item) { std::erase(items_, &item); }

    /// The atlas moved its glyphs while an item recorded: the others make their frames anew as well.
    void glyphsMoved();
    /// The window drew its last frame into a picture instead of onto the screen.
    void pictureTaken();

 private:
    explicit WindowFrames(QQuickWindow& window);

    std::shared_ptr<GlyphAtlas> atlas_;
    std::vector<FrameItem*> items_;
};

}  // namespace vmr
