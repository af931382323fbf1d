// The shell's command for a pane's settings as a whole.
#pragma once

#include <functional>

#include "base/CommandTable.h"

namespace vmr {

class AppModel;
class SettingsTransfer;

/// "settings export FILE|import FILE|reset" for the pane that `pane` gives. `transfer` may be null, where there is
/// nothing to take along, and outlives the command.
Command settingsCommand(SettingsTransfer* transfer, std::function<AppModel*()> pane);

}  // namespace vmr
