// Glyphs of equal width, without a font.
#pragma once

#include <cmath>

#include "gpu/GlyphSource.h"

namespace vmr::test {

/// Every character is 0.58 of the point size wide and 0.7 high; a blank has no picture.
class FakeGlyphs final : public GlyphSource {
 public:
    const Glyph& glyph(char32_t character, FontFace, double pointSize, double ratio) override {
        const auto em = static_cast<float>(pointSize * ratio);
        const float width = character == U' ' ? 0 : std::round(0.5F * em);
        const float left = 0.04F * em, top = std::round(0.44F * em), height = std::round(0.7F * em);
        return glyph_ = {0, 0, 1, 1, left, top, width, height, 0.58F * em};
    }
    float lineHeight(FontFace, double pointSize, double ratio) override {
        return static_cast<float>(std::round(pointSize * ratio * 1.57));
    }
    unsigned generation() const override { return 1; }

 private:
    Glyph glyph_;
};

}  // namespace vmr::test
