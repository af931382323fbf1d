// The shell's command for the ticket and the cards of a pane's simulator panel.
#pragma once

#include <functional>

#include "base/CommandTable.h"

namespace vmr {

class AppModel;
class SimEngine;

/// It is for the pane that `pane` gives, which is never null while it runs, and does what the panel's controls do, be
/// the panel open or not. `engine` outlives it.
Command ticketCommand(SimEngine& engine, std::function<AppModel*()> pane);

}  // namespace vmr
