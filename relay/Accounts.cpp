#include "relay/Accounts.h"

#include <iterator>

namespace vmr::relay {

IssuedTokens Accounts::issue() {
    const double now = clock_.monotonic();
    std::erase_if(idTokens_, [now](const auto& entry) { return entry.second <= now; });
    // The identity token holds characters that a URL must escape ("|") and some that must survive unescaped ("+"), so
    // that a client which encodes it wrongly is refused. In a form the refresh token's "+" must be escaped.
    IssuedTokens tokens{"vmr." + uuids_.next().text() + "|a+b/c=." + uuids_.next().text(),
                        "vmr-r+" + uuids_.next().text()};
    idTokens_[tokens.idToken] = now + tokenLife_;
    refreshTokens_[tokens.refreshToken] = true;
    return tokens;
}

bool Accounts::accepts(const std::string& idToken) const {
    const auto found = idTokens_.find(idToken);
    return found != idTokens_.end() && clock_.monotonic() < found->second;
}

Accounts::Refresh Accounts::refreshState(const std::string& refreshToken) const {
    const auto found = refreshTokens_.find(refreshToken);
    if (found == refreshTokens_.end()) return Refresh::unknown;
    return found->second ? Refresh::good : Refresh::expired;
}

void Accounts::noteAttempt(bool succeeded) {
    const double now = clock_.monotonic();
    const bool stale = now >= lastFailure_ + lockSeconds;
    failures_ = succeeded ? 0 : stale ? 1 : failures_ + 1;
    if (!succeeded) lastFailure_ = now;
}

void Accounts::expireRefreshTokens() {
    for (auto& entry : refreshTokens_) entry.second = false;
}

}  // namespace vmr::relay
