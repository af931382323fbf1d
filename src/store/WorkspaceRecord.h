// The windows of a run, as they are remembered for the next.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/PaneState.h"

namespace vmr {

struct WindowRecord {
    std::vector<double> frame;    ///< x, y, width, height in points; y upwards from the bottom left of the first screen
    std::optional<double> split;  ///< share of the width that the left pane has; only with `dual`
    PaneState primary;
    std::optional<PaneState> dual;  ///< the second pane
    bool operator==(const WindowRecord&) const = default;
};

/// Compact JSON. Nothing when a number in it is not finite, which JSON cannot say.
std::optional<std::string> workspaceText(const std::vector<WindowRecord>& records);

/// Reads what `workspaceText` gives, unknown keys aside. Strict: one bad record, and there is nothing.
std::optional<std::vector<WindowRecord>> parseWorkspace(std::string_view text);

}  // namespace vmr
