// The texts beside the strike bars.
#pragma once

#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

#include "chart/LabelLayout.h"
#include "chart/ScreenLayer.h"
#include "gpu/Painter.h"
#include "gpu/PointRect.h"

namespace vmr {

class PillLayer;

/// Draws the frame's `barLabels` over everything that was added to the renderer before. Texts stay inside the plot and
/// never meet: of two that would, the less important one steps aside, with a thin leader to its bar, or fades; "KGS"
/// comes before "Gamma Flip" before strikes by the size of their value. Main thread.
class BarLabelLayer final : public ScreenLayer {
 public:
    /// `glyphs` must outlive the layer.
    explicit BarLabelLayer(GlyphSource& glyphs);

    bool drawAbove(ScreenFrame& frame) override;

    /// A text of the last frame; valid until the next one.
    struct Mark {
        const BarLabel* label = nullptr;
        PointRect box;
        double opacity = 0;

        double y() const { return box.y + box.height * 0.5; }
        /// It stands beside another bar than its own.
        bool moved() const { return std::abs(y() - label->y) > 0.01; }
    };
    /// The more important first.
    std::span<const Mark> marks() const { return marks_; }

    const PillLayer* others = nullptr;  ///< whose texts are worth more; null for none

 private:
    struct Candidate {
        const BarLabel* label = nullptr;
        int worth = 0;    ///< 0 is the most important
        double size = 0;  ///< of the value
    };
    void findCandidates(const ScreenFrame& frame);
    void layOut(const ScreenFrame& frame);
    void addGround(const Mark& mark);
    void addLeader(const Mark& mark);
    void addText(const ScreenFrame& frame, const Mark& mark);

    Painter painter_;
    LabelLayout layout_;
    std::vector<Candidate> candidates_;
    std::vector<Mark> marks_;
};

}  // namespace vmr
