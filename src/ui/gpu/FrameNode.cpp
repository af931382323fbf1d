#include "ui/gpu/FrameNode.h"

#include <QMatrix4x4>
#include <QQuickWindow>
#include <algorithm>
#include <cmath>
#include <utility>

namespace vmr {

RhiPlacement FrameNode::placementIn(const QRhiRenderTarget& target) const {
    RhiPlacement out;
    const QSize whole = target.pixelSize();
    const double ratio = target.devicePixelRatio();
    const QPointF corner = matrix() ? matrix()->map(QPointF(0, 0)) : QPointF();
    const double width = size_.width() * ratio;
    const double height = size_.height() * ratio;
    const int left = static_cast<int>(std::lround(corner.x() * ratio));
    const int top = static_cast<int>(std::lround(corner.y() * ratio));
    const int pixelWidth = static_cast<int>(std::ceil(width - 1e-3));
    const int pixelHeight = static_cast<int>(std::ceil(height - 1e-3));
    if (pixelWidth <= 0 || pixelHeight <= 0) return out;
    out.viewport = QRect(left, whole.height() - top - pixelHeight, pixelWidth, pixelHeight);
    out.scissor = out.viewport.intersected(QRect(QPoint(), whole));
    out.scaleX = static_cast<float>(width / pixelWidth);
    out.scaleY = static_cast<float>(height / pixelHeight);
    return out;
}

void FrameNode::takeGlyphs(const GlyphAtlas& atlas) {
    if (auto change = atlas.changeSince(seenGlyphs_))
        replay_.changeAtlas({atlas.size(), change->at, std::move(change->pixels)});
}

void FrameNode::prepare() {
    const RhiTarget target = rhiTargetOf(*this, window_);
    if (!target.complete()) return;
    placement_ = placementIn(*target.target);
    if (sampleCount) *sampleCount = target.target->sampleCount();
    if (software && std::exchange(known_, target.rhi) != target.rhi) *software = isSoftware(*target.rhi);
    replay_.prepare(target, placement_);
    if (uploadedBytes) *uploadedBytes = replay_.uploadedBytes();
    if (replay_.problem() != reported_) {
        reported_ = replay_.problem();
        if (onProblem) onProblem(QString::fromStdString(reported_));
    }
}

void FrameNode::render(const RenderState* state) {
    const RhiTarget target = rhiTargetOf(*this, window_);
    if (!target.complete()) return;
    RhiPlacement placement = placement_;
    if (state->scissorEnabled()) placement.scissor = placement.scissor.intersected(state->scissorRect());
    if (!placement.scissor.isEmpty()) replay_.draw(*target.commands, placement);
}

void FrameNode::releaseResources() {
    replay_.release();
    seenGlyphs_ = {};  // the texture went with the rest
}

}  // namespace vmr
