// Draws a recorded frame on the CPU, to compare real pixels with.
#pragma once

#include <QImage>
#include <array>
#include <vector>

#include "gpu/RecordedFrame.h"

namespace vmr::test {

/// A picture of `samplesASide` by `samplesASide` samples a pixel.
struct Raster {
    static constexpr int samplesASide = 5;      ///< odd, so that one lies in the middle of the pixel
    int width = 0, height = 0;                  ///< samples
    std::vector<std::array<float, 3>> samples;  ///< 0 to 1
    std::array<float, 3>& at(int x, int y) { return samples[static_cast<std::size_t>(y * width + x)]; }
};

/// The frame over black. `atlas` holds the glyphs that it refers to.
Raster rasterise(const RecordedFrame& frame, const QImage& atlas);

/// Expects that every pixel is one that the raster allows: antialiasing places its samples as it likes, so a pixel on
/// an edge may take any value between the samples around it. `meanError` grows with the share of pixels on an edge; it
/// is held to what all samples of a pixel give or to what the middle one does, since some drivers (Mesa 25's OpenGL
/// without a graphics card) say four samples and draw one.
void expectSame(const QImage& image, Raster expected, double meanError);

}  // namespace vmr::test
