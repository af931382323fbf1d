// The glyphs that one plot draws with: those of the window that it is in.
#pragma once

#include <memory>
#include <utility>

#include "gpu/GlyphSource.h"
#include "ui/gpu/GlyphAtlas.h"

namespace vmr {

/// Stays the same source while the plot moves from one window to another, which counts as a new generation. Main
/// thread.
class SharedGlyphs final : public GlyphSource {
 public:
    /// The fonts of `family` are those of a plot that is in no window yet.
    explicit SharedGlyphs(const QString& family) : atlas_(std::make_shared<GlyphAtlas>(family)) {}

    const GlyphAtlas& atlas() const { return *atlas_; }
    void setAtlas(std::shared_ptr<GlyphAtlas> atlas) {
        const unsigned before = generation();
        atlas_ = std::move(atlas);
        offset_ = before + 1 - atlas_->generation();
    }

    const Glyph& glyph(char32_t character, FontFace face, double pointSize, double pixelRatio) override {
        return atlas_->glyph(character, face, pointSize, pixelRatio);
    }
    float lineHeight(FontFace face, double pointSize, double pixelRatio) override {
        return atlas_->lineHeight(face, pointSize, pixelRatio);
    }
    unsigned generation() const override { return atlas_->generation() + offset_; }

 private:
    std::shared_ptr<GlyphAtlas> atlas_;
    unsigned offset_ = 0;
};

}  // namespace vmr
