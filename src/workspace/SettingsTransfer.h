// Takes a person's setting-up out to a file and in again.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "workspace/SettingsFile.h"

namespace vmr {

class AppModel;
class Preferences;
class WorkspaceStore;

/// One for the process. Main thread.
class SettingsTransfer {
 public:
    /// Both outlive it.
    SettingsTransfer(Preferences& preferences, WorkspaceStore& workspace)
        : preferences_(preferences), workspace_(workspace) {}

    /// Whoever uses the keys checks those of a file, and hears when others are stored. Both may be empty.
    void setHotkeys(HotkeyCheck check, std::function<void()> changed) {
        check_ = std::move(check);
        hotkeysChanged_ = std::move(changed);
    }

    /// Writes the settings of `pane` and what else is stored. Replaces the file whole; gives what failed.
    std::optional<std::string> exportTo(const std::string& file, const AppModel& pane);

    /// Takes everything that the file holds, or nothing, and gives what is wrong. The settings go to `pane` and into
    /// the record; windows come as the file tells with the next start or the next session.
    std::optional<std::string> importFrom(const std::string& file, AppModel& pane);

 private:
    void take(const SettingsBundle& bundle, AppModel& pane);

    Preferences& preferences_;
    WorkspaceStore& workspace_;
    HotkeyCheck check_;
    std::function<void()> hotkeysChanged_;
};

}  // namespace vmr
