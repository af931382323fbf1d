#include "base/SystemProxies.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <winhttp.h>
#elif defined(__APPLE__)
#include <CFNetwork/CFNetwork.h>
#include <CoreFoundation/CoreFoundation.h>
#elif defined(VMR_LIBPROXY)
#include <proxy.h>
#endif

namespace vmr {

namespace {

const std::string direct = "direct://";

std::string lower(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), [](unsigned char c) { return std::tolower(c); });
    return out;
}

std::vector<std::string> words(std::string_view text) {
    constexpr std::string_view separators = "; \t\r\n";
    std::vector<std::string> out;
    while (true) {
        text.remove_prefix(std::min(text.find_first_not_of(separators), text.size()));
        if (text.empty()) return out;
        out.push_back(lower(text.substr(0, text.find_first_of(separators))));
        text.remove_prefix(out.back().size());
    }
}

/// Whether the whole text is like the pattern, in which "*" stands for any text.
bool matches(std::string_view text, std::string_view pattern) {
    if (pattern.empty()) return text.empty();
    if (pattern[0] != '*') return !text.empty() && text[0] == pattern[0] && matches(text.substr(1), pattern.substr(1));
    return matches(text, pattern.substr(1)) || (!text.empty() && matches(text.substr(1), pattern));
}

}  // namespace

std::vector<std::string> listedProxies(std::string_view list, std::string_view exempt, const std::string& url) {
    const std::string address = lower(url);
    const std::string scheme = address.substr(0, address.find("://"));
    const std::size_t begin = std::min(scheme.size() + 3, address.size());
    const std::string authority = address.substr(begin, address.find('/', begin) - begin);
    const std::string host = authority.substr(0, authority.rfind(':'));
    for (const std::string& name : words(exempt)) {
        if (name == "<local>" ? host.find_first_of(".:") == std::string::npos
                              : matches(host, name) || matches(authority, name))
            return {direct};
    }
    std::vector<std::string> own, others;
    for (std::string proxy : words(list)) {
        const std::size_t equals = proxy.find('=');
        const std::string of = equals == std::string::npos ? "" : proxy.substr(0, equals);
        if (equals != std::string::npos) proxy.erase(0, equals + 1);
        const bool socks = of == "socks";
        if (!of.empty() && !socks && of != scheme) continue;
        if (proxy.find("://") == std::string::npos) proxy.insert(0, socks ? "socks4://" : "http://");
        (socks ? others : own).push_back(std::move(proxy));
    }
    if (own.empty()) own = std::move(others);  // a SOCKS proxy serves what has none of its own
    if (own.empty()) own.push_back(direct);
    return own;
}

#ifdef _WIN32

namespace {

/// A text that the system has allocated.
struct SystemText {
    explicit SystemText(LPWSTR theText) : text(theText) {}
    ~SystemText() {
        if (text) GlobalFree(text);
    }
    SystemText(const SystemText&) = delete;
    SystemText& operator=(const SystemText&) = delete;
    std::string utf8() const {
        const int size = text ? WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr) : 0;
        if (size <= 1) return {};
        std::string out(static_cast<std::size_t>(size), '\0');
        WideCharToMultiByte(CP_UTF8, 0, text, -1, out.data(), size, nullptr, nullptr);
        out.pop_back();
        return out;
    }
    const LPWSTR text;
};

/// What a script says that the settings name, or that the network offers; nothing when there is none to be had.
std::optional<std::vector<std::string>> byScript(const std::string& url, bool detect, LPCWSTR script) {
    const std::shared_ptr<void> session(
        WinHttpOpen(L"", WINHTTP_ACCESS_TYPE_NO_PROXY, WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0),
        [](HINTERNET handle) {
            if (handle) WinHttpCloseHandle(handle);
        });
    if (!session) return std::nullopt;
    WINHTTP_AUTOPROXY_OPTIONS options{};
    if (detect) {
        options.dwFlags |= WINHTTP_AUTOPROXY_AUTO_DETECT;
        options.dwAutoDetectFlags = WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A;
    }
    if (script) {
        options.dwFlags |= WINHTTP_AUTOPROXY_CONFIG_URL;
        options.lpszAutoConfigUrl = script;
    }
    const std::wstring wideUrl(url.begin(), url.end());  // addresses are ASCII
    WINHTTP_PROXY_INFO info{};
    BOOL found = WinHttpGetProxyForUrl(session.get(), wideUrl.c_str(), &options, &info);
    if (!found && GetLastError() == ERROR_WINHTTP_LOGIN_FAILURE) {
        options.fAutoLogonIfChallenged = TRUE;  // slower, so only where the script's server wants to know who asks
        found = WinHttpGetProxyForUrl(session.get(), wideUrl.c_str(), &options, &info);
    }
    if (!found) return std::nullopt;
    const SystemText list(info.lpszProxy), exempt(info.lpszProxyBypass);
    if (info.dwAccessType != WINHTTP_ACCESS_TYPE_NAMED_PROXY) return std::vector{direct};
    return listedProxies(list.utf8(), exempt.utf8(), url);
}

}  // namespace

SystemProxyLookup systemProxies() {
    return [](const std::string& url) -> std::vector<std::string> {
        WINHTTP_CURRENT_USER_IE_PROXY_CONFIG config{};
        if (!WinHttpGetIEProxyConfigForCurrentUser(&config)) return {};
        const SystemText script(config.lpszAutoConfigUrl), list(config.lpszProxy), exempt(config.lpszProxyBypass);
        if (config.fAutoDetect || script.text)
            if (auto found = byScript(url, config.fAutoDetect, script.text)) return std::move(*found);
        return listedProxies(list.utf8(), exempt.utf8(), url);
    };
}

