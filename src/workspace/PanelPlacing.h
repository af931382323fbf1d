// Where a floating panel lies in its area, and how that is remembered. Pure functions; lengths in points.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vmr {

struct PanelSize {
    double width = 0, height = 0;
    bool operator==(const PanelSize&) const = default;
};
/// The top left corner, y downwards from the top of the area.
struct PanelPos {
    double x = 0, y = 0;
    bool operator==(const PanelPos&) const = default;
};

constexpr double panelMargin = 8;        ///< between a panel and the edges of its area
constexpr double panelTitleHeight = 34;  ///< of the bar that a panel is moved by
constexpr double panelReach = 52;        ///< of a panel that stays in the area, however small the area is
constexpr double panelStep = 8;          ///< that one key moves or sizes it by

/// At least `minimum`, and never more than the area less the margins, which wins. A `contentHeight` above 0 asks for
/// that height and the title bar's in place of the size's own.
PanelSize clampedSize(PanelSize size, PanelSize minimum, PanelSize area, double contentHeight = 0);

/// The place nearest to `pos` at which the panel keeps the margin on all sides. Where it does not fit, its title bar
/// stays in the area.
PanelPos clampedPos(PanelPos pos, PanelSize size, PanelSize area);

/// The preference that holds a panel's frame.
std::string panelKey(std::string_view id);

/// What is remembered of a panel's frame; what is missing, or is no finite number, is nothing.
struct StoredPanel {
    std::optional<double> x, y, width, height;
    bool operator==(const StoredPanel&) const = default;
};
/// Everything is nothing where the text does not decode.
StoredPanel parsePanel(std::string_view text);
std::string panelText(PanelPos pos, PanelSize size);

}  // namespace vmr
