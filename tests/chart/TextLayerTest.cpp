// Where glyphs land, and when a text is laid out anew.
#include "chart/TextLayer.h"

#include <gmock/gmock.h>

#include "tests/chart/FakeGlyphs.h"
#include "tests/chart/RecordingGpu.h"

namespace vmr::test {
namespace {

struct TextLayerTest : testing::Test {
    RecordingGpu gpu;
    FrameArena arena{gpu};
    FakeGlyphs glyphs;
    TextLayer text{glyphs};
    static constexpr TextStyle style{FontFace::regular, 11};
    static constexpr Rgba grey{0.7F, 0.7F, 0.7F, 0.5F};

    std::vector<TextVertex> draw(double ratio = 1) {
        gpu.beginFrame(400, 300, ratio);
        arena.beginFrame();
        ScreenFrame frame{gpu, arena, 400, 300, ratio, {}, {}};
        text.draw(frame);
        gpu.endFrame();
        EXPECT_TRUE(gpu.faults.empty());
        return gpu.draws.empty() ? std::vector<TextVertex>{} : gpu.vertices<TextVertex>(gpu.draws[0]);
    }
};

TEST_F(TextLayerTest, GlyphsLieOnWholePixelsWhereverTheTextGoes) {
    for (const double ratio : {1.0, 1.25, 2.0}) {
        for (const auto& [align, share] :
             {std::pair{TextAlign::left, 0.0}, {TextAlign::center, 0.5}, {TextAlign::right, 1.0}}) {
            constexpr double x = 211.77;
            text.begin(ratio);
            text.add("21,000.25", style, x, 50.4, align, grey);
            const auto list = draw(ratio);
            ASSERT_EQ(list.size(), 9U * 4);
            for (const TextVertex& v : list) {
                EXPECT_EQ(v.position[0], std::round(v.position[0]));
                EXPECT_EQ(v.position[1], std::round(v.position[1]));
                EXPECT_EQ(v.color, grey);
            }
            const double left = list[0].position[0] / ratio;
            EXPECT_NEAR(left, x - text.width("21,000.25", style) * share, 1.0 / ratio + 0.04 * 11);
        }
    }
}

TEST_F(TextLayerTest, ATextThatOnlyMovesIsNotLaidOutAgain) {
    text.begin(1);
    text.add("Jun 10", style, 10, 10, TextAlign::left, grey);
    EXPECT_EQ(draw().size(), 5U * 4) << "a blank has no picture";
    const int asked = glyphs.asked;
    for (int i = 0; i < 5; ++i) {
        text.begin(1);
        text.add("Jun 10", style, 10.0 + i, 20, TextAlign::right, {1, 1, 1, 1});
        draw();
    }
    EXPECT_EQ(glyphs.asked, asked);
    const auto anew = [&](const char* why, double ratio, const TextStyle& other, const char* what = "Jun 10") {
        const int was = glyphs.asked;
        text.begin(ratio);
        text.add(what, other, 10, 10, TextAlign::left, grey);
        EXPECT_GT(glyphs.asked, was) << why;
    };
    anew("other text", 1, style, "Jun 11");
    anew("other face", 1, {FontFace::semibold, 11});
    anew("other size", 1, {FontFace::regular, 12});
    anew("other ratio", 2, style);
    glyphs.rebuild();
    EXPECT_TRUE(text.stale());
    anew("atlas rebuilt", 2, style);
    EXPECT_FALSE(text.stale());
}

}  // namespace
}  // namespace vmr::test
