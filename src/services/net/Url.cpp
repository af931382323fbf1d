#include "services/net/Url.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

#include "base/NumberText.h"

namespace vmr {

namespace {

struct Part {
    char* text = nullptr;
    Part(CURLU* url, CURLUPart part, unsigned flags = 0) {
        if (curl_url_get(url, part, &text, flags) != CURLUE_OK) text = nullptr;
    }
    ~Part() { curl_free(text); }
    Part(const Part&) = delete;
    Part& operator=(const Part&) = delete;
    std::string str() const { return text ? text : ""; }
};

// four decimal numbers of which the first is 127; "127.0.0.1.example.org" is a name
bool isIpv4Loopback(std::string_view host) {
    int count = 0;
    while (true) {
        const auto dot = host.find('.');
        const auto digits = host.substr(0, dot);
        const bool plain = !digits.empty() && digits.size() <= 3 &&
                           std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
        const auto value = plain ? parseInt(digits) : std::nullopt;
        if (!value || *value > 255 || (count == 0 && *value != 127)) return false;
        ++count;
        if (dot == std::string_view::npos) return count == 4;
        host.remove_prefix(dot + 1);
    }
}

std::string ownPort(bool secure) { return secure ? "443" : "80"; }

}  // namespace

std::string Url::hostAndPort() const {
    return (host.find(':') == std::string::npos ? host : "[" + host + "]") + ":" + port;
}

std::string Url::authority() const {
    std::string shown = hostAndPort();
    if (port == ownPort(secure)) shown.resize(shown.size() - port.size() - 1);
    return shown;
}

std::optional<Url> parseUrl(const std::string& text) {
    if (text.find('\0') != std::string::npos) return std::nullopt;
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parsed(curl_url(), curl_url_cleanup);
    if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, text.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK)
        return std::nullopt;
    Url url;
    url.scheme = lowerCase(Part(parsed.get(), CURLUPART_SCHEME).str());
    url.host = Part(parsed.get(), CURLUPART_HOST).str();
    if (url.scheme.empty() || url.host.empty()) return std::nullopt;
    if (url.host.front() == '[') url.host = url.host.substr(1, url.host.size() - 2);
    url.secure = url.scheme == "wss" || url.scheme == "https";
    url.loopback = lowerCase(url.host) == "localhost" || url.host == "::1" || isIpv4Loopback(url.host);
    url.port = Part(parsed.get(), CURLUPART_PORT).str();
    url.namesPort = !url.port.empty();
    if (!url.namesPort) url.port = ownPort(url.secure);
    url.user = Part(parsed.get(), CURLUPART_USER, CURLU_URLDECODE).str();
    url.password = Part(parsed.get(), CURLUPART_PASSWORD, CURLU_URLDECODE).str();
    url.target = Part(parsed.get(), CURLUPART_PATH).str();
    if (url.target.empty()) url.target = "/";
    const Part query(parsed.get(), CURLUPART_QUERY);
    if (query.text) url.target += "?" + query.str();
    return url;
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

std::string percentEncoded(std::string_view text, std::string_view kept) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (plain || kept.find(c) != std::string_view::npos) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += {'%', hex[byte >> 4], hex[byte & 15]};
        }
    }
    return encoded;
}

}  // namespace vmr
