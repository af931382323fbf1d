// The paper account's lines on the chart: position, working orders and the legs that entries will get.
#pragma once

#include <string>
#include <vector>

#include "chart/ChartTrading.h"
#include "chart/ScreenLayer.h"
#include "chart/TextLayer.h"

namespace vmr {

/// Each line has a label and, but for planned legs, a close mark where `ChartInput` expects the click. Main thread.
class TradingLinesLayer final : public ScreenLayer {
 public:
    /// `glyphs` must outlive the layer.
    explicit TradingLinesLayer(GlyphSource& glyphs) : text_(glyphs) {}

    const ChartTrading* trading = nullptr;  ///< null draws nothing; must outlive the frames
    std::string root;                       ///< empty draws nothing

    bool drawAbove(ScreenFrame& frame) override;

 private:
    struct Style {
        Rgba color;
        double dash = 0, gap = 0;  ///< points; 0 for a whole line
        bool closable = false;
    };
    void addLine(const ScreenFrame& frame, double price, const Style& style);
    void addLabel(const ScreenFrame& frame, double price, const Style& style, std::string_view label);
    void addRect(const ScreenFrame& frame, double x0, double y0, double x1, double y1, const Rgba& color);
    void addCross(const ScreenFrame& frame, double x, double y, const Rgba& color);
    void addTexts(const ScreenFrame& frame);

    struct Label {
        double y = 0;
        Rgba color;
        bool closable = false;
        std::string text;
    };
    TextLayer text_;
    TradingLines lines_;
    std::vector<ChartVertex> shapes_;
    std::string words_;          ///< of the label being made
    std::vector<Label> labels_;  ///< the first `labelCount_`; the others keep their memory
    std::size_t labelCount_ = 0;
};

}  // namespace vmr
