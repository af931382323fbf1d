// The person's account and its password, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <functional>
#include <optional>
#include <string>

namespace vmr {

/// Main thread.
class AccountViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(bool resetting READ resetting NOTIFY changed)
    Q_PROPERTY(bool resetSent READ resetSent NOTIFY changed)
    Q_PROPERTY(QString resetError READ resetError NOTIFY changed)

 public:
    /// Asks for the mail; `done` gets nothing on success, else why not.
    using SendReset = std::function<void(std::function<void(std::optional<std::string>)> done)>;

    using QObject::QObject;
    void setSendReset(SendReset send) { sendReset_ = std::move(send); }

    /// A request is under way.
    bool resetting() const { return resetting_; }
    bool resetSent() const { return resetSent_; }
    /// Why the last request failed; empty when it did not.
    QString resetError() const { return resetError_; }

    /// Nothing while a request is under way.
    Q_INVOKABLE void resetPassword();
    /// Forgets how the last request went, as for another person.
    Q_INVOKABLE void startOver();

 signals:
    void changed();

 private:
    void set(bool resetting, bool sent, const QString& error);

    SendReset sendReset_;
    bool resetting_ = false, resetSent_ = false;
    QString resetError_;
    int request_ = 0;  // raised by each, and by starting over
};

}  // namespace vmr
