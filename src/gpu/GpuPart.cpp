#include "gpu/GpuPart.h"

#include <algorithm>
#include <array>

namespace vmr {

void GpuPart::place(const PointRect& cell, double frameWidth, double frameHeight, double originX, double originY) {
    cell_ = cell;
    frameWidth_ = frameWidth;
    frameHeight_ = frameHeight;
    left_ = cell.x - originX;
    top_ = cell.y - originY;
}

void GpuPart::beginFrame(double width, double height, double) {
    width_ = width;
    height_ = height;
    whole_.setClip(cell_);
}

void GpuPart::setClip(const PointRect& clip) {
    const double x0 = std::max(clip.x + left_, cell_.x), y0 = std::max(clip.y + top_, cell_.y);
    const double x1 = std::min(clip.right() + left_, cell_.right()),
                 y1 = std::min(clip.bottom() + top_, cell_.bottom());
    whole_.setClip({x0, y0, x1 - x0, y1 - y0});
}

// The view's clip space is a rectangle of the frame's; what is measured in points is so by the frame's size.
void GpuPart::setUniforms(std::span<const float> values) {
    std::array<float, 8> out{};
    std::copy(values.begin(), values.end(), out.begin());
    const double shareX = width_ / frameWidth_, shareY = height_ / frameHeight_;
    const double middleX = (2 * left_ + width_) / frameWidth_ - 1, middleY = 1 - (2 * top_ + height_) / frameHeight_;
    out[0] = static_cast<float>(values[0] * shareX);
    out[1] = static_cast<float>(values[1] * shareX + middleX);
    out[2] = static_cast<float>(values[2] * shareY);
    out[3] = static_cast<float>(values[3] * shareY + middleY);
    if (values.size() == 8) {
        out[4] = static_cast<float>(frameWidth_);
        out[5] = static_cast<float>(frameHeight_);
    }
    whole_.setUniforms(std::span<const float>(out).first(values.size()));
}

}  // namespace vmr
