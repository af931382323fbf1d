// Whom connections to other machines trust, and which proxy they go through: one rule for HTTPS and WebSockets.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Environment.h"
#include "services/net/Url.h"

namespace vmr {

/// Where the trusted authorities' certificates are. Empty texts are not used; all empty is what the TLS library was
/// built with.
struct TrustStore {
    std::string file;    ///< many certificates, PEM
    std::string folder;  ///< one file for each certificate, named after its hash
    std::string system;  ///< a store of the operating system, in OpenSSL's notation

    /// SSL_CERT_FILE and SSL_CERT_DIR; where neither is set, the platform's own store.
    static TrustStore find(const EnvironmentLookup& lookup);
};

/// A server that connections to other machines go through.
struct Proxy {
    std::string scheme;  ///< "http" and others; lower case
    std::string host, port;
    std::string user, password;  ///< as they are, not escaped; both may be empty
    std::string problem;         ///< why this is no usable proxy, for the person; empty when all is well

    /// Scheme, host and port, without the user.
    std::string address() const;
};

/// The proxy for `target`, if any: none for this machine or for what no_proxy names ("*" is everything, a name stands
/// for its subdomains too), else https_proxy or, for unencrypted connections, http_proxy, else all_proxy. Each may be
/// written in capitals but http_proxy, which a web server could have set from a request's header.
std::optional<Proxy> proxyFor(const Url& target, const EnvironmentLookup& lookup);

/// Whether the system's settings say which proxy to use: for another machine that no_proxy does not name, where none of
/// the variables for proxies is set. One that is set and empty means no proxy.
bool systemDecides(const Url& target, const EnvironmentLookup& lookup);

/// What the system's settings are asked about: the other machine and its port, as for HTTPS, and nothing of what is
/// asked of it. A script that decides must not see a token.
std::string originOf(const Url& target);

/// The first of the system's answers whose scheme is among `schemes`; nothing where that means no proxy, or where there
/// are no answers. Where all are of other schemes, the first one, which then fails: the system wants some proxy.
std::optional<Proxy> firstUsable(const std::vector<std::string>& answers, std::span<const std::string_view> schemes);

}  // namespace vmr
