#include "chart/MarkedStrikeLayer.h"

#include <algorithm>

#include "base/NumberText.h"
#include "chart/AxisLayer.h"
#include "chart/AxisScale.h"
#include "chart/TradingLinesLayer.h"

namespace vmr {

namespace {
constexpr TextStyle textStyle{FontFace::semibold, 11};
constexpr Rgba lineColor{1.0F, 0.843F, 0.0F, 0.9F};
constexpr Rgba textColor{0.06F, 0.05F, 0.0F, 1.0F};
constexpr double dash = 6, gap = 4, boxHeight = 16, radius = 3, margin = 5, stroke = 2;  // points
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

void MarkedStrikeLayer::drawBelow(ScreenFrame& frame) {
    shownAt_.reset();
    titleBox_ = tagBox_ = {};
    if (!price_) return;
    const double y = AxisScale::yFor(frame.viewport, *price_, frame.height);
    if (!(y >= 0 && y <= frame.plot().bottom())) return;
    shownAt_ = y;
    painter_.paint(frame, [&] { place(frame); });
}

void MarkedStrikeLayer::place(const ScreenFrame& frame) {
    const PlotArea plot = frame.plot();
    layout_.clear();
    if (axes) addFixed(axes->lastPriceBox(frame));
    for (const PointRect& box : covered) addFixed(box);
    if (account) {
        for (const PointRect& box : account->tagBoxes()) addFixed(box);
        for (const PointRect& box : account->labelBoxes()) addFixed(box);
    }
    const double width = 2 * margin + painter_.textWidth(title_, textStyle);
    const auto title =
        layout_.add({.left = margin, .right = margin + width, .height = boxHeight, .wantedY = *shownAt_});
    const auto tag =
        layout_.add({.left = plot.right(), .right = plot.width, .height = boxHeight, .wantedY = *shownAt_});
    layout_.arrange(0, plot.bottom());
    const auto placed = [&](std::size_t i) {
        const LabelBox& box = layout_.boxes()[i];
        return box.opacity > 0 ? PointRect{box.left, box.top(), box.right - box.left, box.height} : PointRect();
    };
    titleBox_ = placed(title);
    tagBox_ = placed(tag);
}

void MarkedStrikeLayer::addFixed(const PointRect& box) {
    if (!(box.width > 0)) return;
    layout_.add(
        {.left = box.x, .right = box.right(), .height = box.height, .wantedY = box.y + box.height / 2, .fixed = true});
}

bool MarkedStrikeLayer::drawAbove(ScreenFrame& frame) {
    return shownAt_ && painter_.paint(frame, [&] { paint(frame); });
}

// A box that stands beside the line has a stroke to it.
void MarkedStrikeLayer::paint(const ScreenFrame& frame) {
    const double y = *shownAt_;
    const PointRect& box = titleBox_;
    const bool onLine = box.width > 0 && y >= box.y && y <= box.bottom();
    painter_.dashes(onLine ? box.right() : margin, frame.plot().right(), y, dash, gap, lineColor);
    if (!(box.width > 0)) return;
    const double middle = box.y + box.height / 2;
    if (!onLine) painter_.rect(box.x, std::min(y, middle), box.x + stroke, std::max(y, middle), lineColor);
    painter_.roundedBox(box.x, box.y, box.right(), box.bottom(), radius, lineColor);
    painter_.text(title_, textStyle, box.x + margin, middle, TextAlign::left, textColor);
}

void MarkedStrikeLayer::paintTag(const ScreenFrame& frame, Painter& painter) const {
    const double y = *shownAt_, middle = tagBox_.y + tagBox_.height / 2;
    if (y < tagBox_.y || y > tagBox_.bottom())
        painter.rect(tagBox_.x, std::min(y, middle), tagBox_.x + stroke, std::max(y, middle), lineColor);
    painter.roundedBox(tagBox_.x, tagBox_.y, frame.width - 1, tagBox_.bottom(), radius, lineColor);
    painter.text(AxisScale::fmtPrice(*price_).text(), textStyle, (tagBox_.x + frame.width) * 0.5, middle,
                 TextAlign::center, textColor);
}

bool MarkedStrikeTagLayer::drawAbove(ScreenFrame& frame) {
    return line_.tagBox().width > 0 && painter_.paint(frame, [&] { line_.paintTag(frame, painter_); });
}

}  // namespace vmr