#elif defined(__APPLE__)

namespace {

struct Release {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};
template <class Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Release>;

constexpr double scriptPatience = 30;  // seconds

template <class Ref>
Ref entry(CFDictionaryRef of, CFStringRef key) {
    return static_cast<Ref>(CFDictionaryGetValue(of, key));
}

/// "scheme://host:port", or nothing.
std::string proxyOf(CFDictionaryRef settings, const char* scheme) {
    const auto host = entry<CFStringRef>(settings, kCFProxyHostNameKey);
    char text[1024];
    if (!host || !CFStringGetCString(host, text, sizeof(text), kCFStringEncodingUTF8)) return {};
    std::string out = text;
    if (out.find(':') != std::string::npos && out[0] != '[') out = "[" + out + "]";
    int port = 0;
    const auto number = entry<CFNumberRef>(settings, kCFProxyPortNumberKey);
    if (number && CFNumberGetValue(number, kCFNumberIntType, &port) && port > 0) out += ":" + std::to_string(port);
    return std::string(scheme) + "://" + out;
}

void scriptEnded(void* result, CFArrayRef proxies, CFErrorRef) {
    if (proxies) static_cast<Owned<CFArrayRef>*>(result)->reset(static_cast<CFArrayRef>(CFRetain(proxies)));
    CFRunLoopStop(CFRunLoopGetCurrent());
}

/// Loads the script and runs it, on this thread's own run loop.
Owned<CFArrayRef> byScript(CFURLRef script, CFURLRef target) {
    Owned<CFArrayRef> proxies;
    CFStreamClientContext context{0, &proxies, nullptr, nullptr, nullptr};
    const Owned<CFRunLoopSourceRef> source(
        CFNetworkExecuteProxyAutoConfigurationURL(script, target, scriptEnded, &context));
    if (!source) return proxies;
    const CFStringRef mode = CFSTR("velmora.proxies");
    CFRunLoopAddSource(CFRunLoopGetCurrent(), source.get(), mode);
    CFRunLoopRunInMode(mode, scriptPatience, false);
    CFRunLoopSourceInvalidate(source.get());
    return proxies;
}

/// The array's proxies, those of a script in the place of its entry. A script's answer names no other script.
std::vector<std::string> read(CFArrayRef list, CFURLRef target, bool scripts) {
    std::vector<std::string> out;
    for (CFIndex i = 0; list && i < CFArrayGetCount(list); ++i) {
        const auto settings = static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(list, i));
        const auto type = entry<CFStringRef>(settings, kCFProxyTypeKey);
        const auto is = [type](CFStringRef other) { return type && CFEqual(type, other); };
        std::vector<std::string> here;
        if (is(kCFProxyTypeNone)) here = {direct};
        if (is(kCFProxyTypeHTTP) || is(kCFProxyTypeHTTPS)) here = {proxyOf(settings, "http")};
        if (is(kCFProxyTypeSOCKS)) here = {proxyOf(settings, "socks5")};
        if (scripts && is(kCFProxyTypeAutoConfigurationURL)) {
            if (const auto script = entry<CFURLRef>(settings, kCFProxyAutoConfigurationURLKey))
                here = read(byScript(script, target).get(), target, false);
        }
        if (scripts && is(kCFProxyTypeAutoConfigurationJavaScript)) {
            if (const auto script = entry<CFStringRef>(settings, kCFProxyAutoConfigurationJavaScriptKey)) {
                const Owned<CFArrayRef> found(CFNetworkCopyProxiesForAutoConfigurationScript(script, target, nullptr));
                here = read(found.get(), target, false);
            }
        }
        for (std::string& proxy : here)
            if (!proxy.empty()) out.push_back(std::move(proxy));
    }
    return out;
}

}  // namespace

SystemProxyLookup systemProxies() {
    return [](const std::string& url) -> std::vector<std::string> {
        const Owned<CFURLRef> target(CFURLCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(url.data()),
                                                          static_cast<CFIndex>(url.size()), kCFStringEncodingUTF8,
                                                          nullptr));
        const Owned<CFDictionaryRef> settings(CFNetworkCopySystemProxySettings());
        if (!target || !settings) return {};
        const Owned<CFArrayRef> proxies(CFNetworkCopyProxiesForURL(target.get(), settings.get()));
        return read(proxies.get(), target.get(), true);
    };
}

#elif defined(VMR_LIBPROXY)

SystemProxyLookup systemProxies() {
    // made with the first question, for that loads the desktops' modules, and kept, for it knows the last script
    struct Library {
        std::mutex mutex;
        std::unique_ptr<pxProxyFactory, decltype(&px_proxy_factory_free)> factory{nullptr, &px_proxy_factory_free};
    };
    return [library = std::make_shared<Library>()](const std::string& url) {
        std::lock_guard lock(library->mutex);
        if (!library->factory) library->factory.reset(px_proxy_factory_new());
        std::vector<std::string> out;
        char** const proxies =
            library->factory ? px_proxy_factory_get_proxies(library->factory.get(), url.c_str()) : nullptr;
        for (char** proxy = proxies; proxy && *proxy; ++proxy) out.emplace_back(*proxy);
        if (proxies) px_proxy_factory_free_proxies(proxies);
        return out;
    };
}

#else

SystemProxyLookup systemProxies() {
    return [](const std::string&) { return std::vector<std::string>(); };
}

#endif

}  // namespace vmr
