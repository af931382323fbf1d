#include "services/net/NetworkRules.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace vmr {

namespace {

std::string firstSet(const EnvironmentLookup& lookup, std::initializer_list<const char*> names) {
    for (const char* name : names)
        if (auto value = lookup(name); value && !value->empty()) return *value;
    return {};
}

#ifdef _WIN32
TrustStore platformStore() { return {{}, {}, "org.openssl.winstore://"}; }
#else
// Where distributions and macOS keep the bundle. What the libraries were built with may differ between the two of them.
TrustStore platformStore() {
    for (const char* file : {"/etc/ssl/certs/ca-certificates.crt", "/etc/pki/tls/certs/ca-bundle.crt",
                             "/etc/ssl/ca-bundle.pem", "/etc/ssl/cert.pem"}) {
        std::error_code ignored;
        if (std::filesystem::exists(file, ignored)) return {file, {}, {}};
    }
    return {};
}
#endif

bool exempt(const std::string& host, std::string_view list) {
    constexpr std::string_view separators = ", \t";
    while (true) {
        list.remove_prefix(std::min(list.find_first_not_of(separators), list.size()));
        if (list.empty()) return false;
        std::string name = lowerCase(list.substr(0, list.find_first_of(separators)));
        list.remove_prefix(name.size());
        if (name == "*") return true;
        if (name.starts_with('.')) name.erase(0, 1);
        if (name.starts_with('[') && name.ends_with(']')) name = name.substr(1, name.size() - 2);
        if (!name.empty() && (host == name || host.ends_with("." + name))) return true;
    }
}

bool needsNone(const Url& target, const EnvironmentLookup& lookup) {
    return target.loopback || exempt(lowerCase(target.host), firstSet(lookup, {"no_proxy", "NO_PROXY"}));
}

Proxy readProxy(std::string text) {
    if (text.find("://") == std::string::npos) text.insert(0, "http://");
    const auto url = parseUrl(text);
    Proxy proxy;
    if (!url) {
        proxy.problem = "the proxy's address cannot be read";  // it may hold a password, so it is not shown
        return proxy;
    }
    proxy.scheme = url->scheme;
    proxy.host = url->host;
    proxy.port = url->scheme.starts_with("socks") && !url->namesPort ? "1080" : url->port;
    proxy.user = url->user;
    proxy.password = url->password;
    return proxy;
}

}  // namespace

TrustStore TrustStore::find(const EnvironmentLookup& lookup) {
    TrustStore store{firstSet(lookup, {"SSL_CERT_FILE"}), firstSet(lookup, {"SSL_CERT_DIR"}), {}};
    return store.file.empty() && store.folder.empty() ? platformStore() : store;
}

std::string Proxy::address() const {
    return scheme + "://" + (host.find(':') == std::string::npos ? host : "[" + host + "]") + ":" + port;
}

std::optional<Proxy> proxyFor(const Url& target, const EnvironmentLookup& lookup) {
    if (needsNone(target, lookup)) return std::nullopt;
    std::string text =
        target.secure ? firstSet(lookup, {"https_proxy", "HTTPS_PROXY"}) : firstSet(lookup, {"http_proxy"});
    if (text.empty()) text = firstSet(lookup, {"all_proxy", "ALL_PROXY"});
    if (text.empty()) return std::nullopt;
    return readProxy(std::move(text));
}

bool systemDecides(const Url& target, const EnvironmentLookup& lookup) {
    constexpr const char* names[] = {"https_proxy", "HTTPS_PROXY", "http_proxy",
                                     "HTTP_PROXY",  "all_proxy",   "ALL_PROXY"};
    return !needsNone(target, lookup) && std::none_of(std::begin(names), std::end(names), lookup);
}

std::string originOf(const Url& target) {
    return (target.secure ? "https://" : "http://") + target.hostAndPort() + "/";
}

std::optional<Proxy> firstUsable(const std::vector<std::string>& answers, std::span<const std::string_view> schemes) {
    std::optional<Proxy> unusable;
    for (const std::string& answer : answers) {
        if (lowerCase(answer).starts_with("direct:")) return std::nullopt;
        Proxy proxy = readProxy(answer);
        if (proxy.scheme == "socks") proxy.scheme = "socks5";  // the desktops' word
        if (std::find(schemes.begin(), schemes.end(), proxy.scheme) != schemes.end()) return proxy;
        if (!unusable) unusable = std::move(proxy);
    }
    return unusable;
}

}  // namespace vmr
