// The shell's commands for windows.
#pragma once

#include <functional>

#include "base/CommandTable.h"
#include "workspace/ShellWindows.h"

namespace vmr {

/// Adds a row for each. Where a command names no window it is for the one that shows the pane which `pane` gives the
/// number of. `windows` may be null, for a program without a display, and outlives the table.
void addWindowCommands(CommandTable& table, ShellWindows* windows, std::function<int()> pane);

}  // namespace vmr
