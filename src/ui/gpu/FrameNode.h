// A plot in the scene graph.
#pragma once

#include <QRectF>
#include <QSGRenderNode>
#include <QString>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "ui/gpu/GlyphAtlas.h"
#include "ui/gpu/RhiReplay.h"

class QQuickWindow;

namespace vmr {

/// Draws the last recorded frame inside the scene graph's own pass, within the item's rectangle. Made and used on the
/// render thread, or on the main thread while that is blocked.
class FrameNode final : public QSGRenderNode {
 public:
    explicit FrameNode(QQuickWindow& window) : window_(window) {}

    RhiReplay& replay() { return replay_; }
    void setItemSize(QSizeF size) { size_ = size; }
    /// Takes from the window's atlas what this node has not seen yet. While the main thread is blocked.
    void takeGlyphs(const GlyphAtlas& atlas);
    /// Told what keeps the plot from being drawn, once for each such text, empty when it is well again. Render thread.
    std::function<void(const QString& problem)> onProblem;
    /// Gets the samples a pixel of each target that is drawn on. Render thread.
    std::shared_ptr<std::atomic<int>> sampleCount;
    /// Gets what the node has uploaded so far. Render thread.
    std::shared_ptr<std::atomic<std::uint64_t>> uploadedBytes;

    /// Gets whether the processor draws in place of a graphics card. Render thread.
    std::shared_ptr<std::atomic<bool>> software;

    void prepare() override;
    void render(const RenderState* state) override;
    void releaseResources() override;
    StateFlags changedStates() const override { return ViewportState | ScissorState; }
    RenderingFlags flags() const override { return BoundedRectRendering | NoExternalRendering; }
    QRectF rect() const override { return QRectF(QPointF(), size_); }

 private:
    RhiPlacement placementIn(const QRhiRenderTarget& target) const;

    QQuickWindow& window_;
    QSizeF size_;
    RhiReplay replay_;
    RhiPlacement placement_;
    GlyphAtlas::Seen seenGlyphs_;
    const QRhi* known_ = nullptr;  ///< that `software` was told of
    std::string reported_;
};

}  // namespace vmr
