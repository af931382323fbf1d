// The keys of a window that are actions, before its items see them.
#pragma once

#include <QObject>
#include <QPointF>
#include <functional>
#include <optional>
#include <string>

class QKeyEvent;
class QQuickWindow;

namespace vmr {

/// Where a text field has the keyboard, or a list or a sheet is open, only the program's own keys are asked for. The
/// window's properties "keysHeld" and "keysCaptured" tell of the latter; while keys are captured, none is. An item
/// that has the keyboard keeps Escape or digits for itself by its property "takesEscape" or "takesDigits". Main thread.
class HotkeyFilter : public QObject {
 public:
    struct Hooks {
        /// Does what the key is for, as `chordText` gives it; false where it is for nothing. `typing`: only the
        /// program's keys count. A key that is held down comes once, and is then `repeated`: nothing is to be done
        /// again.
        std::function<bool(const std::string& chord, bool typing, bool repeated)> take;
        /// Where the pointer is in the window, in points; nothing where it has left. Not `byHand` where the window came
        /// to lie below it.
        std::function<void(const std::optional<QPointF>& place, bool byHand)> pointerMoved;
        std::function<void()> focusMovedByKey;
    };

    /// The window outlives it.
    HotkeyFilter(QQuickWindow& window, Hooks hooks);

 protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    bool takes(const QKeyEvent& event);

    QQuickWindow& window_;
    Hooks hooks_;
};

}  // namespace vmr
