#include "chart/MarkedStrikeLayer.h"

#include "base/NumberText.h"
#include "chart/AxisScale.h"

namespace vmr {

namespace {
constexpr TextStyle textStyle{FontFace::semibold, 11};
constexpr Rgba lineColor{1.0F, 0.843F, 0.0F, 0.9F};
constexpr Rgba textColor{0.06F, 0.05F, 0.0F, 1.0F};
constexpr double dash = 6, gap = 4, halfTag = 8, radius = 3, margin = 5;  // points
}  // namespace

bool MarkedStrikeLayer::set(std::optional<double> strike, double ratio) {
    const std::optional<double> price = strike ? std::optional(*strike * ratio) : std::nullopt;
    if (strike == strike_ && price == price_) return false;
    strike_ = strike;
    price_ = price;
    title_ = strike ? "Strike " + doubleText(*strike) : std::string();
    shownAt_.reset();
    return true;
}

bool MarkedStrikeLayer::drawAbove(ScreenFrame& frame) {
    shownAt_.reset();
    if (!price_) return false;
    const double y = AxisScale::yFor(frame.viewport, *price_, frame.height);
    if (!(y >= 0 && y <= frame.plot().bottom())) return false;
    shownAt_ = y;
    return painter_.paint(frame, [&] { paint(frame, y); });
}

void MarkedStrikeLayer::paint(const ScreenFrame& frame, double y) {
    const double right = frame.plot().right();
    const double titleRight = 2 * margin + painter_.textWidth(title_, textStyle) + margin;
    painter_.dashes(titleRight, right, y, dash, gap, lineColor);
    painter_.roundedBox(margin, y - halfTag, titleRight, y + halfTag, radius, lineColor);
    painter_.text(title_, textStyle, 2 * margin, y, TextAlign::left, textColor);
    const auto price = AxisScale::fmtPrice(*price_);
    painter_.roundedBox(right, y - halfTag, frame.width - 1, y + halfTag, radius, lineColor);
    painter_.text(price.text(), textStyle, (right + frame.width) * 0.5, y, TextAlign::center, textColor);
}

}  // namespace vmr
