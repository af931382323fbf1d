// What the service tells its users, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <functional>
#include <vector>

#include "base/Signal.h"

namespace vmr {

class Announcements;
class UpdateChecker;

/// One for the process, shown by each window. Each text is empty while there is nothing to show. Main thread.
class ServiceViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window's shell")
    Q_PROPERTY(QString alertTitle READ alertTitle NOTIFY changed)
    Q_PROPERTY(QString alertMessage READ alertMessage NOTIFY changed)
    Q_PROPERTY(QString maintenance READ maintenance NOTIFY changed)
    Q_PROPERTY(QString update READ update NOTIFY changed)
    Q_PROPERTY(bool updateOpens READ updateOpens NOTIFY changed)

 public:
    /// Opens an address in the person's browser.
    using OpenUrl = std::function<void(const QString& url)>;

    using QObject::QObject;
    /// Both outlive it.
    void follow(Announcements& announcements, UpdateChecker& updates, OpenUrl openUrl);

    QString alertTitle() const { return alertTitle_; }
    QString alertMessage() const { return alertMessage_; }
    QString maintenance() const { return maintenance_; }
    QString update() const { return update_; }
    /// Whether the newer build's address may be opened: a server's `https:` ones alone.
    bool updateOpens() const { return !updateUrl_.isEmpty(); }

    /// Hides the alert for good.
    Q_INVOKABLE void dismissAlert();
    /// Hides the present text until there is another, or the program starts again.
    Q_INVOKABLE void dismissMaintenance();
    Q_INVOKABLE void dismissUpdate();
    Q_INVOKABLE void openUpdate();
    /// The newer build again, for someone who asks.
    void showUpdate();

 signals:
    void changed();

 private:
    void refresh();

    Announcements* announcements_ = nullptr;
    UpdateChecker* updates_ = nullptr;
    OpenUrl openUrl_;
    QString alertTitle_, alertMessage_, maintenance_, update_, updateUrl_;
    QString hiddenMaintenance_, hiddenUpdate_;
    std::vector<Connection> connections_;
};

}  // namespace vmr
