#include "chart/TradingLinesLayer.h"

namespace vmr {

namespace {

constexpr Rgba buyColor{0.149F, 0.651F, 0.604F, 1.0F};
constexpr Rgba sellColor{0.937F, 0.325F, 0.314F, 1.0F};
constexpr Rgba plannedColor{0.6F, 0.6F, 0.6F, 1.0F};
constexpr Rgba backColor{0.04F, 0.04F, 0.04F, 0.92F};
constexpr TextStyle labelStyle{FontFace::regular, 11};
constexpr double boxPadding = 6;  // points

Rgba colorOf(const LineMark& mark) {
    if (mark.kind == LineMark::Kind::leg) return plannedColor;
    return mark.buy ? buyColor : sellColor;
}

}  // namespace

// Other texts make room for the labels, so they are there before anything is drawn.
void TradingLinesLayer::drawBelow(ScreenFrame& frame) {
    marks_.clear();
    labelBoxes_.clear();
    if (!trading || root.empty()) return;
    marks_.build(*trading, root, frame.viewport, frame.width, frame.height);
    painter_.paint(frame, [&] {
        labelBoxes_.clear();
        for (const LineMark& mark : marks_.list())
            if (mark.labelled) labelBoxes_.push_back(labelBox(frame, mark));
    });
}

bool TradingLinesLayer::drawAbove(ScreenFrame& frame) {
    if (marks_.list().empty()) return false;
    return painter_.paint(frame, [&] {
        for (const LineMark& mark : marks_.list()) addLine(frame, mark);
        for (const LineMark& mark : marks_.list()) addLabel(frame, mark);
    });
}

void TradingLinesLayer::addLine(const ScreenFrame& frame, const LineMark& mark) {
    if (!mark.drawn) return;
    Rgba color = colorOf(mark);
    color[3] = 0.8F;
    const double right = frame.plot().right();
    if (mark.kind == LineMark::Kind::position) return painter_.horizontal(0, right, mark.y, color);
    painter_.dashes(0, right, mark.y, mark.kind == LineMark::Kind::order ? 6 : 2, 4, color);
}

// The box ends at the close marks' column, or behind the mark.
PointRect TradingLinesLayer::labelBox(const ScreenFrame& frame, const LineMark& mark) {
    const double columnEnd = LineMarks::closeMarkEdge(frame.width) + 2, column = columnEnd - LineMarks::closeMarkWidth;
    const double left = column - painter_.textWidth(mark.label, labelStyle) - 2 * boxPadding;
    const double right = mark.closable() ? columnEnd : column;
    return {left, mark.y - LineMarks::closeMarkHeight / 2, right - left, LineMarks::closeMarkHeight};
}

void TradingLinesLayer::addLabel(const ScreenFrame& frame, const LineMark& mark) {
    if (!mark.labelled) return;
    const double pixel = 1 / frame.pixelRatio;
    const PointRect box = labelBox(frame, mark);
    const double left = box.x, right = box.right(), top = box.y, bottom = box.bottom();
    const double columnEnd = LineMarks::closeMarkEdge(frame.width) + 2, column = columnEnd - LineMarks::closeMarkWidth;
    const Rgba color = colorOf(mark);
    painter_.rect(left, top, right, bottom, color);
    painter_.rect(left + pixel, top + pixel, right - pixel, bottom - pixel, backColor);
    painter_.text(mark.label, labelStyle, left + boxPadding, mark.y, TextAlign::left, color);
    if (!mark.closable()) return;
    painter_.vertical(column, top, bottom, color);
    addCross(columnEnd - LineMarks::closeMarkWidth / 2, mark.y, color);
}

void TradingLinesLayer::addCross(double x, double y, const Rgba& color) {
    constexpr double reach = 3.0, width = 1.7;  // points
    painter_.line({x - reach, y - reach}, {x + reach, y + reach}, width, color);
    painter_.line({x - reach, y + reach}, {x + reach, y - reach}, width, color);
}

}  // namespace vmr
