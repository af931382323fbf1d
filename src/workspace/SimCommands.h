// The shell's commands for the paper account.
#pragma once

#include "base/CommandTable.h"
#include "sim/SimEngine.h"

namespace vmr {

/// Adds a row for each. Their answers tell what changed in the account, or that nothing did. `engine` outlives the
/// table.
void addSimCommands(CommandTable& table, SimEngine& engine);

}  // namespace vmr
