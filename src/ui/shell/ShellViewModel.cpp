#include "ui/shell/ShellViewModel.h"

#include <private/qguiapplication_p.h>
#include <qpa/qplatformintegration.h>
#include <QPointer>
#include <utility>

#include "base/Version.h"

namespace vmr {

namespace {
QString text(std::string_view utf8) { return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())); }
}  // namespace

void ShellViewModel::setHooks(Hooks hooks) {
    hooks_ = std::move(hooks);
    emit hooksChanged();
}

QString ShellViewModel::version() const { return text(versionText); }

QString ShellViewModel::build() const { return QString::number(buildNumber); }

QString ShellViewModel::buildDate() const { return text(vmr::buildDate); }

void ShellViewModel::beep() { QGuiApplicationPrivate::platformIntegration()->beep(); }

bool ShellViewModel::newWindow() {
    if (!hooks_.newWindow) return false;
    const bool opened = hooks_.newWindow();
    if (!opened) beep();
    return opened;
}

void ShellViewModel::checkForUpdates() {
    if (!hooks_.checkForUpdates) return;
    hooks_.checkForUpdates([self = QPointer(this)](const QString& title, const QString& told) {
        if (!self) return;
        self->messageTitle_ = title;
        self->messageText_ = told;
        self->sheet_ = Sheet::message;
        emit self->sheetChanged();
    });
}

void ShellViewModel::quit() {
    if (hooks_.quit) hooks_.quit();
}

void ShellViewModel::leavePractice() {
    if (hooks_.leavePractice) hooks_.leavePractice();
}

void ShellViewModel::show(Sheet sheet) {
    if (std::exchange(sheet_, sheet) != sheet) emit sheetChanged();
}

}  // namespace vmr
