// The one place that knows where this Qt version keeps QRhi and the target that a render node draws into.
#pragma once

#include <QtCore/qglobal.h>

#if QT_VERSION >= QT_VERSION_CHECK(6, 6, 0)
#include <rhi/qrhi.h>
#else
#include <private/qrhi_p.h>
#endif

class QQuickWindow;
class QSGRenderNode;

namespace vmr {

/// What a render node draws with. Any member may be null, then nothing can be drawn.
struct RhiTarget {
    QRhi* rhi = nullptr;
    QRhiCommandBuffer* commands = nullptr;
    QRhiRenderTarget* target = nullptr;
    bool complete() const { return rhi && commands && target; }
};

/// The target of `node` inside its `prepare` and `render`. Render thread.
RhiTarget rhiTargetOf(QSGRenderNode& node, QQuickWindow& window);

/// Whether the processor draws in place of a graphics card.
bool isSoftware(const QRhi& rhi);

/// The window's QRhi; null before the scene graph is up and with the software renderer. Render thread, or the main
/// thread while the render thread is blocked.
QRhi* rhiOf(QQuickWindow& window);

}  // namespace vmr
