// A window's picture.
#pragma once

#include <QImage>

class QQuickWindow;

namespace vmr {

/// What the window shows, as opaque RGB32 in device pixels; draws it anew. Null when that fails. Main thread.
QImage windowPicture(QQuickWindow& window);

}  // namespace vmr
