#include "base/ReducedMotion.h"

#include <filesystem>
#include <sstream>
#include <string_view>

#include "base/FileReplace.h"
#include "base/NumberText.h"
#if defined(_WIN32)
#define NOMINMAX
#include <windows.h>
#elif defined(__APPLE__)
#include <CoreFoundation/CoreFoundation.h>
#endif

namespace vmr {

namespace {
#if defined(_WIN32)
bool systemWantsIt(const EnvironmentLookup&) {
    BOOL animates = TRUE;
    return ::SystemParametersInfoW(SPI_GETCLIENTAREAANIMATION, 0, &animates, 0) && !animates;
}
#elif defined(__APPLE__)
bool systemWantsIt(const EnvironmentLookup&) {
    Boolean there = false;
    const Boolean reduced =
        ::CFPreferencesGetAppBooleanValue(CFSTR("reduceMotion"), CFSTR("com.apple.universalaccess"), &there);
    return there && reduced;
}
#else
/// The value of "key=value" in a settings file; nothing where there is none.
std::optional<std::string> settingIn(const std::filesystem::path& file, std::string_view key) {
    std::istringstream lines(readFile(file).value_or(""));
    for (std::string line; std::getline(lines, line);) {
        const auto equals = line.find('=');
        if (equals == line.npos) continue;
        std::string name = line.substr(0, equals), value = line.substr(equals + 1);
        std::erase_if(name, [](char c) { return c == ' '; });
        std::erase_if(value, [](char c) { return c == ' ' || c == '\r'; });
        if (name == key) return value;
    }
    return std::nullopt;
}

bool systemWantsIt(const EnvironmentLookup& lookup) {
    const std::filesystem::path set = lookup("XDG_CONFIG_HOME").value_or("");
    const std::filesystem::path folder =
        set.is_absolute() ? set : lookup("HOME").value_or("") / std::filesystem::path(".config");
    if (const auto factor = settingIn(folder / "kdeglobals", "AnimationDurationFactor"))
        if (parseDouble(*factor) == 0.0) return true;
    for (const char* version : {"gtk-4.0", "gtk-3.0"})
        if (const auto animates = settingIn(folder / version / "settings.ini", "gtk-enable-animations"))
            return *animates == "0" || *animates == "false";
    return false;
}
#endif
}  // namespace

bool wantsReducedMotion(const EnvironmentLookup& lookup) {
    if (const auto wanted = lookup("VMR_REDUCED_MOTION"); wanted && !wanted->empty()) return *wanted != "0";
    return systemWantsIt(lookup);
}

}  // namespace vmr
