// The chart's symbol and timeframe, large and faint under everything, and the program's name.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "chart/ScreenLayer.h"
#include "gpu/Painter.h"

namespace vmr {

/// In the middle of the plot; smaller where it would not fit, and left away where it could not be read. Main thread.
class WatermarkLayer final : public ScreenLayer {
 public:
    /// `glyphs` must outlive the layer.
    explicit WatermarkLayer(GlyphSource& glyphs) : painter_(glyphs) {}

    /// An empty symbol leaves its line away. True when the text is another.
    bool set(std::string_view symbol, double timeframe);

    void drawBelow(ScreenFrame& frame) override;
    bool drawAbove(ScreenFrame&) override { return false; }

    /// Symbol and timeframe.
    std::string_view title() const { return title_; }
    /// The program's name, in its two colours.
    static constexpr std::string_view nameBegin = "Vel", nameEnd = "mora";
    /// Whether the last frame had room for it.
    bool shown() const { return shown_; }

 private:
    void paintAll(const ScreenFrame& frame, double pointSize);

    Painter painter_;
    std::string title_;
    std::string symbol_;
    double timeframe_ = 0;
    bool shown_ = false;
};

}  // namespace vmr
