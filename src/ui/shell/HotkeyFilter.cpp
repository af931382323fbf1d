#include "ui/shell/HotkeyFilter.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <utility>

#include "ui/platform/KeyText.h"

namespace vmr {

HotkeyFilter::HotkeyFilter(QQuickWindow& window, Hooks hooks) : window_(window), hooks_(std::move(hooks)) {
    window.installEventFilter(this);
}

bool HotkeyFilter::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
            return takes(*static_cast<const QKeyEvent*>(event));
        case QEvent::MouseMove:
            hooks_.pointerMoved(static_cast<const QMouseEvent*>(event)->position());
            return false;
        case QEvent::Leave:
            hooks_.pointerMoved(std::nullopt);
            return false;
        default:
            return false;
    }
}

bool HotkeyFilter::takes(const QKeyEvent& event) {
    if (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab) hooks_.focusMovedByKey();
    if (window_.property("keysHeld").toBool()) return false;
    const QQuickItem* focused = window_.activeFocusItem();
    const bool typing = focused && focused->flags().testFlag(QQuickItem::ItemAcceptsInputMethod);
    const KeyStroke stroke = keyStroke(event.key(), event.text(), event.modifiers());
    if (hooks_.take(chordText(stroke), typing, event.isAutoRepeat())) return true;
    if (stroke.control || stroke.alt || stroke.shift || stroke.meta) return false;
    return hooks_.take(digitOfRow(event.nativeScanCode()).toStdString(), typing, event.isAutoRepeat());
}

}  // namespace vmr
