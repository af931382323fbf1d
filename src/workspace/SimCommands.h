// The shell's commands for the paper account.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sim/SimEngine.h"

namespace vmr {

/// What the help says of them.
inline constexpr std::string_view simCommandsHelp =
    "order SYM buy|sell market|limit|stop|stopLimit QTY [limit=P] [stop=P] [sl=TICKS] [tp=TICKS] | cancel ID | modify "
    "ID "
    "PRICE | flatten SYM | protect SYM SL|TP PRICE | leg ID SL|TP PRICE | reset BALANCE";

/// Carries out one command. The answer tells what changed in the account, or that nothing did, or what is wrong with
/// the command; nothing at all for a name that is none of these commands.
std::optional<std::string> runSimCommand(SimEngine& engine, const std::string& name, std::string_view arguments);

}  // namespace vmr
