// The practice account and its tokens.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "base/Clock.h"
#include "base/Uuid.h"

namespace vmr::relay {

/// What a sign-in or a refresh gives.
struct IssuedTokens {
    std::string idToken, refreshToken;
};

/// One account. Identity tokens live in real time; a refresh token stays good until it is expired. One thread.
class Accounts {
 public:
    static constexpr std::string_view email = "practice@velmora.test";
    static constexpr std::string_view password = "practice";
    static constexpr std::string_view localId = "practice-user-0000000000001";
    static constexpr std::string_view apiKey = "velmora-practice-key-000000000000000001";
    static_assert(apiKey.size() == 39);

    enum class Refresh { good, expired, unknown };

    /// `tokenLife` is in seconds.
    Accounts(const Clock& clock, double tokenLife) : clock_(clock), tokenLife_(tokenLife) {}

    IssuedTokens issue();
    bool accepts(const std::string& idToken) const;
    Refresh refreshState(const std::string& refreshToken) const;
    /// After `mostFailures` wrong sign-ins in a row none works, for `lockSeconds` real seconds after the last.
    static constexpr int mostFailures = 10;
    static constexpr double lockSeconds = 60;
    bool isLockedOut() const { return failures_ >= mostFailures && clock_.monotonic() < lastFailure_ + lockSeconds; }
    void noteAttempt(bool succeeded);
    double tokenLife() const { return tokenLife_; }

    /// All that were issued so far.
    void expireIdTokens() { idTokens_.clear(); }
    void expireRefreshTokens();

 private:
    const Clock& clock_;
    double tokenLife_;
    int failures_ = 0;
    double lastFailure_ = 0;  // monotonic seconds
    UuidSource uuids_;
    std::map<std::string, double> idTokens_;     // to when it expires, monotonic seconds
    std::map<std::string, bool> refreshTokens_;  // to whether it still works
};

}  // namespace vmr::relay
