// Draws the paper account's lines: position, working orders and the legs that entries will get.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "chart/ChartTrading.h"
#include "chart/LineMarks.h"
#include "chart/ScreenLayer.h"
#include "gpu/Painter.h"

namespace vmr {

class AxisLayer;

/// Each line has a badge and, but for planned legs, a close mark. A later mark of the list lies over an earlier one.
/// What a position's badge says of its result changes without a frame, and is written over it. Main thread.
class TradingLinesLayer final : public ScreenLayer {
 public:
    /// `glyphs` must outlive the layer.
    explicit TradingLinesLayer(GlyphSource& glyphs) : painter_(glyphs) {}

    const ChartTrading* trading = nullptr;  ///< null draws nothing; must outlive the frames
    std::string root;                       ///< empty draws nothing
    std::optional<DraggedLine> dragged;
    const AxisLayer* axes = nullptr;  ///< whose boxes the lines' tags leave free; may be null

    void drawBelow(ScreenFrame& frame) override;
    bool drawAbove(ScreenFrame& frame) override;

    /// What the last frame drew.
    const LineMarks& marks() const { return marks_; }
    /// The boxes of their badges, close marks included.
    std::span<const PointRect> labelBoxes() const { return labelBoxes_; }
    /// The tags on the price axis, which `TradingTagsLayer` draws.
    std::span<const PointRect> tagBoxes() const { return tagBoxes_; }
    static Rgba colorOf(const LineMark& mark);

 private:
    void addLine(const ScreenFrame& frame, const LineMark& mark);
    void addBadge(const ScreenFrame& frame, const LineMark& mark);
    void addCross(const PointRect& box, const Rgba& color);

    Painter painter_;
    LineMarks marks_;
    std::vector<PointRect> labelBoxes_, tagBoxes_;
};

/// Draws the lines' tags over the price axis. Main thread.
class TradingTagsLayer final : public ScreenLayer {
 public:
    /// Both must outlive the layer.
    TradingTagsLayer(GlyphSource& glyphs, const TradingLinesLayer& lines) : lines_(lines), painter_(glyphs) {}

    bool drawAbove(ScreenFrame& frame) override;

 private:
    const TradingLinesLayer& lines_;
    Painter painter_;
};

}  // namespace vmr
