// Draws a recorded frame on the CPU, to compare real pixels with.
#pragma once

#include <QImage>
#include <array>
#include <vector>

#include "ui/RhiFrame.h"

namespace vmr::test {

/// A picture that knows how far each pixel may stray: antialiasing places its samples as it likes, so a pixel on an
/// edge may take any value between the samples around it.
struct Raster {
    int width = 0, height = 0;                          ///< device pixels
    std::vector<std::array<float, 3>> low, high, mean;  ///< 0 to 255 a pixel
};

/// Sixteen samples a pixel, over black. `atlas` holds the glyphs that the frame refers to.
Raster rasterise(const RecordedFrame& frame, const QImage& atlas);

/// Expects that every pixel is one that the raster allows. `meanError` grows with the share of pixels on an edge.
void expectSame(const QImage& image, const Raster& expected, double meanError);

}  // namespace vmr::test
