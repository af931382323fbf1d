#include "ui/platform/HeldKeys.h"

#include <QCoreApplication>
#include <chrono>
#include <utility>

namespace vmr {

HeldKeys::HeldKeys(QObject* parent) : QObject(parent) {
    using namespace std::chrono_literals;
    timer_.setSingleShot(true);
    timer_.setInterval(10ms);
    connect(&timer_, &QTimer::timeout, this, &HeldKeys::letGo);
}

bool HeldKeys::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type != QEvent::KeyPress && type != QEvent::KeyRelease && type != QEvent::MouseButtonPress &&
        type != QEvent::FocusOut)
        return false;
    if (passes_ || !watched->isWindowType()) return false;
    const auto* key = type == QEvent::KeyPress || type == QEvent::KeyRelease ? static_cast<QKeyEvent*>(event) : nullptr;
    if (release_ && type == QEvent::KeyPress && window_ == watched &&
        key->nativeScanCode() == release_->nativeScanCode() && key->timestamp() == release_->timestamp()) {
        timer_.stop();
        release_.reset();
        QKeyEvent repeated(type, key->key(), key->modifiers(), key->nativeScanCode(), key->nativeVirtualKey(),
                           key->nativeModifiers(), key->text(), true, static_cast<quint16>(key->count()),
                           key->device());
        repeated.setTimestamp(key->timestamp());
        passes_ = true;
        QCoreApplication::sendEvent(watched, &repeated);
        passes_ = false;
        return true;
    }
    letGo();
    if (type != QEvent::KeyRelease || key->isAutoRepeat()) return false;
    window_ = watched;
    release_.reset(key->clone());
    timer_.start();
    return true;
}

void HeldKeys::letGo() {
    timer_.stop();
    const std::unique_ptr<QKeyEvent> release = std::exchange(release_, nullptr);
    if (!release || !window_) return;
    passes_ = true;
    QCoreApplication::sendEvent(window_, release.get());
    passes_ = false;
}

}  // namespace vmr
