// What pictures made of coloured triangles consist of.
#pragma once

#include <cstdint>

namespace vmr {

/// A corner of a triangle, in points, y downwards; the colour is multiplied with its opacity.
struct ArtVertex {
    float x = 0, y = 0;
    std::uint8_t red = 0, green = 0, blue = 0, opacity = 0;
};

}  // namespace vmr
