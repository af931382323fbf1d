// Draws a recorded frame on the CPU, to compare real pixels with.
#pragma once

#include <QImage>
#include <cstddef>
#include <span>

#include "gpu/RecordedFrame.h"

namespace vmr::test {

/// The vertices that a draw of this frame draws.
std::span<const std::byte> bytesOf(const RecordedFrame& frame, const RecordedFrame::Draw& draw);

/// Expects that every pixel is one that the frame over black allows, with `atlas` for its glyphs: antialiasing places
/// its samples as it likes, so a pixel on an edge may take any value between the samples around it. `meanError` grows
/// with the share of pixels on an edge. Pixels may also be what lies in their middles, since some drivers (Mesa 25's
/// OpenGL without a graphics card) say four samples and draw one.
void expectSame(const QImage& image, const RecordedFrame& frame, const QImage& atlas, double meanError);

/// How far pixels are from what covers them, as shares of full scale.
struct Deviation {
    double most = 0, mean = 0;  ///< the mean over the pixels that differ from the ground
    int pixels = 0;
    int x = 0, y = 0;  ///< where it is greatest
};

/// Compares with the frame as it is after it last cleared its view, at 16 x 16 samples a pixel, each of which lies
/// within a shape or outside.
Deviation deviationFromCoverage(const QImage& image, const RecordedFrame& frame, const QImage& atlas);

}  // namespace vmr::test
