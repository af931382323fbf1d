#include "chart/PillLayer.h"

#include <algorithm>
#include <utility>

#include "chart/MarkedStrikeLayer.h"
#include "chart/TradingLinesLayer.h"

namespace vmr {

namespace {

constexpr TextStyle markStyle{FontFace::regular, 11};
constexpr double markHeight = 16.0, markRadius = 3.0, textMargin = 4.0;  // points
constexpr double pillOffset = 15.0;                                      // from a point to its pill
constexpr double tipOffset = 10.0;  // ... and to the tip of the triangle between them
constexpr double tipHalf = 5.0;     // of the triangle's base
constexpr double leaderRun = 8.0;   // what the slope of a level's leader takes
constexpr double leaderWidth = 1.0;
constexpr double leaderShare = 0.6, lineShare = 0.22;  // of a text's opacity
constexpr float pastShare = 0.5F;                      // of a pill's colour where its series goes on out of view
constexpr double endedOpacity = 0.65;
constexpr double leastLine = 24.0;  // points of an ended line that its label leaves free
constexpr Rgba labelGround{0.04F, 0.04F, 0.04F, 0.8F};

Rgba faded(const Rgba& color, double opacity) {
    return {color[0], color[1], color[2], color[3] * static_cast<float>(opacity)};
}

/// Darker instead of fainter, so that its text can be read over whatever lies below.
Rgba dimmed(const Rgba& color) {
    const auto mixed = [&](std::size_t i) { return color[i] * pastShare + labelGround[i] * (1 - pastShare); };
    return {mixed(0), mixed(1), mixed(2), color[3]};
}

/// Where texts end that must leave the strike bars and their own texts free.
double columnEnd(double width) { return std::min(LineMarks::closeMarkEdge(width) + 2, PlotArea{width, 0}.right() - 1); }

}  // namespace

bool PillLayer::setSecondSymbol(std::string_view symbol) {
    if (secondSymbol_ == symbol) return false;
    secondSymbol_ = symbol;
    return true;
}

bool PillLayer::setLines(std::span<const OverlayLine> lines, std::uint64_t revision, const OverlayStyle& style) {
    const bool restyled = std::exchange(style_, style) != style;
    return levels_.setLines(lines, revision, style) || restyled;
}

void PillLayer::drawBelow(ScreenFrame& frame) {
    painter_.paint(frame, [&] { layOut(frame); });
}

void PillLayer::layOut(const ScreenFrame& frame) {
    marks_.clear();
    boxes_.clear();
    layout_.clear();
    const PlotArea plot = frame.plot();
    if (!(plot.right() > 0 && plot.bottom() > 0)) return;
    addPills(frame);
    addLevels(frame);
    if (account)
        for (const PointRect& box : account->labelBoxes()) addFixed(box);
    if (marked && marked->titleBox().width > 0) addFixed(marked->titleBox());
    for (const PointRect& box : covered) addFixed(box);
    layout_.arrange(0, plot.bottom());
    takeRoom();
}

void PillLayer::addFixed(const PointRect& box) {
    boxes_.push_back(box);
    layout_.add({.left = box.x,
                 .right = box.right(),
                 .height = box.height,
                 .wantedY = box.y + box.height * 0.5,
                 .rank = LabelRank::trading,
                 .fixed = true});
}

// Of two that would meet, the later one of the list keeps its place.
void PillLayer::addPills(const ScreenFrame& frame) {
    const double plotRight = frame.plot().right();
    const auto pills = pills_.inView({.points = ribbons_.points(),
                                      .secondSymbol = secondSymbol_,
                                      .lineRates = style_.lineRates,
                                      .viewport = frame.viewport,
                                      .width = frame.width,
                                      .height = frame.height,
                                      .plotRight = plotRight,
                                      .candles = frame.candles});
    for (std::size_t i = pills.size(); i-- > 0;) {
        const Pill& pill = pills[i];
        const double width = painter_.textWidth(pill.text, markStyle) + 2 * textMargin;
        const double furthest = pill.past ? columnEnd(frame.width) : plotRight - 1;
        add({.text = pill.text,
             .box = {0, 0, width, markHeight},
             .fill = pill.past ? dimmed(pill.fill) : pill.fill,
             .textColor = pill.textColor,
             .pill = true,
             .lineEnd = pill.x,
             .tipX = pill.x,
             .tipY = pill.y},
            LabelRank::pill, std::min(pill.x + pillOffset + width, furthest));
    }
}

void PillLayer::addLevels(const ScreenFrame& frame) {
    const double column = columnEnd(frame.width);
    for (const LevelLabel& level :
         levels_.inView(frame.viewport, frame.width, frame.plot().right(), frame.candles, frame.wallsFrom)) {
        const double y = AxisScale::yFor(frame.viewport, level.price, frame.height);
        if (!(y > -Pills::verticalMargin && y < frame.height + Pills::verticalMargin)) continue;
        const double width = painter_.textWidth(level.text, markStyle) + 2 * textMargin;
        const double right = level.goesOn ? column : std::min(level.right, column);
        if (!level.goesOn && right - level.left < width + leastLine) continue;
        const double opacity = level.wall ? 1 : level.goesOn ? style_.lineOpacity : endedOpacity * style_.lineOpacity;
        add({.text = level.text,
             .box = {0, 0, width, markHeight},
             .fill = labelGround,
             .textColor = {static_cast<float>(level.r), static_cast<float>(level.g), static_cast<float>(level.b), 1},
             .lineEnd = level.goesOn ? level.right : right,
             .tipX = right - width - leaderRun,
             .tipY = y,
             .opacity = std::clamp(opacity, 0.0, 1.0)},
            level.wall ? LabelRank::wall : LabelRank::level, right);
    }
}

// One that would begin left of the view is left away.
void PillLayer::add(Mark mark, LabelRank rank, double right) {
    mark.box.x = right - mark.box.width;
    if (!(mark.box.x >= 0) || !(mark.opacity > 0)) return;
    layout_.add({.left = mark.box.x, .right = right, .height = markHeight, .wantedY = mark.tipY, .rank = rank});
    marks_.push_back(mark);
}

void PillLayer::takeRoom() {
    for (std::size_t i = 0; i < marks_.size(); ++i) {
        const LabelBox& placed = layout_.boxes()[i];
        Mark& mark = marks_[i];
        mark.box.y = placed.top();
        mark.room = placed.opacity;
        mark.opacity *= mark.room;
        if (mark.opacity > 0) boxes_.push_back(mark.box);
    }
    std::erase_if(marks_, [](const Mark& mark) { return !(mark.opacity > 0); });
}

bool PillLayer::drawAbove(ScreenFrame& frame) {
    if (marks_.empty()) return false;
    return painter_.paint(frame, [&] {
        for (const Mark& mark : marks_) paintLeaders(mark);
        for (const Mark& mark : marks_)
            painter_.roundedBox(mark.box.x, mark.box.y, mark.box.right(), mark.box.bottom(), markRadius, mark.ground());
        for (const Mark& mark : marks_)
            painter_.text(mark.text, markStyle, mark.box.x + mark.box.width * 0.5, mark.box.y + markHeight * 0.5,
                          TextAlign::center, faded(mark.textColor, mark.opacity));
    });
}

void PillLayer::paintLeaders(const Mark& mark) {
    const double y = mark.box.y + markHeight * 0.5;
    const bool moved = y != mark.tipY;
    const Rgba color = faded(mark.pill ? mark.fill : mark.textColor, mark.opacity * leaderShare);
    if (!mark.pill) {
        const double from = moved ? mark.tipX : mark.box.x;
        if (mark.lineEnd < from)
            painter_.horizontal(mark.lineEnd, from, mark.tipY, faded(mark.textColor, mark.opacity * lineShare));
        if (moved) painter_.line({mark.tipX, mark.tipY}, {mark.box.x, y}, leaderWidth, color);
        return;
    }
    const double left = mark.box.x;
    if (left == mark.tipX + pillOffset) {
        painter_.triangle({left - pillOffset + tipOffset, y}, {left, y - tipHalf}, {left, y + tipHalf},
                          faded(mark.fill, mark.opacity));
        if (moved) painter_.line({mark.tipX, mark.tipY}, {left - pillOffset + tipOffset, y}, leaderWidth, color);
    } else if (mark.tipX > mark.box.right()) {
        painter_.line({mark.box.right(), y}, {mark.tipX, mark.tipY}, leaderWidth, color);
    }
}

}  // namespace vmr
