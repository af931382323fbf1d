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
    double tokenLife() const { return tokenLife_; }

    /// All that were issued so far.
    void expireIdTokens() { idTokens_.clear(); }
    void expireRefreshTokens();

 private:
    const Clock& clock_;
    double tokenLife_;
    UuidSource uuids_;
    std::map<std::string, double> idTokens_;     // to when it expires, monotonic seconds
    std::map<std::string, bool> refreshTokens_;  // to whether it still works
};

}  // namespace vmr::relay
