// The shell's commands for a pane's panels, and for the templates.
#pragma once

#include <functional>
#include <string>

#include "base/CommandTable.h"

namespace vmr {

class AppModel;

/// Adds a row for each. They are for the pane that `pane` gives, which is never null while one runs; `tell` gets the
/// answers that come later.
void addPanelCommands(const std::function<void(Command)>& add, std::function<AppModel*()> pane,
                      std::function<void(const std::string& text)> tell);

}  // namespace vmr
