// The line of one strike that the person has marked elsewhere, and its tag on the price axis.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "chart/LabelLayout.h"
#include "chart/ScreenLayer.h"
#include "gpu/PointRect.h"

namespace vmr {

class AxisLayer;
class TradingLinesLayer;

/// Across the plot, with the strike at its left end. Its boxes are placed before anything is drawn, so that lesser
/// texts can make room; they themselves leave free what the account and the last price take, and are left away where
/// there is no room near the line. Main thread.
class MarkedStrikeLayer final : public ScreenLayer {
 public:
    /// `glyphs` must outlive the layer.
    explicit MarkedStrikeLayer(GlyphSource& glyphs) : painter_(glyphs) {}

    /// `ratio` is chart price over strike. True when the line is another.
    bool set(std::optional<double> strike, double ratio);

    const TradingLinesLayer* account = nullptr;  ///< whose boxes stay free, and are placed before; null for none
    const AxisLayer* axes = nullptr;             ///< whose last price's box stays free; may be null
    std::span<const PointRect> covered;          ///< what items over the chart take; must outlive the frames

    void drawBelow(ScreenFrame& frame) override;
    bool drawAbove(ScreenFrame& frame) override;

    /// Where "Strike 601" stands in this frame; empty where it does not.
    const PointRect& titleBox() const { return titleBox_; }
    /// The same of the tag, which `MarkedStrikeTagLayer` draws over the price axis.
    const PointRect& tagBox() const { return tagBox_; }
    void paintTag(const ScreenFrame& frame, Painter& painter) const;

    /// "Strike 601".
    std::string_view title() const { return title_; }
    /// Where the last frame drew it, in points from the top; nothing where it did not.
    std::optional<double> shownAt() const { return price_ ? shownAt_ : std::nullopt; }

 private:
    void place(const ScreenFrame& frame);
    void addFixed(const PointRect& box);
    void paint(const ScreenFrame& frame);

    Painter painter_;
    std::optional<double> strike_, price_;
    std::string title_;
    std::optional<double> shownAt_;
    LabelLayout layout_;
    PointRect titleBox_, tagBox_;
};

/// Draws the tag over the price axis. Main thread.
class MarkedStrikeTagLayer final : public ScreenLayer {
 public:
    /// Both must outlive the layer.
    MarkedStrikeTagLayer(GlyphSource& glyphs, const MarkedStrikeLayer& line) : line_(line), painter_(glyphs) {}

    bool drawAbove(ScreenFrame& frame) override;

 private:
    const MarkedStrikeLayer& line_;
    Painter painter_;
};

}  // namespace vmr
