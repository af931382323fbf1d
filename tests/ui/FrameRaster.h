// Draws a recorded frame on the CPU, to compare real pixels with.
#pragma once

#include <QImage>
#include <array>
#include <vector>

#include "gpu/RecordedFrame.h"

namespace vmr::test {

/// A picture of `side` by `side` samples a pixel.
struct Raster {
    int side = 1;
    int width = 0, height = 0;                  ///< samples
    std::vector<std::array<float, 3>> samples;  ///< 0 to 1
    std::array<float, 3>& at(int x, int y) { return samples[static_cast<std::size_t>(y * width + x)]; }
};

/// Expects that every pixel is one that the frame over black allows, with `atlas` for its glyphs: antialiasing places
/// its samples as it likes, so a pixel on an edge may take any value between the samples around it. `meanError` grows
/// with the share of pixels on an edge. Pixels may also be what lies in their middles, since some drivers (Mesa 25's
/// OpenGL without a graphics card) say four samples and draw one. `seams` values may be wrong: with one sample two
/// shapes that each smooth an edge within one pixel let the ground through.
void expectSame(const QImage& image, const RecordedFrame& frame, const QImage& atlas, double meanError, int seams = 0);

}  // namespace vmr::test
