// The proxies that the operating system's settings name for an address.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vmr {

/// Gives the proxies for an address in the order to try them, each "direct://", "http://host:port" or of another
/// scheme; nothing when the system knows nothing. It may take long, as where a script decides that is first loaded.
/// Any thread, and several at once. Tests put a list of their own in its place.
using SystemProxyLookup = std::function<std::vector<std::string>(const std::string& url)>;

/// Asks CFNetwork on macOS, WinHTTP on Windows and libproxy, which knows the desktops' settings, elsewhere; a build
/// without libproxy knows nothing there.
SystemProxyLookup systemProxies();

/// What the two texts of Windows' proxy settings say of an address. `list` is "host:port" for everything, or
/// "https=host:port" and the like, several of them parted by blanks or semicolons. `exempt` lists hosts that need no
/// proxy: "*" stands for anything, "<local>" for names without a dot.
std::vector<std::string> listedProxies(std::string_view list, std::string_view exempt, const std::string& url);

}  // namespace vmr
