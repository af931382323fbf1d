// Sign-in over the Identity Toolkit and secure-token REST endpoints.
#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/Clock.h"
#include "base/Preferences.h"
#include "base/Signal.h"
#include "services/net/Endpoints.h"
#include "services/net/HttpClient.h"

namespace vmr {

/// Why a sign-in or refresh failed. `text()` is for the person.
struct AuthError {
    enum class Kind { http, malformed, notSignedIn, transport };
    Kind kind = Kind::malformed;
    int status = 0;       ///< of `http`
    std::string message;  ///< the server's code word for `http`, the library's text for `transport`
    bool operator==(const AuthError&) const = default;

    /// "Auth error (400): INVALID_PASSWORD", "Unexpected auth response.", "Not signed in.", or the transport's text.
    std::string text() const;
};

/// The session of the process. A stored session belongs to the sign-in endpoints that granted it: with others it is
/// neither read nor touched, and a session of theirs is stored beside it. Main thread; callbacks come on the HTTP
/// client's queue, which is the main loop, or within the call when nothing is sent. Fields change only once a whole
/// response has been checked. Those who ask for a `token` share one refresh; each call of `refresh` sends its own.
/// After `signOut` or destruction a call under way ends with `notSignedIn`.
class FirebaseRESTAuth {
 public:
    static constexpr double distantPast = -std::numeric_limits<double>::infinity();

    /// Restores the stored session of these endpoints, if any; it has a refresh token but no identity token, so
    /// `refresh` comes first.
    FirebaseRESTAuth(Endpoints endpoints, HttpClient& http, Preferences& preferences, const Clock& clock);

    /// Nothing on success.
    void signIn(const std::string& email, const std::string& password,
                std::function<void(std::optional<AuthError>)> done);

    /// Gives up the sign-ins under way: they end with `notSignedIn`, whatever is answered to them.
    void cancelSignIn();

    /// Gives the new identity token, or the error.
    void refresh(std::function<void(std::variant<std::string, AuthError>)> done);

    /// Gives an identity token that may be used now, within the call if there is one, else what one `refresh`
    /// gives to all who ask meanwhile.
    void token(std::function<void(std::variant<std::string, AuthError>)> done);

    /// Forgets the session in memory and in the preferences, copies set aside included; no network call. A call still
    /// under way changes nothing any more.
    void signOut();

    /// The relay refused this token: if it is the current one, it counts as expired.
    void refused(const std::string& token);

    /// Removes the stored session from preferences that belong to endpoints which exist no more.
    static void forgetStored(Preferences& preferences);

    /// Writes or, with `persistSession` off, removes the three stored keys.
    void persist();

    /// Whether `idToken` may be used now.
    bool tokenIsLive() const { return idToken && clock_.monotonic() < expiresAt; }

    Signal<> signedIn;     ///< after each successful `signIn`
    Signal<> sessionEnds;  ///< in `signOut`, while the tokens still stand

    std::optional<std::string> idToken;
    std::optional<std::string> refreshToken;
    std::optional<std::string> localId;
    std::optional<std::string> email;
    double expiresAt = distantPast;  ///< monotonic seconds; token life is real time, whatever the market clock does
    bool persistSession = true;
    /// Why nothing may be sent (addresses missing or refused), for the person. While it is set, `signIn` and `refresh`
    /// fail with this text within the call.
    std::optional<std::string> setupProblem;

    const Endpoints& endpoints() const { return endpoints_; }
    HttpClient& http() { return http_; }

    static constexpr const char* refreshTokenKey = "vmr.auth.refreshToken";
    static constexpr const char* uidKey = "vmr.auth.uid";
    static constexpr const char* emailKey = "vmr.auth.email";
    static constexpr const char* endpointsKey = "vmr.auth.endpoints";  ///< to which the session above belongs

 private:
    using TokenAskers = std::vector<std::function<void(std::variant<std::string, AuthError>)>>;

    std::string key(const char* name) const { return name + slot_; }

    Endpoints endpoints_;
    HttpClient& http_;
    Preferences& preferences_;
    const Clock& clock_;
    std::string slot_;              // ending of the keys; empty unless the plain ones are other endpoints'
    std::shared_ptr<int> session_;  // replaced by signOut; a late answer holds a weak pointer and finds it expired
    std::shared_ptr<int> signIns_;  // likewise, by cancelSignIn
    std::shared_ptr<TokenAskers> tokenAskers_;  // of this session, while a refresh is under way; replaced by signOut
};

}  // namespace vmr
