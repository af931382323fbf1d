// The picture beside the sign-in form: calm candles and a profile of strikes. It shows no market.
#pragma once

#include <vector>

#include "workspace/ArtVertex.h"

namespace vmr {

/// Fills `out` with the picture's triangles for an area in points, y downwards, as it looks after `seconds`. The same
/// input gives the same picture, and the number of triangles depends on the area alone.
void makeSignInArt(double width, double height, double seconds, std::vector<ArtVertex>& out);

}  // namespace vmr
