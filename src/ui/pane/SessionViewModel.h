// Who is signed in and how the connection stands, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <functional>
#include <utility>

namespace vmr {

/// Main thread.
class SessionViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(bool entered READ entered NOTIFY enteredChanged)
    Q_PROPERTY(bool signingIn READ signingIn NOTIFY signInChanged)
    Q_PROPERTY(QString authError READ authError NOTIFY signInChanged)
    Q_PROPERTY(QString setupProblem READ setupProblem NOTIFY setupChanged)
    Q_PROPERTY(QString signInHint READ signInHint NOTIFY setupChanged)
    Q_PROPERTY(QString userEmail READ userEmail NOTIFY userEmailChanged)
    Q_PROPERTY(bool connected READ connected NOTIFY connectionChanged)
    Q_PROPERTY(bool connLimited READ connLimited NOTIFY connectionChanged)
    Q_PROPERTY(QString status READ status NOTIFY statusChanged)
    Q_PROPERTY(bool canPractice READ canPractice NOTIFY canPracticeChanged)

 public:
    struct State {
        bool entered = false;
        bool signingIn = false;
        QString authError{};
        QString setupProblem{};
        QString signInHint{};  ///< who can sign in here, when that is no secret
        QString userEmail{};
        bool connected = false;
        bool connLimited = false;
        QString status{};
    };
    struct Actions {
        std::function<void(const QString& email, const QString& password, bool remember)> signIn;
        std::function<void()> signOut;
        std::function<void()> cancelSignIn;
        std::function<QString()> lastEmail;
    };

    using QObject::QObject;

    const State& state() const { return state_; }
    /// Gives notice of what differs, once all of it has changed.
    void set(State state);
    void notifyAll();
    void setActions(Actions actions) { actions_ = std::move(actions); }

    bool entered() const { return state_.entered; }
    bool signingIn() const { return state_.signingIn; }
    QString authError() const { return state_.authError; }
    QString setupProblem() const { return state_.setupProblem; }
    QString signInHint() const { return state_.signInHint; }
    QString userEmail() const { return state_.userEmail; }
    bool connected() const { return state_.connected; }
    bool connLimited() const { return state_.connLimited; }
    QString status() const { return state_.status; }

    /// Starts the practice market; empty where there is none to be had.
    void setOnPractice(std::function<void()> start);
    /// What leaving the session means beside signing out; empty for nothing.
    void setOnSignOutAndClose(std::function<void()> leave) { onSignOutAndClose_ = std::move(leave); }
    bool canPractice() const { return static_cast<bool>(onPractice_); }

    Q_INVOKABLE void signIn(const QString& email, const QString& password, bool remember);
    Q_INVOKABLE void cancelSignIn();
    Q_INVOKABLE void signOut();
    /// Signs out, and does what else belongs to leaving.
    Q_INVOKABLE void signOutAndClose();
    Q_INVOKABLE void startPractice();
    /// The address that signed in last on this machine, or tried to; empty for none.
    Q_INVOKABLE QString lastEmail() const;

 signals:
    void enteredChanged();
    void signInChanged();
    void setupChanged();
    void userEmailChanged();
    void connectionChanged();
    void statusChanged();
    void canPracticeChanged();

 private:
    State state_;
    Actions actions_;
    std::function<void()> onPractice_, onSignOutAndClose_;
};

}  // namespace vmr
