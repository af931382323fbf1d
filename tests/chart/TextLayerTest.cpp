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
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        for (const TextAlign align : {TextAlign::left, TextAlign::center, TextAlign::right}) {
            for (const double x : {100.0, 100.3, 211.77}) {
                text.begin(ratio);
                text.add("21,000.25", style, x, 50.4, align, grey);
                const auto list = draw(ratio);
                ASSERT_EQ(list.size(), 9U * 4);
                for (const TextVertex& v : list) {
                    EXPECT_EQ(v.position[0], std::round(v.position[0]));
                    EXPECT_EQ(v.position[1], std::round(v.position[1]));
                    EXPECT_EQ(v.color, grey);
                }
                const double width = text.width("21,000.25", style), slack = 1.0 / ratio + 0.04 * 11;
                const double left = list[0].position[0] / ratio;
                const double wanted = x - width * (align == TextAlign::left ? 0 : align == TextAlign::center ? 0.5 : 1);
                EXPECT_NEAR(left, wanted, slack);
                // Corners: top left, bottom left, bottom right, top right.
                EXPECT_LT(list[0].position[1], list[1].position[1]);
                EXPECT_LT(list[1].position[0], list[2].position[0]);
                EXPECT_EQ(list[3].position[1], list[0].position[1]);
                EXPECT_LT(list[0].uv[0], list[3].uv[0]);
            }
        }
    }
    EXPECT_EQ(gpu.draws[0].uniforms[0], 2.0F / 800);
    EXPECT_EQ(gpu.draws[0].uniforms[2], -2.0F / 600);
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

TEST_F(TextLayerTest, MoreTextsThanTheCacheHoldsAreAllRight) {
    for (int round = 0; round < 2; ++round) {
        text.begin(1);
        for (int i = 0; i < 3000; ++i) {
            const std::string label = std::to_string(i * 7);
            ASSERT_NEAR(text.width(label, style), static_cast<double>(label.size()) * 0.58 * 11, 1e-3);
        }
    }
    text.begin(1);
    EXPECT_TRUE(draw().empty());
    EXPECT_TRUE(gpu.draws.empty()) << "no text, no draw call";
}

TEST_F(TextLayerTest, BadUtf8ShowsAsReplacements) {
    glyphs.remember = true;
    text.begin(1);
    using namespace std::string_literals;
    for (const auto& [bytes, expected] : {std::pair{"é→😀"s, U"é→😀"s},
                                          {"a\x80z"s, U"a\uFFFDz"s},
                                          {"\xE2\x86"s, U"\uFFFD"s},
                                          {"\xC0\xAF"s, U"\uFFFD\uFFFD"s},
                                          {"\xED\xA0\x80!"s, U"\uFFFD!"s},
                                          {"\xF5"s, U"\uFFFD"s},
                                          {"\xF4\x90\x80\x80"s, U"\uFFFD"s},
                                          {"a\0b"s, U"a\0b"s}}) {
        glyphs.characters.clear();
        text.width(bytes, style);
        EXPECT_EQ(std::u32string(glyphs.characters.begin(), glyphs.characters.end()), expected);
    }
}

}  // namespace
}  // namespace vmr::test
