// The picture beside the sign-in form: calm candles and a profile of strikes. It shows no market.
#pragma once

#include <cstdint>
#include <vector>

namespace vmr {

/// A corner of a triangle; the colour is multiplied with its opacity.
struct ArtVertex {
    float x = 0, y = 0;
    std::uint8_t red = 0, green = 0, blue = 0, opacity = 0;
};

/// Fills `out` with the picture's triangles for an area in points, y downwards, as it looks after `seconds`. The same
/// input gives the same picture, and the number of triangles depends on the area alone.
void makeSignInArt(double width, double height, double seconds, std::vector<ArtVertex>& out);

}  // namespace vmr
