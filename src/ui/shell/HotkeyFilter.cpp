#include "ui/shell/HotkeyFilter.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <utility>

#include "ui/platform/KeyText.h"
#include "workspace/HotkeyRouter.h"

namespace vmr {

namespace {
// Whether the item, or one that it lies in, says by that property that it wants such a key itself.
bool isKeptBy(const QQuickItem* item, const char* property) {
    for (; item; item = item->parentItem())
        if (item->property(property).toBool()) return true;
    return false;
}
}  // namespace

HotkeyFilter::HotkeyFilter(QQuickWindow& window, Hooks hooks) : window_(window), hooks_(std::move(hooks)) {
    window.installEventFilter(this);
}

bool HotkeyFilter::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
            return takes(*static_cast<const QKeyEvent*>(event));
        case QEvent::MouseMove:
            hooks_.pointerMoved(static_cast<const QMouseEvent*>(event)->position(), true);
            return false;
        case QEvent::Enter:
            hooks_.pointerMoved(static_cast<const QEnterEvent*>(event)->position(), false);
            return false;
        case QEvent::Leave:
            hooks_.pointerMoved(std::nullopt, true);
            return false;
        default:
            return false;
    }
}

bool HotkeyFilter::takes(const QKeyEvent& event) {
    if (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab) hooks_.focusMovedByKey();
    if (window_.property("keysCaptured").toBool()) return false;
    const QQuickItem* focused = window_.activeFocusItem();
    const bool typing = window_.property("keysHeld").toBool() ||
                        (focused && focused->flags().testFlag(QQuickItem::ItemAcceptsInputMethod));
    if (event.key() == Qt::Key_Escape && isKeptBy(focused, "takesEscape")) return false;
    if (!typing && event.text().size() == 1 && event.text()[0].isDigit() && isKeptBy(focused, "takesDigits"))
        return false;
    const KeyStroke stroke = keyStroke(event.key(), event.text(), event.modifiers());
    const std::string chord = chordText(stroke);
    if (hooks_.take(chord, typing, event.isAutoRepeat())) return true;
    // the place of the key counts only where what it types is free
    if (event.modifiers() != Qt::NoModifier || !HotkeyRouter::reserved(chord).empty()) return false;
    return hooks_.take(digitOfRow(event.nativeScanCode()).toStdString(), typing, event.isAutoRepeat());
}

}  // namespace vmr
