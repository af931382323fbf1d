// The shell's commands for actions and their keys.
#pragma once

#include <functional>

#include "base/CommandTable.h"
#include "workspace/ActionTable.h"
#include "workspace/HotkeyRouter.h"

namespace vmr {

/// Adds "do", "actions" and "key". `context` gives what a command works on; `keys` outlives the table, null for none.
void addActionCommands(CommandTable& table, std::function<ActionContext()> context, HotkeyRouter* keys);

}  // namespace vmr
