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

/// A text field that has the keyboard takes every key but those of the program; a popup takes all that it is shown.
/// Main thread.
class HotkeyFilter : public QObject {
 public:
    struct Hooks {
        /// Does what the key is for, as `chordText` gives it; false where it is for nothing. `typing`: in a text field.
        /// A key that is held down comes once, and is then `repeated`: nothing is to be done again.
        std::function<bool(const std::string& chord, bool typing, bool repeated)> take;
        /// Where the pointer is in the window, in points; nothing where it has left.
        std::function<void(const std::optional<QPointF>& place)> pointerMoved;
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
