// What a pane's views tell of themselves: which panels are open, and where; what has room in the toolbar.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "base/Signal.h"

namespace vmr {

/// All closed at first. Main thread.
struct PanelsOpen {
    Observable<bool> configPanelOpen{false}, accountPanelOpen{false}, templatesPanelOpen{false}, simPanelOpen{false};

    /// Those that a view shows, by name: x, y, width and height in points, from the top left of the panels' area.
    std::map<std::string, std::array<double, 4>> frames;

    /// The toolbar's controls, most by the names of their actions: those in the row, with the places of their middles
    /// in points from the pane's left edge, and those in its menu, in order.
    struct ToolbarFacts {
        std::map<std::string, double> shown;
        std::vector<std::string> folded;
    };
    ToolbarFacts toolbar;
};

}  // namespace vmr
