#include "chart/TradingLinesLayer.h"

#include <array>
#include <cmath>

#include "chart/AxisLayer.h"

namespace vmr {

namespace {

constexpr Rgba goodColor{0.149F, 0.651F, 0.604F, 1.0F};
constexpr Rgba badColor{0.937F, 0.325F, 0.314F, 1.0F};
constexpr Rgba backColor{0.04F, 0.04F, 0.04F, 0.92F};
constexpr Rgba tagTextColor{1.0F, 1.0F, 1.0F, 1.0F};
constexpr float lineOpacity = 0.85F, plannedOpacity = 0.5F;
constexpr TextStyle labelStyle{FontFace::regular, 11};
constexpr double badgeMargin = 6;  // points

}  // namespace

Rgba TradingLinesLayer::colorOf(const LineMark& mark) {
    Rgba color = mark.good ? goodColor : badColor;
    if (mark.kind == LineMark::Kind::leg && !mark.dragged) color[3] = plannedOpacity;
    return color;
}

// Other texts make room for the badges and tags, so they are there before anything is drawn.
void TradingLinesLayer::drawBelow(ScreenFrame& frame) {
    marks_.clear();
    labelBoxes_.clear();
    tagBoxes_.clear();
    if (!trading || root.empty()) return;
    const PointRect lastPrice = axes ? axes->lastPriceBox(frame) : PointRect();
    marks_.build({trading, root, frame.viewport, frame.width, frame.height}, dragged, lastPrice);
    for (const LineMark& mark : marks_.list()) {
        if (mark.badge.width > 0) labelBoxes_.push_back(mark.badge);
        if (mark.tag.width > 0) tagBoxes_.push_back(mark.tag);
    }
}

bool TradingLinesLayer::drawAbove(ScreenFrame& frame) {
    if (marks_.list().empty()) return false;
    return painter_.paint(frame, [&] {
        for (const LineMark& mark : marks_.list()) addLine(frame, mark);
        for (const LineMark& mark : marks_.list()) addBadge(frame, mark);
    });
}

void TradingLinesLayer::addLine(const ScreenFrame& frame, const LineMark& mark) {
    if (!mark.drawn) return;
    Rgba color = colorOf(mark);
    color[3] = std::min(color[3], lineOpacity);
    const double right = frame.plot().right();
    if (mark.kind == LineMark::Kind::position) return painter_.horizontal(0, right, mark.y, color);
    painter_.dashes(0, right, mark.y, mark.kind == LineMark::Kind::order ? 6 : 2, 4, color);
}

void TradingLinesLayer::addBadge(const ScreenFrame& frame, const LineMark& mark) {
    const PointRect& box = mark.badge;
    if (!(box.width > 0)) return;
    const double pixel = 1 / frame.pixelRatio, middle = box.y + box.height / 2;
    const Rgba color = colorOf(mark);
    painter_.rect(box.x, box.y, box.right(), box.bottom(), color);
    painter_.rect(box.x + pixel, box.y + pixel, box.right() - pixel, box.bottom() - pixel, backColor);
    painter_.text(mark.label, labelStyle, box.x + badgeMargin, middle, TextAlign::left, color);
    if (!(mark.closeMark.width > 0)) return;
    painter_.vertical(mark.closeMark.x, box.y, box.bottom(), color);
    addCross(mark.closeMark, color);
}

void TradingLinesLayer::addCross(const PointRect& box, const Rgba& color) {
    constexpr double reach = 3.0, width = 1.7;  // points
    const double x = box.x + box.width / 2, y = box.y + box.height / 2;
    painter_.line({x - reach, y - reach}, {x + reach, y + reach}, width, color);
    painter_.line({x - reach, y + reach}, {x + reach, y - reach}, width, color);
}

// A tag that stands beside its line has a stroke to it along the axis.
bool TradingTagsLayer::drawAbove(ScreenFrame& frame) {
    if (lines_.tagBoxes().empty()) return false;
    constexpr double rightMargin = 9, stroke = 2;  // points; the text ends where the axis' own prices do
    return painter_.paint(frame, [&] {
        for (const LineMark& mark : lines_.marks().list()) {
            const PointRect& box = mark.tag;
            if (!(box.width > 0)) continue;
            const Rgba color = TradingLinesLayer::colorOf(mark);
            const double middle = box.y + box.height / 2;
            if (mark.y < box.y || mark.y > box.bottom())
                painter_.rect(box.x, std::min(mark.y, middle), box.x + stroke, std::max(mark.y, middle), color);
            painter_.rect(box.x, box.y, box.right(), box.bottom(), color);
            painter_.text(mark.tagText.text(), labelStyle, box.right() - rightMargin, middle, TextAlign::right,
                          tagTextColor);
        }
    });
}

}  // namespace vmr
