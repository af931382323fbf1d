// Draws the paper account's lines: position, working orders and the legs that entries will get.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "chart/ChartTrading.h"
#include "chart/LineMarks.h"
#include "chart/ScreenLayer.h"
#include "gpu/Painter.h"

namespace vmr {

/// Each line has a label and, but for planned legs, a close mark. A later mark of the list lies over an earlier one.
/// Main thread.
class TradingLinesLayer final : public ScreenLayer {
 public:
    /// `glyphs` must outlive the layer.
    explicit TradingLinesLayer(GlyphSource& glyphs) : painter_(glyphs) {}

    const ChartTrading* trading = nullptr;  ///< null draws nothing; must outlive the frames
    std::string root;                       ///< empty draws nothing

    void drawBelow(ScreenFrame& frame) override;
    bool drawAbove(ScreenFrame& frame) override;

    /// What the last frame drew.
    const LineMarks& marks() const { return marks_; }
    /// The boxes of their labels, close marks included.
    std::span<const PointRect> labelBoxes() const { return labelBoxes_; }

 private:
    void addLine(const ScreenFrame& frame, const LineMark& mark);
    PointRect labelBox(const ScreenFrame& frame, const LineMark& mark);
    void addLabel(const ScreenFrame& frame, const LineMark& mark);
    void addCross(double x, double y, const Rgba& color);

    Painter painter_;
    LineMarks marks_;
    std::vector<PointRect> labelBoxes_;
};

}  // namespace vmr
