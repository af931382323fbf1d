// Everything that a person has set up, as one JSON file to take along.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "store/GexConfig.h"
#include "store/WorkspaceRecord.h"
#include "workspace/PanelPlacing.h"

namespace vmr {

/// Key texts by the id of their action.
using HotkeyTexts = std::map<std::string, std::string>;

/// Gives what is wrong with the keys, beginning with the id of the action that it is about; nothing when they can be
/// taken.
using HotkeyCheck = std::function<std::optional<std::string>(const HotkeyTexts& keys)>;

/// What such a file holds. What is missing from one stays as it is.
struct SettingsBundle {
    std::optional<GexConfig> settings;
    std::optional<HotkeyTexts> hotkeys;
    std::optional<std::vector<WindowRecord>> workspace;
    std::optional<std::map<std::string, StoredPanel>> panels;  ///< frames, by the panel's id
    bool operator==(const SettingsBundle&) const = default;
};

/// The file's text. What the panel could not set is written as the nearest that it could, so that every file that is
/// written can be read.
std::string settingsFileText(const SettingsBundle& bundle);

/// Reads the whole text, or gives what is wrong with it, beginning with the field: "settings.oiOpacity: …". Strict,
/// other than the readers of what is stored: nothing unknown, missing, of another type or out of range is let through.
/// `check` may be empty.
std::variant<SettingsBundle, std::string> readSettingsFile(std::string_view text, const HotkeyCheck& check = {});

/// The keys as the preference "vmr.hotkeys" holds them: one JSON object of strings.
inline constexpr const char* hotkeysKey = "vmr.hotkeys";
std::string hotkeysText(const HotkeyTexts& keys);
/// Nothing when the text is something else.
std::optional<HotkeyTexts> parseHotkeys(std::string_view text);

}  // namespace vmr
