// The whole state of the panes as one JSON object, for tests, support and scripts.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "model/AppModel.h"
#include "services/cloud/Announcements.h"
#include "services/cloud/UpdateChecker.h"

namespace vmr {

/// A window, as the document tells it.
struct WindowFacts {
    int number = 0;
    std::optional<std::array<double, 4>> frame;  ///< as in `WindowRecord`
    double split = 0.5;
    std::vector<int> panes;  ///< their numbers, from left to right
    bool dual = false, sync = false;
    std::vector<std::string> panels;  ///< that are open in its panes
};

/// What the document is made from. What is null is missing from it.
struct StateSources {
    const Clock& clock;
    std::vector<const AppModel*> panes;
    const SimEngine* sim = nullptr;
    const Announcements* notices = nullptr;
    const UpdateChecker* updates = nullptr;
    std::optional<std::vector<WindowFacts>> windows{};
    std::optional<std::map<std::string, std::string>> hotkeys{};  ///< the present key of each action, "" for none
};

/// {"clock": seconds, "panes": [...], "sim": {...}, "announcement": ..., "maintenance": ..., "update": ..., "windows":
/// [...], "hotkeys": {...}}: every pane's fields under their own names. Bars are arrays [time, open, high, low, close,
/// volume], other records objects; a missing optional or a non-finite number is null; doubles round-trip. Dates of the
/// simulator are seconds since 2001; a pane's `simPanel` has the texts of its panel, shown or not. `overlay` is what is
/// written on a pane's chart, null without one: boxes are [x, y, width, height] in points from the chart's top left,
/// colours [r, g, b, a] of 0 to 1.
std::string stateDocument(const StateSources& sources);

}  // namespace vmr
