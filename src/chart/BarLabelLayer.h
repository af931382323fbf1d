// The texts beside the strike bars.
#pragma once

#include <span>
#include <vector>

#include "chart/ScreenLayer.h"
#include "gpu/Painter.h"

namespace vmr {

class PillLayer;

/// Draws the frame's `barLabels` over everything that was added to the renderer before. Texts stay inside the plot and
/// never meet: of two that would, the less important one is left away, with "KGS" before "Gamma Flip" before strikes by
/// the size of their value. Main thread.
class BarLabelLayer final : public ScreenLayer {
 public:
    /// `glyphs` must outlive the layer.
    explicit BarLabelLayer(GlyphSource& glyphs);

    bool drawAbove(ScreenFrame& frame) override;

    const PillLayer* others = nullptr;  ///< whose texts are worth more; null for none

 private:
    struct Candidate {
        const BarLabel* label = nullptr;
        int rank = 0;     ///< 0 is the most important
        double size = 0;  ///< of the value
    };
    struct Box {
        double left = 0, top = 0, right = 0, bottom = 0;
    };
    void findCandidates(const ScreenFrame& frame);
    void addTexts(const ScreenFrame& frame);
    bool takeRoom(const Box& box);
    void addText(const ScreenFrame& frame, const BarLabel& label, const TextStyle& style, float alpha);

    Painter painter_;
    std::vector<Candidate> candidates_;
    std::vector<Box> taken_;
};

}  // namespace vmr
