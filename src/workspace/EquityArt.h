// The running result of an account's trades, as triangles.
#pragma once

#include <cstdint>
#include <vector>

#include "model/SimPanelFacts.h"
#include "workspace/ArtVertex.h"

namespace vmr {

struct EquityColor {
    std::uint8_t red = 0, green = 0, blue = 0;
};

/// Fills `out` with the line at 0, what was lost since the highest result, shaded, and the curve over both, in the
/// colour of what came out in the end, for an area of that size. Nothing of an empty plot.
void makeEquityArt(const SimCurvePlot& plot, double width, double height, EquityColor gain, EquityColor loss,
                   std::vector<ArtVertex>& out);

}  // namespace vmr
