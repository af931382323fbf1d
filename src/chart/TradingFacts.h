// What a chart shows of the paper account, as its last frame has it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chart/EntryPill.h"
#include "gpu/PointRect.h"
#include "gpu/Vertices.h"

namespace vmr {

/// Places in points from the chart's top left; a box without a width is not shown.
struct TradingFacts {
    struct Line {
        std::string id;  ///< the order's; a planned leg's with "/SL" or "/TP" behind its order's; "entry" of a position
        std::string kind;  ///< "order", "leg" or "position"
        std::string text{}, tagText{};
        double price = 0, y = 0;
        bool shown = false, dragged = false;
        Rgba color{};
        PointRect badge{}, closeMark{}, tag{};
    };
    std::string root;
    std::vector<Line> lines;  ///< lowest first
    std::optional<EntryPill> pill;
};

}  // namespace vmr
