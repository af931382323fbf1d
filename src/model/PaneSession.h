// The sign-in of a pane and its connection to the relay.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Signal.h"
#include "model/PaneWork.h"
#include "services/cloud/FirebaseRESTAuth.h"
#include "services/feed/RelayClient.h"

namespace vmr {

/// Main thread.
class PaneSession {
 public:
    /// `auth` and `work` must outlive it; `gate` may be null.
    PaneSession(FirebaseRESTAuth& auth, PaneWork& work, std::unique_ptr<RelayClient> relay, NoticeGate* gate = nullptr);

    Observable<bool> isSignedIn;
    Observable<bool> signingIn;
    Observable<std::optional<std::string>> authError;  ///< text for the sign-in form
    Observable<std::string> userEmail;
    Observable<bool> connected;  ///< the relay said "hello" and the socket stands
    Observable<std::string> status;
    Observable<bool> connLimited;  ///< one connection too many: the relay refused this socket, or `flashConnLimited`

    /// Once, before anything else. Of `callbacks` it takes those of messages and log lines, the rest are its own;
    /// `onConnected` is called after the fields have changed. With a stored session it begins to connect.
    void start(RelayClient::Callbacks callbacks, std::function<void()> onConnected);
    /// Enters the session that the process has, and connects with it.
    void startStoredSession();
    /// Signs in and connects; `done` (may be empty) gets whether it worked, after the fields have changed.
    void signIn(const std::string& email, const std::string& password, bool remember,
                std::function<void(bool)> done = {});
    /// Gives up the sign-in under way, if any: it fails, and nothing is said of it.
    void cancelSignIn();
    /// Asks for a mail with which the person can set the password anew; `done` gets nothing on success, else why not.
    void sendPasswordReset(std::function<void(std::optional<std::string>)> done);
    /// Disconnects and forgets the session.
    void signOut();
    /// Disconnects for good.
    void shutdown();

    static constexpr double limitNoticeTime = 5;  ///< seconds
    /// Another pane was asked for and there can be no more: says so for `limitNoticeTime`.
    void flashConnLimited();

    /// Until `end`.
    RelayClient& relay() { return *relay_; }
    /// The connection is gone and calls back no more.
    void end() { relay_.reset(); }

 private:
    void connectRelay();
    TokenProvider tokenProvider();

    FirebaseRESTAuth& auth_;
    PaneWork& work_;
    std::unique_ptr<RelayClient> relay_;
    bool ended_ = false;  // by `shutdown`
    int session_ = 0;     // raised by each sign-out
    int signIn_ = 0;      // raised by each sign-in, and by giving one up
};

}  // namespace vmr
