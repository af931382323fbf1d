#include "ui/shell/ServiceViewModel.h"

#include <utility>

#include "services/cloud/Announcements.h"
#include "services/cloud/UpdateChecker.h"

namespace vmr {

void ServiceViewModel::follow(Announcements& announcements, UpdateChecker& updates, OpenUrl openUrl) {
    announcements_ = &announcements;
    updates_ = &updates;
    openUrl_ = std::move(openUrl);
    connections_.clear();
    connections_.push_back(announcements.announcement.changed.connect([this] { refresh(); }));
    connections_.push_back(announcements.maintenance.changed.connect([this] { refresh(); }));
    connections_.push_back(updates.available.changed.connect([this] { refresh(); }));
    refresh();
}

namespace {
// What was dismissed stays hidden until it is over; the same text may come again then.
void hideOnce(QString& text, QString& hidden) {
    if (text == hidden)
        text.clear();
    else
        hidden.clear();
}
}  // namespace

void ServiceViewModel::refresh() {
    const auto& alert = announcements_->announcement.get();
    const auto& build = updates_->available.get();
    alertTitle_ = alert ? QString::fromStdString(alert->title) : QString();
    alertMessage_ = alert ? QString::fromStdString(alert->message) : QString();
    maintenance_ = QString::fromStdString(announcements_->maintenance.get().value_or(""));
    hideOnce(maintenance_, hiddenMaintenance_);
    update_ = build ? tr("Velmora %1 is available").arg(QString::fromStdString(build->version)) : QString();
    hideOnce(update_, hiddenUpdate_);
    updateUrl_ = build && build->url.starts_with("https://") ? QString::fromStdString(build->url) : QString();
    emit changed();
}

void ServiceViewModel::dismissAlert() { announcements_->dismiss(); }

void ServiceViewModel::dismissMaintenance() {
    hiddenMaintenance_ = maintenance_;
    refresh();
}

void ServiceViewModel::dismissUpdate() {
    hiddenUpdate_ = update_;
    refresh();
}

void ServiceViewModel::showUpdate() {
    hiddenUpdate_.clear();
    refresh();
}

void ServiceViewModel::openUpdate() {
    if (openUrl_ && updateOpens()) openUrl_(updateUrl_);
}

}  // namespace vmr
