#include "ui/pane/AccountViewModel.h"

#include <QPointer>

namespace vmr {

void AccountViewModel::resetPassword() {
    if (resetting_ || !sendReset_) return;
    set(true, false, {});
    sendReset_([self = QPointer(this), own = ++request_](const std::optional<std::string>& problem) {
        if (self && own == self->request_)
            self->set(false, !problem, problem ? QString::fromStdString(*problem) : QString());
    });
}

void AccountViewModel::startOver() {
    if (resetting_) return;  // its answer is still to be told
    ++request_;
    set(false, false, {});
}

void AccountViewModel::set(bool resetting, bool sent, const QString& error) {
    if (resetting == resetting_ && sent == resetSent_ && error == resetError_) return;
    resetting_ = resetting;
    resetSent_ = sent;
    resetError_ = error;
    emit changed();
}

}  // namespace vmr
