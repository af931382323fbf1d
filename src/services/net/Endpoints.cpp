#include "services/net/Endpoints.h"

#include "services/net/Url.h"

namespace vmr {

namespace {

struct Variable {
    const char* name;
    std::string Endpoints::*value;
};

constexpr Variable restVariables[] = {
    {"VMR_IDENTITY_URL", &Endpoints::identityUrl},   {"VMR_SECURETOKEN_URL", &Endpoints::secureTokenUrl},
    {"VMR_FUNCTIONS_URL", &Endpoints::functionsUrl}, {"VMR_FIRESTORE_URL", &Endpoints::firestoreUrl},
    {"VMR_DOWNLOADS_URL", &Endpoints::downloadsUrl},
};

std::optional<std::string> problemOf(const char* name, const std::string& address, const std::string& secure,
                                     const std::string& plain) {
    if (address.empty()) return std::nullopt;
    const std::string start = std::string(name) + " is \"" + address + "\", ";
    const auto url = parseUrl(address);
    if (!url) return start + "which is no address. Set it to one such as " + secure + "://host, or unset it.";
    if (url->scheme != secure && url->scheme != plain)
        return start + "which begins with " + url->scheme + "://. Use " + secure + "://, or " + plain +
               ":// for a server on this machine.";
    if (!url->secure && !url->loopback)
        return start + "which names another machine without encryption. Use " + secure + "://; " + plain +
               ":// is for this machine only.";
    return std::nullopt;
}

}  // namespace

Endpoints Endpoints::fromEnvironment(const std::function<std::optional<std::string>(const char*)>& lookup) {
    Endpoints endpoints;
    const auto take = [&lookup](const char* name, std::string& value) {
        if (auto set = lookup(name); set && !set->empty()) value = std::move(*set);
    };
    take("VMR_RELAY_URL", endpoints.relayUrl);
    take("VMR_API_KEY", endpoints.apiKey);
    for (const auto& [name, member] : restVariables) {
        std::string& value = endpoints.*member;
        take(name, value);
        while (!value.empty() && value.back() == '/') value.pop_back();
    }
    return endpoints;
}

std::optional<std::string> Endpoints::problem() const {
    if (auto found = problemOf("VMR_RELAY_URL", relayUrl, "wss", "ws")) return found;
    for (const auto& [name, member] : restVariables)
        if (auto found = problemOf(name, this->*member, "https", "http")) return found;
    return std::nullopt;
}

bool isAllowedUrl(const std::string& text) {
    const auto url = parseUrl(text);
    if (!url) return false;
    return url->secure || (url->loopback && (url->scheme == "ws" || url->scheme == "http"));
}

}  // namespace vmr
