// Where the servers are.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vmr {

/// Base addresses, without a slash at the end. The public cloud hosts are built in; relay and key are not.
struct Endpoints {
    std::string relayUrl;  ///< VMR_RELAY_URL; empty when nothing names a relay
    std::string identityUrl = "https://identitytoolkit.googleapis.com";
    std::string secureTokenUrl = "https://securetoken.googleapis.com";
    std::string functionsUrl;
    std::string firestoreUrl = "https://firestore.googleapis.com";
    std::string downloadsUrl;
    std::string apiKey;

    /// The built-in values with every set VMR_ variable over them. `lookup` stands in for getenv.
    static Endpoints fromEnvironment(const std::function<std::optional<std::string>(const char*)>& lookup);

    /// What is wrong with these addresses, for the person: an unknown scheme, or `ws:`/`http:` to another machine.
    std::optional<std::string> problem() const;
};

/// Whether `url` is `wss:`/`https:`, or `ws:`/`http:` to loopback (localhost, 127.0.0.0/8, [::1]).
bool isAllowedUrl(const std::string& url);

}  // namespace vmr
