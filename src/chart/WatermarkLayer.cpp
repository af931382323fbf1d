#include "chart/WatermarkLayer.h"

#include <cmath>

namespace vmr {

namespace {

constexpr double boxWidth = 600.0, boxHeight = 120.0, textSize = 39.0;  // points
constexpr double lineShare = 0.225;  // of the box: from its middle to that of either line
constexpr Rgba titleColor{1.0F, 1.0F, 1.0F, 0.1F};
constexpr Rgba nameColor{1.0F, 1.0F, 1.0F, 0.08F};
constexpr Rgba accentColor{0.149F, 0.651F, 0.604F, 0.22F};

/// Few sizes, so that resizing a window makes few new glyphs; 0 where none fits.
double sizeFor(const PlotArea& plot) {
    for (const double share : {1.0, 2.0 / 3, 1.0 / 3})
        if (plot.right() >= boxWidth * share && plot.bottom() >= boxHeight * share) return textSize * share;
    return 0;
}

}  // namespace

bool WatermarkLayer::set(std::string_view symbol, double timeframe) {
    if (symbol == symbol_ && timeframe == timeframe_) return false;
    symbol_ = symbol;
    timeframe_ = timeframe;
    title_.clear();
    if (!symbol.empty()) title_ = symbol_ + " " + std::to_string(std::lround(timeframe)) + "m";
    return true;
}

void WatermarkLayer::drawBelow(ScreenFrame& frame) {
    const double size = sizeFor(frame.plot());
    shown_ = size > 0;
    if (shown_) painter_.paint(frame, [&] { paintAll(frame, size); });
}

void WatermarkLayer::paintAll(const ScreenFrame& frame, double pointSize) {
    const TextStyle style{FontFace::semibold, pointSize};
    const double x = frame.plot().right() * 0.5, y = frame.plot().bottom() * 0.5;
    const double apart = title_.empty() ? 0 : boxHeight * lineShare * pointSize / textSize;
    painter_.text(title_, style, x, y - apart, TextAlign::center, titleColor);
    const double begin = painter_.textWidth(nameBegin, style), width = begin + painter_.textWidth(nameEnd, style);
    painter_.text(nameBegin, style, x - width * 0.5, y + apart, TextAlign::left, nameColor);
    painter_.text(nameEnd, style, x - width * 0.5 + begin, y + apart, TextAlign::left, accentColor);
}

}  // namespace vmr
