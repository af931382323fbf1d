// The line of one strike that the person has marked elsewhere.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "chart/ScreenLayer.h"

namespace vmr {

/// Across the plot, with the strike at its left end and its price on the axis. Main thread.
class MarkedStrikeLayer final : public ScreenLayer {
 public:
    /// `glyphs` must outlive the layer.
    explicit MarkedStrikeLayer(GlyphSource& glyphs) : painter_(glyphs) {}

    /// `ratio` is chart price over strike. True when the line is another.
    bool set(std::optional<double> strike, double ratio);

    bool drawAbove(ScreenFrame& frame) override;

    /// "Strike 601".
    std::string_view title() const { return title_; }
    /// Where the last frame drew it, in points from the top; nothing where it did not.
    std::optional<double> shownAt() const { return price_ ? shownAt_ : std::nullopt; }

 private:
    void paint(const ScreenFrame& frame, double y);

    Painter painter_;
    std::optional<double> strike_, price_;
    std::string title_;
    std::optional<double> shownAt_;
};

}  // namespace vmr
