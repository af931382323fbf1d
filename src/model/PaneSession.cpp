#include "model/PaneSession.h"

#include <utility>

#include "services/cloud/AccountService.h"

namespace vmr {

PaneSession::PaneSession(FirebaseRESTAuth& auth, PaneWork& work, std::unique_ptr<RelayClient> relay, NoticeGate* gate)
    : isSignedIn(gate, false),
      signingIn(gate, false),
      authError(gate),
      userEmail(gate),
      connected(gate, false),
      status(gate, "Not connected"),
      connLimited(gate, false),
      auth_(auth),
      work_(work),
      relay_(std::move(relay)) {}

void PaneSession::start(RelayClient::Callbacks callbacks, std::function<void()> onConnected) {
    // The relay client may report a greeting or a loss after the sign-out, or the pane's end, that it has not heard of
    // yet: too late.
    callbacks.onConnected = work_.whileThere([this, onConnected = std::move(onConnected)] {
        if (!isSignedIn) return;
        connLimited = false;
        connected = true;
        status = "Connected";
        onConnected();
    });
    callbacks.onConnectionLimit = work_.whileThere([this] { connLimited = true; });
    callbacks.onDisconnected = work_.whileThere([this] {
        if (!isSignedIn) return;
        connected = false;
        status = "Disconnected (reconnecting…)";
    });
    callbacks.onTokenRefused = work_.whileThere([this](const std::string& token) { auth_.refused(token); });
    relay_->setCallbacks(std::move(callbacks));
    if (auth_.refreshToken) startStoredSession();
}

void PaneSession::startStoredSession() {
    isSignedIn = true;
    userEmail = auth_.email.value_or("");
    if (auth_.setupProblem) return;  // the session waits, unused, for a start that can reach its servers
    status = "Signed in, connecting…";
    // an answer that comes after a sign-out, perhaps into the session that followed it, is nobody's any more
    work_.main().post(work_.whileThere([this, session = session_] {
        if (session != session_) return;
        auth_.token(work_.whileThere([this, session](const std::variant<std::string, AuthError>& result) {
            if (session != session_) return;
            if (std::holds_alternative<std::string>(result)) return connectRelay();
            auth_.signOut();
            isSignedIn = false;
            authError = "Session expired — please sign in again.";
            status = "Not connected";
        }));
    }));
}

void PaneSession::connectRelay() {
    if (!ended_) relay_->connect(tokenProvider());
}

TokenProvider PaneSession::tokenProvider() {
    // called on the relay's queue: the session lives on the main loop
    return [&main = work_.main(), ask = work_.whileThere([this](const std::function<void(TokenResult)>& give) {
        auth_.token([give](const std::variant<std::string, AuthError>& result) {
            if (const auto* token = std::get_if<std::string>(&result))
                give({*token, std::nullopt});
            else
                give({"", std::get<AuthError>(result).text()});
        });
    })](std::function<void(TokenResult)> give) { main.post([ask, give = std::move(give)]() mutable { ask(give); }); };
}

void PaneSession::signIn(const std::string& email, const std::string& password, bool remember,
                         std::function<void(bool)> done) {
    signingIn = true;
    authError = std::nullopt;
    auth_.persistSession = remember;
    const auto answered = [this, email, own = ++signIn_,
                           done = std::move(done)](const std::optional<AuthError>& error) {
        if (error) {
            // a sign-out in between is no failure to tell
            if (error->kind != AuthError::Kind::notSignedIn) authError = error->text();
        } else {
            userEmail = email;
            isSignedIn = true;
            status = "Signed in, connecting…";
            connectRelay();
        }
        if (own == signIn_) signingIn = false;  // else a later one is under way
        if (done) done(!error);
    };
    auth_.signIn(email, password, work_.whileThere(answered));
}

void PaneSession::cancelSignIn() {
    if (!signingIn) return;
    ++signIn_;
    auth_.cancelSignIn();
    signingIn = false;
}

void PaneSession::sendPasswordReset(std::function<void(std::optional<std::string>)> done) {
    if (auth_.setupProblem) return done(auth_.setupProblem);
    AccountService::sendPasswordReset(auth_.http(), auth_.endpoints(), userEmail, work_.whileThere(std::move(done)));
}

void PaneSession::signOut() {
    ++session_;
    relay_->disconnect();
    auth_.signOut();
    isSignedIn = false;
    connected = false;
    status = "Not connected";
}

void PaneSession::flashConnLimited() {
    if (connLimited) return;
    connLimited = true;
    work_.after(limitNoticeTime, [this] { connLimited = false; });
}

void PaneSession::shutdown() {
    ended_ = true;
    relay_->disconnect();
}

}  // namespace vmr
