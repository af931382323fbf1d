// The texts that hang on lines: the pills of overlay series, and the labels of session lines, levels and walls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "chart/LabelLayout.h"
#include "chart/LevelLabels.h"
#include "chart/OverlayRibbons.h"
#include "chart/Pills.h"
#include "chart/ScreenLayer.h"
#include "gpu/Painter.h"
#include "gpu/PointRect.h"

namespace vmr {

class MarkedStrikeLayer;
class TradingLinesLayer;

/// Lays all of them out before the chart's own layers are drawn, so that the lesser texts can make room, and draws
/// them over those. A text that has to step aside keeps a thin leader to its price. Labels end before the strike bars.
/// Main thread.
class PillLayer final : public ScreenLayer {
 public:
    /// `glyphs` and `ribbons` must outlive the layer.
    PillLayer(GlyphSource& glyphs, const OverlayRibbons& ribbons) : ribbons_(ribbons), painter_(glyphs) {}

    const TradingLinesLayer* account = nullptr;  ///< whose labels are worth more; null for none
    const MarkedStrikeLayer* marked = nullptr;   ///< likewise of its title
    std::span<const PointRect> covered;          ///< what items over the chart take; must outlive the frames

    // What is shown; true when the texts may be others.
    bool setSecondSymbol(std::string_view symbol);
    bool setLines(std::span<const OverlayLine> lines, std::uint64_t revision, const OverlayStyle& style);
    bool setWalls(std::span<const PriceLevel> walls, bool shown) { return levels_.setWalls(walls, shown); }
    void clear() { levels_.clear(); }

    void drawBelow(ScreenFrame& frame) override;
    bool drawAbove(ScreenFrame& frame) override;

    /// A text as the last frame drew it.
    struct Mark {
        std::string_view text;
        PointRect box;
        Rgba fill{}, textColor{};
        bool pill = false;
        double lineEnd = 0;         ///< where the line that it names ends in view
        double tipX = 0, tipY = 0;  ///< what it hangs from
        double opacity = 1;         ///< of the text; 0: there is no room for it
        double room = 1;            ///< what of that is for want of room alone

        /// What lies behind the text. A faint one must not let its own line through.
        Rgba ground() const { return {fill[0], fill[1], fill[2], fill[3] * static_cast<float>(room)}; }
    };
    /// The more important first; valid until the next frame.
    std::span<const Mark> marks() const { return marks_; }
    /// The room that these texts, those of the account's lines, the marked strike's and items over the chart take.
    std::span<const PointRect> boxes() const { return boxes_; }

 private:
    void layOut(const ScreenFrame& frame);
    void addPills(const ScreenFrame& frame);
    void addLevels(const ScreenFrame& frame);
    void add(Mark mark, LabelRank rank, double right);
    void addFixed(const PointRect& box);
    void takeRoom();
    void paintLeaders(const Mark& mark);

    const OverlayRibbons& ribbons_;
    Painter painter_;
    Pills pills_;
    LevelLabels levels_;
    LabelLayout layout_;
    std::string secondSymbol_;
    OverlayStyle style_;
    std::vector<Mark> marks_;
    std::vector<PointRect> boxes_;
};

}  // namespace vmr
