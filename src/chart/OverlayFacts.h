// What is written on a chart, as its last frame shows it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "gpu/PointRect.h"
#include "gpu/Vertices.h"

namespace vmr {

/// Places in points from the chart's top left.
struct OverlayFacts {
    struct Text {
        std::string text;
        PointRect box;
        Rgba color{};  ///< as it is drawn: of the box, or of the text where it has none
    };
    struct Tick {
        std::string text;
        double at = 0;  ///< its middle along the axis
    };
    std::vector<Text> pills;             ///< in the order of the series
    std::vector<Text> labels;            ///< of lines, levels and walls; the more important first
    std::vector<Text> strikes;           ///< beside the strike bars; the more important first
    std::vector<Tick> prices, times;     ///< on the axes
    std::vector<std::string> watermark;  ///< its lines; none where it has no room
    std::optional<Tick> marked{};        ///< the line of a marked strike, where it is in view
};

}  // namespace vmr
