#include "base/Paths.h"

#include <cstdlib>
#include <string>

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
// XDG paths must be absolute; a relative one is ignored.
fs::path xdg(const char* name, const char* fallback) {
    const fs::path set = environmentPath(name);
    if (set.is_absolute()) return set;
    return environmentPath("HOME") / fallback;
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

Paths Paths::user() { return {configRoot() / "Velmora", dataRoot() / "Velmora"}; }

Paths Paths::practice() {
    Paths paths = user();
    return {paths.config / "practice", paths.data / "practice"};
}

}  // namespace vmr
