#include "base/Paths.h"

#include <cstdlib>
#include <string>
#ifndef _WIN32
#include <pwd.h>
#include <unistd.h>

#include <vector>
#endif

namespace vmr {

namespace fs = std::filesystem;

namespace {
fs::path environmentPath(const char* name) {
    const char* value = std::getenv(name);
    return value ? fs::path(value) : fs::path();
}

#if defined(_WIN32)
fs::path configRoot() { return environmentPath("APPDATA"); }
fs::path dataRoot() { return environmentPath("LOCALAPPDATA"); }
#else
// The home folder that the system's user table has, where the environment names none; empty when there is none.
fs::path home() {
    const fs::path set = environmentPath("HOME");
    if (set.is_absolute()) return set;
    constexpr std::size_t enough = 65536;
    std::vector<char> space(enough);
    struct passwd entry {};
    struct passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, space.data(), space.size(), &found) != 0 || !found || !found->pw_dir)
        return {};
    return found->pw_dir;
}

// XDG paths must be absolute; a relative one is ignored.
fs::path xdg(const char* name, const char* fallback) {
    const fs::path set = environmentPath(name);
    if (set.is_absolute()) return set;
    return home() / fallback;
}
#if defined(__APPLE__)
fs::path configRoot() { return xdg("XDG_CONFIG_HOME", "Library/Preferences"); }
fs::path dataRoot() { return xdg("XDG_DATA_HOME", "Library/Application Support"); }
#else
fs::path configRoot() { return xdg("XDG_CONFIG_HOME", ".config"); }
fs::path dataRoot() { return xdg("XDG_DATA_HOME", ".local/share"); }
#endif
#endif
}  // namespace

std::optional<Paths> Paths::user() {
    const fs::path config = configRoot(), data = dataRoot();
    // a relative one would be beneath whatever folder the program was started in
    if (!config.is_absolute() || !data.is_absolute()) return std::nullopt;
    return Paths{config / "Velmora", data / "Velmora"};
}

std::optional<Paths> Paths::practice() {
    const auto own = user();
    if (!own) return std::nullopt;
    return Paths{own->config / "practice", own->data / "practice"};
}

}  // namespace vmr
