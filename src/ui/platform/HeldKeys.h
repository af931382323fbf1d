// Tells a key that is held down from one that is pressed again and again.
#pragma once

#include <QKeyEvent>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <memory>

namespace vmr {

/// X sends a held key as releases and presses that carry the same time. Where the press comes in late, as on a busy
/// machine, Qt takes the two for a key that was pressed again, and a button that is held down is pressed many times.
/// This keeps each release back for 10 ms: a press of that key with its time makes one repeated press of them, and all
/// else lets it go first. It is installed on the application, for all windows. Main thread.
class HeldKeys : public QObject {
 public:
    explicit HeldKeys(QObject* parent = nullptr);

    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    void letGo();

    QPointer<QObject> window_;
    std::unique_ptr<QKeyEvent> release_;
    QTimer timer_;
    bool passes_ = false;
};

}  // namespace vmr
