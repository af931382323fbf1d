#include "workspace/SettingsCommands.h"

#include <utility>

#include "workspace/SettingsEditor.h"
#include "workspace/SettingsTransfer.h"

namespace vmr {

namespace {
CommandAnswer run(SettingsTransfer* transfer, AppModel& pane, CommandWords& words) {
    const std::string what = words.next();
    const std::string file(words.rest());
    if (what == "reset" && file.empty()) {
        resetSettings(pane);
        return "ok settings reset";
    }
    if ((what != "export" && what != "import") || file.empty()) return std::nullopt;
    if (!transfer) return "error: there are no stored settings here";
    const auto problem = what == "export" ? transfer->exportTo(file, pane) : transfer->importFrom(file, pane);
    return problem ? "error: " + *problem : "ok settings " + what + " " + file;
}
}  // namespace

Command settingsCommand(SettingsTransfer* transfer, std::function<AppModel*()> pane) {
    return {"settings", "export FILE|import FILE|reset", 1, Command::restOfLine,
            [transfer, pane = std::move(pane)](CommandWords& words) { return run(transfer, *pane(), words); }};
}

}  // namespace vmr
