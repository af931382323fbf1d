#include "ui/platform/UiSetup.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QScreen>
#include <QSurfaceFormat>

#include "base/RenderDevice.h"

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

namespace {
// Four samples cost a rasteriser on the processor four to five times one, and there the shaders smooth edges instead.
int samplesAPixel() {
    const QByteArray wanted = qgetenv("VMR_SAMPLES");
    if (wanted == "1" || wanted == "4") return wanted.toInt();
    return hasRenderDevice() ? 4 : 1;
}
}  // namespace

void prepareGraphics() {
    // With four samples Qt leaves small rounded corners to them; its own smoothing is finer.
    if (!qEnvironmentVariableIsSet("QSG_ANTIALIASING_METHOD")) qputenv("QSG_ANTIALIASING_METHOD", "vertex");
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setSamples(samplesAPixel());
    format.setAlphaBufferSize(0);  // the chart's blending leaves alpha below one
    QSurfaceFormat::setDefaultFormat(format);
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
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
