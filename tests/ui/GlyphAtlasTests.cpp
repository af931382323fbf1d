// Glyphs for the chart's texts.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "ui/gpu/GlyphAtlas.h"

namespace vmr::test {
namespace {

const QString family = QStringLiteral("Saira");

int ink(const QImage& image, const Glyph& glyph) {
    int sum = 0;
    const int left = static_cast<int>(glyph.u0 * image.width()), top = static_cast<int>(glyph.v0 * image.width());
    for (int y = 0; y < static_cast<int>(glyph.height); ++y)
        for (int x = 0; x < static_cast<int>(glyph.width); ++x) sum += image.constScanLine(top + y)[left + x];
    return sum;
}

TEST(GlyphAtlas, GrowsThenStartsOverWithANewGeneration) {
    GlyphAtlas atlas(family, 64, 128);
    std::set<unsigned> generations;
    std::set<int> sides;
    for (int i = 0; i < 300; ++i) {
        const Glyph glyph = atlas.glyph(static_cast<char32_t>(33 + i % 94), FontFace::regular, 16, 1);
        EXPECT_GT(ink(atlas.image(), glyph), 0);
        EXPECT_EQ(glyph.left + glyph.top + glyph.advance, std::round(glyph.left + glyph.top + glyph.advance));
        generations.insert(atlas.generation());
        sides.insert(atlas.size().width());
    }
    EXPECT_EQ(sides, (std::set{64, 128}));
    EXPECT_GT(generations.size(), 3U);

    const auto before = atlas.generation();
    const Glyph small = atlas.glyph(U'4', FontFace::regular, 16, 1),
                large = atlas.glyph(U'4', FontFace::regular, 16, 2);
    EXPECT_GT(atlas.generation(), before) << "a new pixel ratio empties the atlas";
    EXPECT_NEAR(large.advance, small.advance * 2, 1.01);
    EXPECT_EQ(atlas.glyph(U'W', FontFace::regular, 300, 1).width, 0) << "what no atlas holds is a blank";
}

}  // namespace
}  // namespace vmr::test
