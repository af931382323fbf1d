#include "ui/platform/UiSetup.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>
#include <QSurfaceFormat>
#include <utility>

#include "base/RenderDevice.h"
#include "ui/gpu/RhiAccess.h"

void qml_register_types_Velmora();

// Resources of a static library are dropped by the linker unless something asks for them; the macro must stand outside
// of any namespace.
static void keepResources() {
    Q_INIT_RESOURCE(velmora_fonts);
    Q_INIT_RESOURCE(velmora_shaders);
    Q_INIT_RESOURCE(qmake_Velmora);
    Q_INIT_RESOURCE(vmr_ui_raw_qml_0);
}

namespace vmr {

void prepareGraphics(const RasteriserRecord& record) {
    // With four samples Qt leaves small rounded corners to them; its own smoothing is finer.
    if (!qEnvironmentVariableIsSet("QSG_ANTIALIASING_METHOD")) qputenv("QSG_ANTIALIASING_METHOD", "vertex");
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    // Four samples cost a rasteriser on the processor four to five times one, and there the shaders smooth edges
    // instead.
    format.setSamples(samplesAPixel(qgetenv("VMR_SAMPLES").toStdString(), record.found(), hasRenderDevice()));
    format.setAlphaBufferSize(0);  // the chart's blending leaves alpha below one
    if (format.samples() == 1) {
        // Nothing in the window needs a depth buffer: items are painted back to front, and clips are upright boxes.
        // Clearing one costs the processor as much as clearing the colours, and without one Mesa draws upright boxes
        // the short way. With four samples its Vulkan driver crashes without one.
        format.setDepthBufferSize(0);
        format.setStencilBufferSize(0);
        for (const char* buffer : {"QSG_NO_DEPTH_BUFFER", "QSG_NO_STENCIL_BUFFER"})
            if (!qEnvironmentVariableIsSet(buffer)) qputenv(buffer, "1");
    }
    QSurfaceFormat::setDefaultFormat(format);
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
}

RasteriserRecord rasteriserRecord(const std::filesystem::path& folder) {
    const QByteArray wanted = qgetenv("QSG_RHI_BACKEND");
    return {folder.empty() ? folder : folder / "rasteriser", wanted.isEmpty() ? "default" : wanted.toStdString()};
}

// Frames are swapped on the render thread, and only there may the interface be asked.
void rememberRasteriser(QQuickWindow& window, const RasteriserRecord& record) {
    QObject::connect(
        &window, &QQuickWindow::frameSwapped, &window,
        [&window, record, told = false]() mutable {
            const QRhi* rhi = rhiOf(window);
            if (!rhi || std::exchange(told, true)) return;
            const auto drew = isSoftware(*rhi) ? Rasteriser::processor : Rasteriser::card;
            QMetaObject::invokeMethod(
                &window, [record, drew] { record.keep(drew); }, Qt::QueuedConnection);
        },
        Qt::DirectConnection);
}

void prepareUpdates() {
    constexpr double fast = 100;  // Hz
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen && screen->refreshRate() > fast && !qEnvironmentVariableIsSet("QT_QPA_UPDATE_IDLE_TIME"))
        qputenv("QT_QPA_UPDATE_IDLE_TIME", "1");
}

void registerFonts() {
    keepResources();
    for (const auto* name : {"Saira_400Regular.ttf", "Saira_600SemiBold.ttf"}) {
        if (QFontDatabase::addApplicationFont(QStringLiteral(":/velmora/fonts/") + QLatin1String(name)) < 0) {
            qWarning("The font %s cannot be loaded; another one stands in.", name);
        }
    }
    QFont font(QStringLiteral("Saira"));
    font.setPixelSize(13);
    QGuiApplication::setFont(font);
}

void registerQml(QQmlEngine& engine) {
    keepResources();
    qml_register_types_Velmora();
    engine.addImportPath(QStringLiteral("qrc:/"));
}

}  // namespace vmr
