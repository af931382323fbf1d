// A text beside a bar of the chart.
#pragma once

#include <optional>
#include <string>

namespace vmr {

/// One label of the strike bars, placed in points from the view's top left.
struct BarLabel {
    double anchorX = 0;  ///< where the text starts, or ends with `alignRight`
    double y = 0;        ///< middle of the line
    std::string text;
    double fontSize = 0;  ///< points
    bool alignRight = false;
    double r = 0, g = 0, b = 0;   ///< colour, each 0 to 1
    std::optional<double> value;  ///< the bar's metric; nothing for "KGS" and "Gamma Flip"
    bool operator==(const BarLabel&) const = default;
};

}  // namespace vmr
