#include "ui/platform/WindowPicture.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QQuickWindow>
#include <QSGRendererInterface>

#include "ui/gpu/WindowFrames.h"

namespace vmr {

namespace {

// Reads the window's OpenGL buffer by way of a resolved copy: some drivers, software ones among them, hand out a single
// sample of each pixel when a multisampled window is read directly. Between the frame's end and its swap.
QImage readOpenGl(QQuickWindow& window) {
    auto* context = QOpenGLContext::currentContext();
    if (!context) return {};
    auto* gl = context->extraFunctions();
    const QSize size = window.size() * window.effectiveDevicePixelRatio();
    QImage out(size, QImage::Format_RGBX8888);
    GLuint frame = 0, colors = 0;
    gl->glGenFramebuffers(1, &frame);
    gl->glGenRenderbuffers(1, &colors);
    gl->glBindRenderbuffer(GL_RENDERBUFFER, colors);
    gl->glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, size.width(), size.height());
    gl->glBindFramebuffer(GL_READ_FRAMEBUFFER, context->defaultFramebufferObject());
    gl->glBindFramebuffer(GL_DRAW_FRAMEBUFFER, frame);
    gl->glFramebufferRenderbuffer(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colors);
    gl->glDisable(GL_SCISSOR_TEST);
    gl->glBlitFramebuffer(0, 0, size.width(), size.height(), 0, 0, size.width(), size.height(), GL_COLOR_BUFFER_BIT,
                          GL_NEAREST);
    gl->glBindFramebuffer(GL_READ_FRAMEBUFFER, frame);
    gl->glPixelStorei(GL_PACK_ALIGNMENT, 4);
    gl->glReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE, out.bits());
    gl->glBindFramebuffer(GL_FRAMEBUFFER, context->defaultFramebufferObject());
    gl->glDeleteRenderbuffers(1, &colors);
    gl->glDeleteFramebuffers(1, &frame);
    return out.mirrored();
}

}  // namespace

QImage windowPicture(QQuickWindow& window) {
    QImage resolved;
    QMetaObject::Connection reading;
    if (window.rendererInterface()->graphicsApi() == QSGRendererInterface::OpenGL) {
        const auto read = [&] {
            window.beginExternalCommands();
            resolved = readOpenGl(window);
            window.endExternalCommands();
        };
        reading = QObject::connect(&window, &QQuickWindow::afterRendering, &window, read, Qt::DirectConnection);
    }
    QImage picture = window.grabWindow();  // draws a frame, and waits for it
    QObject::disconnect(reading);
    WindowFrames::of(window).pictureTaken();
    if (!resolved.isNull()) picture = resolved;
    // The bytes are taken as they are: blending leaves alpha below one, which an opaque window never shows.
    switch (picture.format()) {
        case QImage::Format_RGBA8888:
        case QImage::Format_RGBA8888_Premultiplied:
            picture.reinterpretAsFormat(QImage::Format_RGBX8888);
            break;
        case QImage::Format_ARGB32:
        case QImage::Format_ARGB32_Premultiplied:
            picture.reinterpretAsFormat(QImage::Format_RGB32);
            break;
        default:
            break;
    }
    picture.convertTo(QImage::Format_RGB32);
    return picture;
}

}  // namespace vmr
