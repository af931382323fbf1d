// The seam to glyphs: the text layer places them, the window rasterises them.
#pragma once

#include <string_view>

namespace vmr {

/// One rasterised glyph of the atlas, in device pixels.
struct Glyph {
    float u0 = 0, v0 = 0, u1 = 0, v1 = 0;  ///< place in the atlas, 0 to 1
    float left = 0;                        ///< from the pen to the glyph's left edge
    float top = 0;                         ///< from the line's top to the glyph's top edge (one ascent rule for all)
    float width = 0, height = 0;           ///< 0 for a blank
    float advance = 0;                     ///< pen step
};

enum class FontFace : unsigned char { regular, semibold };

/// Gives glyphs at the size and pixel ratio of the frame. Main thread.
class GlyphSource {
 public:
    virtual ~GlyphSource() = default;
    /// The glyph, rasterised into the atlas if it is not there yet. Never fails: an unknown character is the font's
    /// box.
    virtual const Glyph& glyph(char32_t character, FontFace face, double pointSize, double pixelRatio) = 0;
    /// Height of a line in device pixels (ascent + descent, rounded).
    virtual float lineHeight(FontFace face, double pointSize, double pixelRatio) = 0;
    /// Changes when glyphs given before have moved (the atlas was rebuilt); texts laid out before must be laid out
    /// anew.
    virtual unsigned generation() const = 0;
};

}  // namespace vmr
