#include "ui/platform/HeldKeys.h"

#include <QGuiApplication>
#include <QKeyEvent>

namespace vmr {

HeldKeys::HeldKeys(QGuiApplication& application) { application.installEventFilter(this); }

bool HeldKeys::eventFilter(QObject* watched, QEvent* event) {
    const bool press = event->type() == QEvent::KeyPress;
    if ((!press && event->type() != QEvent::KeyRelease) || !watched->isWindowType()) return false;
    auto& key = *static_cast<QKeyEvent*>(event);
    if (!press) {
        releasedAt_ = key.timestamp();
        released_ = key.key();
        return false;
    }
    const bool held = releasedAt_ != 0 && key.timestamp() == releasedAt_ && key.key() == released_;
    if (!held || key.isAutoRepeat()) return false;
    QKeyEvent again(key.type(), key.key(), key.modifiers(), key.nativeScanCode(), key.nativeVirtualKey(),
                    key.nativeModifiers(), key.text(), true, static_cast<quint16>(key.count()), key.device());
    again.setTimestamp(key.timestamp());
    QCoreApplication::sendEvent(watched, &again);
    key.setAccepted(again.isAccepted());
    return true;
}

}  // namespace vmr
