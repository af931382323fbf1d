#include "ui/gpu/RhiAccess.h"

#include <QQuickWindow>
#include <QSGRenderNode>
#include <QSGRendererInterface>
#include <algorithm>
#include <array>

#if QT_VERSION < QT_VERSION_CHECK(6, 6, 0)
#include <private/qsgrendernode_p.h>
#endif

namespace vmr {

QRhi* rhiOf(QQuickWindow& window) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 6, 0)
    return window.rhi();
#else
    auto* renderer = window.rendererInterface();
    if (!renderer || !QSGRendererInterface::isApiRhiBased(renderer->graphicsApi())) return nullptr;
    return static_cast<QRhi*>(renderer->getResource(&window, QSGRendererInterface::RhiResource));
#endif
}

// OpenGL tells no kind of device, only the renderer's name.
bool isSoftware(const QRhi& rhi) {
    const QRhiDriverInfo info = rhi.driverInfo();
    if (info.deviceType == QRhiDriverInfo::CpuDevice) return true;
    const QByteArray name = info.deviceName.toLower();
    constexpr std::array rasterisers{"llvmpipe", "softpipe", "swrast", "swiftshader", "basic render", "software"};
    return std::any_of(rasterisers.begin(), rasterisers.end(), [&](const char* known) { return name.contains(known); });
}

RhiTarget rhiTargetOf(QSGRenderNode& node, QQuickWindow& window) {
    RhiTarget out;
    out.rhi = rhiOf(window);
#if QT_VERSION >= QT_VERSION_CHECK(6, 6, 0)
    out.commands = node.commandBuffer();
    out.target = node.renderTarget();
#else
    const auto& target = QSGRenderNodePrivate::get(&node)->m_rt;
    out.commands = target.cb;
    out.target = target.rt;
#endif
    return out;
}

}  // namespace vmr
