// Which of a pane's panels are open, and where.
#pragma once

#include <array>
#include <map>
#include <string>

#include "base/Signal.h"

namespace vmr {

/// All closed at first. Main thread.
struct PanelsOpen {
    Observable<bool> configPanelOpen{false}, accountPanelOpen{false}, templatesPanelOpen{false}, simPanelOpen{false};

    /// Those that a view shows, by name: x, y, width and height in points, from the top left of the panels' area.
    std::map<std::string, std::array<double, 4>> frames;
};

}  // namespace vmr
