// The shell's commands for the paper account.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/CommandTable.h"
#include "sim/SimEngine.h"

namespace vmr {

/// Does something to the account, and answers with what changed in it, that nothing did, or with the reason that
/// `operation` gives. A fill at a price of `root` that was not fresh is told.
std::string answerOfAccount(SimEngine& engine, const std::string& root,
                            const std::function<std::optional<std::string>()>& operation);

/// Adds a row for each. Their answers tell what changed in the account, or that nothing did. `engine` outlives the
/// table.
void addSimCommands(CommandTable& table, SimEngine& engine);

}  // namespace vmr
