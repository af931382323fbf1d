#include "workspace/SettingsTransfer.h"

#include <filesystem>
#include <system_error>

#include "base/FileReplace.h"
#include "base/Preferences.h"
#include "model/AppModel.h"
#include "workspace/SettingsEditor.h"
#include "workspace/WorkspaceStore.h"

namespace vmr {

namespace fs = std::filesystem;

namespace {
constexpr std::uintmax_t longestFile = 1 << 20;  // bytes; a real one has a few thousand

fs::path pathOf(const std::string& utf8) { return {std::u8string(utf8.begin(), utf8.end())}; }
}  // namespace

std::optional<std::string> SettingsTransfer::exportTo(const std::string& file, const AppModel& pane) {
    workspace_.collectAndSave();
    SettingsBundle bundle;
    bundle.settings = pane.config.get();
    bundle.hotkeys = parseHotkeys(preferences_.get(hotkeysKey).value_or("{}")).value_or(HotkeyTexts());
    // what counts for nothing here would be refused there
    std::erase_if(*bundle.hotkeys, [this](const auto& one) { return check_ && check_({one}); });
    bundle.workspace = workspace_.current();
    bundle.panels.emplace();
    const std::string prefix = panelKey("");
    for (const std::string& key : preferences_.keys(prefix))
        (*bundle.panels)[key.substr(prefix.size())] = parsePanel(preferences_.get(key).value_or(""));
    if (!replacePrivateFile(pathOf(file), settingsFileText(bundle))) return std::nullopt;
    return "cannot write " + file;
}

std::optional<std::string> SettingsTransfer::importFrom(const std::string& file, AppModel& pane) {
    const fs::path path = pathOf(file);
    std::error_code error;
    if (!fs::is_regular_file(path, error)) return "there is no file " + file;
    if (fs::file_size(path, error) > longestFile || error) return "the file is no file of settings";
    const auto text = readFile(path);
    if (!text) return "cannot read " + file;
    const auto read = readSettingsFile(*text, check_);
    if (const auto* problem = std::get_if<std::string>(&read)) return *problem;
    take(std::get<SettingsBundle>(read), pane);
    return std::nullopt;
}

void SettingsTransfer::take(const SettingsBundle& bundle, AppModel& pane) {
    if (bundle.panels)
        for (const auto& [id, panel] : *bundle.panels)
            preferences_.set(panelKey(id), panelText({*panel.x, *panel.y}, {*panel.width, *panel.height}));
    if (bundle.workspace) workspace_.replace(*bundle.workspace);
    if (bundle.settings) {
        setSettings(pane, *bundle.settings, AppModel::Saving::now);
        pane.saveConfig();  // what is stored may be another pane's
    }
    if (bundle.hotkeys) {
        bundle.hotkeys->empty() ? preferences_.remove(hotkeysKey)
                                : preferences_.set(hotkeysKey, hotkeysText(*bundle.hotkeys));
        if (hotkeysChanged_) hotkeysChanged_();
    }
}

}  // namespace vmr
