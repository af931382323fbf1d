#include "services/cloud/FirebaseRESTAuth.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "base/Json.h"
#include "base/Log.h"
#include "base/NumberText.h"
#include "services/cloud/IdentityRequest.h"
#include "services/net/Url.h"

namespace vmr {

namespace {

using Failure = std::optional<AuthError>;

Failure checkHTTP(const HttpResponse& response) {
    if (response.transportError) return AuthError{AuthError::Kind::transport, 0, *response.transportError};
    if (response.status >= 200 && response.status <= 299) return std::nullopt;
    std::string message = "request failed";
    if (const auto body = Json::parse(response.body)) {
        const JsonView told = (*body)["error"]["message"];
        if (told.isString()) message = harmlessText(told.string());
    }
    return AuthError{AuthError::Kind::http, response.status, std::move(message)};
}

/// What both calls read from an answer, under their own key names.
struct Granted {
    std::string idToken;
    std::string refreshToken;
    double lifetime = 0;
    std::optional<std::string> localId;
};

struct GrantKeys {
    const char* idToken;
    const char* refreshToken;
    const char* lifetime;
    const char* localId;
};
constexpr GrantKeys signInKeys{"idToken", "refreshToken", "expiresIn", "localId"};
constexpr GrantKeys refreshKeys{"id_token", "refresh_token", "expires_in", "user_id"};

Failure readGrant(const HttpResponse& response, const GrantKeys& keys, Granted& granted) {
    if (auto failed = checkHTTP(response)) return failed;
    const auto body = Json::parse(response.body);
    if (!body) return AuthError{AuthError::Kind::transport, 0, "The response is not valid JSON."};
    const JsonView id = (*body)[keys.idToken];
    const JsonView refresh = (*body)[keys.refreshToken];
    const JsonView lifetime = (*body)[keys.lifetime];
    if (!id.isString() || !refresh.isString() || !lifetime.isString()) return AuthError{};
    const auto seconds = parseDouble(lifetime.string());
    if (!seconds) return AuthError{};
    granted.idToken = id.string();
    granted.refreshToken = refresh.string();
    granted.lifetime = *seconds;
    if (const JsonView uid = (*body)[keys.localId]; uid.isString()) granted.localId = uid.string();
    return std::nullopt;
}

constexpr double expiryMargin = 60;

std::string signInEndpoints(const Endpoints& endpoints) {
    return endpoints.identityUrl + " " + endpoints.secureTokenUrl;
}

AuthError notSent(const std::string& problem) { return {AuthError::Kind::transport, 0, problem}; }

}  // namespace

std::string AuthError::text() const {
    switch (kind) {
        case Kind::http:
            return "Auth error (" + std::to_string(status) + "): " + message;
        case Kind::malformed:
            return "Unexpected auth response.";
        case Kind::notSignedIn:
            return "Not signed in.";
        case Kind::transport:
            return message;
    }
    return message;
}

FirebaseRESTAuth::FirebaseRESTAuth(Endpoints endpoints, HttpClient& http, Preferences& preferences, const Clock& clock)
    : endpoints_(std::move(endpoints)),
      http_(http),
      preferences_(preferences),
      clock_(clock),
      session_(std::make_shared<int>(0)),
      signIns_(std::make_shared<int>(0)),
      tokenAskers_(std::make_shared<TokenAskers>()) {
    const std::string own = signInEndpoints(endpoints_);
    // sessions from before the endpoints were stored with them belong to the public ones
    const std::string owner = preferences_.get(endpointsKey).value_or(signInEndpoints(Endpoints()));
    const std::string beside = "@" + own;
    if (preferences_.get(refreshTokenKey + beside) || (preferences_.get(refreshTokenKey) && owner != own))
        slot_ = beside;
    auto stored = preferences_.get(key(refreshTokenKey));
    if (!stored || stored->empty()) return;
    refreshToken = std::move(stored);
    localId = preferences_.get(key(uidKey));
    email = preferences_.get(key(emailKey));
}

void FirebaseRESTAuth::signIn(const std::string& address, const std::string& password,
                              std::function<void(std::optional<AuthError>)> done) {
    if (setupProblem) return done(notSent(*setupProblem));
    std::string problem;
    auto request = jsonPost(withKey(endpoints_.identityUrl, "/v1/accounts:signInWithPassword", endpoints_),
                            {{"email", address}, {"password", password}, {"returnSecureToken", true}}, problem);
    if (!request) return done(notSent(problem));
    http_.send(std::move(*request), [this, session = std::weak_ptr(session_), wanted = std::weak_ptr(signIns_), address,
                                     done = std::move(done)](const HttpResponse& response) {
        if (session.expired() || wanted.expired()) return done(AuthError{AuthError::Kind::notSignedIn, 0, {}});
        Granted granted;
        if (auto failed = readGrant(response, signInKeys, granted)) return done(std::move(failed));
        idToken = std::move(granted.idToken);
        refreshToken = std::move(granted.refreshToken);
        localId = std::move(granted.localId);
        email = address;  // as the user typed it, whatever spelling the server answers
        expiresAt = clock_.monotonic() + granted.lifetime - expiryMargin;
        persist();
        done(std::nullopt);
        signedIn();
    });
}

void FirebaseRESTAuth::refresh(std::function<void(std::variant<std::string, AuthError>)> done) {
    if (!refreshToken) return done(AuthError{AuthError::Kind::notSignedIn, 0, {}});
    if (setupProblem) return done(notSent(*setupProblem));
    HttpRequest request{"POST",
                        withKey(endpoints_.secureTokenUrl, "/v1/token", endpoints_),
                        {{"Content-Type", "application/x-www-form-urlencoded"}},
                        "grant_type=refresh_token&refresh_token=" + percentEncoded(*refreshToken, queryValueCharacters),
                        60};
    http_.send(std::move(request),
               [this, session = std::weak_ptr(session_), done = std::move(done)](const HttpResponse& response) {
                   if (session.expired()) return done(AuthError{AuthError::Kind::notSignedIn, 0, {}});
                   Granted granted;
                   if (auto failed = readGrant(response, refreshKeys, granted)) return done(std::move(*failed));
                   idToken = granted.idToken;
                   refreshToken = std::move(granted.refreshToken);
                   expiresAt = clock_.monotonic() + granted.lifetime - expiryMargin;
                   if (!localId) localId = std::move(granted.localId);
                   persist();
                   done(std::move(granted.idToken));
               });
}

void FirebaseRESTAuth::token(std::function<void(std::variant<std::string, AuthError>)> done) {
    if (tokenIsLive()) return done(*idToken);
    tokenAskers_->push_back(std::move(done));
    if (tokenAskers_->size() > 1) return;
    refresh([askers = tokenAskers_](const std::variant<std::string, AuthError>& result) {
        for (const auto& asker : std::exchange(*askers, {})) asker(result);  // each may ask again
    });
}

void FirebaseRESTAuth::cancelSignIn() { signIns_ = std::make_shared<int>(0); }

void FirebaseRESTAuth::signOut() {
    sessionEnds();
    session_ = std::make_shared<int>(0);
    tokenAskers_ = std::make_shared<TokenAskers>();
    idToken.reset();
    refreshToken.reset();
    localId.reset();
    email.reset();
    expiresAt = distantPast;
    preferences_.removeSetAside();
    for (const char* name : {refreshTokenKey, uidKey, emailKey, endpointsKey}) preferences_.remove(key(name));
}

void FirebaseRESTAuth::refused(const std::string& token) {
    if (idToken == token) expiresAt = distantPast;
}

void FirebaseRESTAuth::forgetStored(Preferences& preferences) {
    for (const char* name : {refreshTokenKey, uidKey, emailKey, endpointsKey}) preferences.remove(name);
}

void FirebaseRESTAuth::persist() {
    const auto keep = [this](const char* name, const std::optional<std::string>& value) {
        if (persistSession && value)
            preferences_.set(key(name), *value);
        else
            preferences_.remove(key(name));
    };
    keep(refreshTokenKey, refreshToken);
    keep(uidKey, localId);
    keep(emailKey, email);
    keep(endpointsKey, signInEndpoints(endpoints_));
}

}  // namespace vmr
