// What a pane's views tell of themselves: which panels are open, and where; what has room in the toolbar.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/Signal.h"

namespace vmr {

/// What an open settings panel shows: its columns, each with its sections' headings and the rows below them.
struct SettingsShown {
    struct Section {
        std::string title;
        std::vector<std::string> rows;  ///< by the name of the first setting, or of what the button does
    };
    std::string search;
    std::vector<std::vector<Section>> columns;
    std::vector<std::string> invalid;  ///< settings whose field holds a bad text
};

/// What a view of the HF pressure panel shows beside the samples' own numbers.
struct PressureShown {
    bool overlay = false;            ///< over the chart instead of beside it
    std::vector<std::string> times;  ///< on the strip
    std::string pointed;             ///< what the tag at the pointer says; empty for none
    bool operator==(const PressureShown&) const = default;
};

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
    std::optional<SettingsShown> settings;  ///< nothing while no view shows them
    std::optional<PressureShown> pressure;  ///< likewise
};

}  // namespace vmr
