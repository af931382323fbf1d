// Glyphs for the chart's texts.
#include <gtest/gtest.h>

#include <QPainter>
#include <QString>
#include <set>

#include "ui/GlyphAtlas.h"

namespace vmr::test {
namespace {

const QString family = QStringLiteral("Saira");

int ink(const QImage& image, const Glyph& glyph) {
    int sum = 0;
    const int side = image.width();
    for (int y = 0; y < static_cast<int>(glyph.height); ++y)
        for (int x = 0; x < static_cast<int>(glyph.width); ++x)
            sum += image.constScanLine(static_cast<int>(glyph.v0 * side) + y)[static_cast<int>(glyph.u0 * side) + x];
    return sum;
}

TEST(GlyphAtlas, GlyphsAreInkOnWholePixelsAtEveryRatio) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        SCOPED_TRACE(ratio);
        GlyphAtlas atlas(family);
        const float line = atlas.lineHeight(FontFace::regular, 12, ratio);
        EXPECT_EQ(line, std::round(line));
        for (const char32_t character : U"0189,.:-+Axyz\u2192\uE123\uFFFD") {  // also what the face has not
            if (character == 0) continue;
            const Glyph glyph = atlas.glyph(character, FontFace::regular, 12, ratio);
            EXPECT_EQ(glyph.left, std::round(glyph.left));
            EXPECT_EQ(glyph.top, std::round(glyph.top));
            EXPECT_EQ(glyph.advance, std::round(glyph.advance));
            EXPECT_GT(ink(atlas.image(), glyph), 255);
        }
        const Glyph blank = atlas.glyph(U' ', FontFace::regular, 12, ratio);
        EXPECT_EQ(blank.width, 0);
        EXPECT_GT(blank.advance, 0);
        EXPECT_GT(ink(atlas.image(), atlas.glyph(U'8', FontFace::semibold, 12, ratio)),
                  ink(atlas.image(), atlas.glyph(U'8', FontFace::regular, 12, ratio)));
    }
}

// The same pixels as the platform's own text engine makes of the glyph.
TEST(GlyphAtlas, LooksLikeNativeText) {
    GlyphAtlas atlas(family);
    const Glyph glyph = atlas.glyph(U'5', FontFace::regular, 13, 1);
    QFont font(family);
    font.setPixelSize(13);
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    QImage native(40, 40, QImage::Format_ARGB32_Premultiplied);
    native.fill(Qt::transparent);
    QPainter painter(&native);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QPoint(10, 25), QStringLiteral("5"));
    painter.end();
    const float ascent = std::round(static_cast<float>(QRawFont::fromFont(font).ascent()));
    const int side = atlas.size().width();
    int different = 0;
    for (int y = 0; y < static_cast<int>(glyph.height); ++y) {
        for (int x = 0; x < static_cast<int>(glyph.width); ++x) {
            const int mine = atlas.image().constScanLine(static_cast<int>(glyph.v0 * side) +
                                                         y)[static_cast<int>(glyph.u0 * side) + x];
            const int theirs = qAlpha(native.pixel(10 + static_cast<int>(glyph.left) + x,
                                                   25 - static_cast<int>(ascent) + static_cast<int>(glyph.top) + y));
            if (std::abs(mine - theirs) > 8) ++different;
        }
    }
    EXPECT_EQ(different, 0);
}

TEST(GlyphAtlas, GrowsThenStartsOverWithANewGeneration) {
    GlyphAtlas atlas(family, 64, 128);
    std::set<unsigned> generations{atlas.generation()};
    std::set<int> sides{atlas.size().width()};
    for (int round = 0; round < 3; ++round) {
        for (char32_t character = 33; character < 127; ++character) {
            const Glyph glyph = atlas.glyph(character, FontFace::regular, 16, 1);
            EXPECT_GT(ink(atlas.image(), glyph), 0);
            generations.insert(atlas.generation());
            sides.insert(atlas.size().width());
        }
    }
    EXPECT_EQ(sides, (std::set{64, 128}));
    EXPECT_GT(generations.size(), 3U);

    const auto before = atlas.generation();
    const Glyph small = atlas.glyph(U'4', FontFace::regular, 16, 1);
    const Glyph large = atlas.glyph(U'4', FontFace::regular, 16, 2);
    EXPECT_GT(atlas.generation(), before) << "a new pixel ratio empties the atlas";
    EXPECT_NEAR(large.advance, small.advance * 2, 1.01);
    EXPECT_EQ(atlas.glyph(U'W', FontFace::regular, 300, 1).width, 0) << "what no atlas holds is a blank";
}

}  // namespace
}  // namespace vmr::test
