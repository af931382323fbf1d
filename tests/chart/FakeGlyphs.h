// Glyphs of equal width, without a font.
#pragma once

#include <cmath>
#include <map>
#include <vector>

#include "chart/GlyphSource.h"

namespace vmr::test {

/// Every character is 0.58 of the point size wide and 0.7 high; a blank has no picture. Remembers what was asked for.
class FakeGlyphs final : public GlyphSource {
 public:
    const Glyph& glyph(char32_t character, FontFace, double pointSize, double ratio) override {
        ++asked;
        if (remember) characters.push_back(character);
        if (asked == rebuildAt) ++generation_;
        const auto em = static_cast<float>(pointSize * ratio);
        const float place = static_cast<float>(generation_);
        glyph_ = {place,
                  0,
                  place + 1,
                  1,
                  0.04F * em,
                  std::round(0.44F * em),
                  std::round(0.5F * em),
                  std::round(0.7F * em),
                  0.58F * em};
        if (character == U' ') glyph_.width = 0;
        return glyph_;
    }
    float lineHeight(FontFace, double pointSize, double ratio) override {
        return static_cast<float>(std::round(pointSize * ratio * 1.57));
    }
    unsigned generation() const override { return generation_; }

    void rebuild() { ++generation_; }
    int asked = 0;
    int rebuildAt = -1;  ///< the atlas is rebuilt at this question
    bool remember = false;
    std::vector<char32_t> characters;

 private:
    Glyph glyph_;
    unsigned generation_ = 1;
};

}  // namespace vmr::test
