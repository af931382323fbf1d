// The axes over many cameras and sizes.
#include "chart/AxisLayer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "tests/chart/ChartScene.h"
#include "tests/chart/FakeGlyphs.h"

namespace vmr::test {
namespace {

/// A text as drawn, in points.
struct Drawn {
    double left, top, right, bottom;
    float alpha;
};

struct AxisLayerTest : ChartScene {
    FakeGlyphs glyphs;
    SessionTime session;
    AxisLayer axes{glyphs, session};

    AxisLayerTest() { renderer.addScreenLayer(axes); }

    const RecordingGpu::DrawCall* textCall() const {
        const auto found = std::find_if(gpu.draws.begin(), gpu.draws.end(),
                                        [](const auto& c) { return c.pipeline == Pipeline::text; });
        return found == gpu.draws.end() ? nullptr : &*found;
    }

    /// Glyphs gathered into texts: those on one line that stand one pen step from each other, or two over a blank.
    std::vector<Drawn> texts() const {
        std::vector<Drawn> list;
        if (!textCall()) return list;
        const auto vertices = gpu.vertices<TextVertex>(*textCall());
        double previous = 0;
        for (std::size_t i = 0; i < vertices.size(); i += 4) {
            const auto& a = vertices[i].position;
            const auto& c = vertices[i + 2].position;
            const Drawn glyph{a[0] / pixelRatio, a[1] / pixelRatio, c[0] / pixelRatio, c[1] / pixelRatio,
                              vertices[i].color[3]};
            const double step = glyph.left - previous;
            const bool joins =
                !list.empty() && list.back().top == glyph.top && ((step > 4 && step < 8) || (step > 11.5 && step < 14));
            if (joins)
                list.back().right = glyph.right;
            else
                list.push_back(glyph);
            previous = glyph.left;
        }
        return list;
    }
    /// All characters that were laid out while the glyphs remembered.
    std::string named() const {
        std::string text;
        for (const char32_t c : glyphs.characters) text += static_cast<char>(c);
        return text;
    }
    double plotBottom() const { return height - AxisLayer::timeAxisHeight; }
    double plotRight() const { return width - AxisLayer::priceAxisWidth; }
};

TEST_F(AxisLayerTest, LabelsNeverMeetEachOtherTheEdgesOrTheTag) {
    std::mt19937 random(7);
    const auto between = [&](double lo, double hi) { return std::uniform_real_distribution(lo, hi)(random); };
    std::size_t seen = 0, views = 0;
    for (int round = 0; round < 1500; ++round) {
        SCOPED_TRACE(round);
        const double timeframe = std::array{1.0, 5.0, 15.0, 60.0, 240.0}[static_cast<std::size_t>(round % 5)];
        auto list = bars(static_cast<std::size_t>(between(1, 1500)));
        std::int64_t at = firstBarTime;
        const bool nights = round % 2 == 0;
        for (Candle& c : list) {
            c.time = at;
            at += static_cast<std::int64_t>(timeframe) * 60;
            if (nights && AxisScale::fmtTime(session, at, false).text() >= "16:00") at += 17 * 3600 + 1800;
        }
        axes.setTimeframe(timeframe);
        renderer.setCandles({});
        renderer.setCandles(list);
        width = between(80, 3000);
        height = between(30, 2000);
        pixelRatio = std::array{1.0, 1.25, 1.5, 2.0}[static_cast<std::size_t>(round / 5 % 4)];
        frame();
        if (round % 3 != 0) {
            renderer.zoom(std::exp(between(-4, 3)));
            renderer.pan(between(-1500, 100));
            renderer.zoomPrice(std::exp(between(-7, 3)));
            renderer.panByPrice(between(-0.6, 0.6) * height, height);
            frame();
        }
        const auto labels = texts();
        seen += labels.size();
        views += labels.empty() ? 0 : 1;
        const double slack = 1.01 / pixelRatio;  // rounding to pixels
        const Drawn* tag = nullptr;
        for (const Drawn& label : labels) {
            EXPECT_GE(label.left, -slack);
            EXPECT_LE(label.right, width + slack);
            EXPECT_GE(label.top, -slack);
            EXPECT_LE(label.bottom, height + slack);
            if (label.bottom > plotBottom() + slack) {
                EXPECT_GE(label.top, plotBottom() - slack) << "between plot and time axis";
                EXPECT_LE(label.right, plotRight() + slack) << "time label under the price axis";
            } else {
                EXPECT_GE(label.left, plotRight() - slack) << "price label outside its axis";
            }
            if (&label == &labels.back() && label.alpha == 1.0F && label.top < plotBottom()) tag = &label;
        }
        for (std::size_t i = 0; i < labels.size(); ++i) {
            for (std::size_t j = i + 1; j < labels.size(); ++j) {
                const Drawn &a = labels[i], &b = labels[j];
                const bool apart = a.right <= b.left || b.right <= a.left || a.bottom <= b.top || b.bottom <= a.top;
                EXPECT_TRUE(apart) << a.left << "," << a.top << " and " << b.left << "," << b.top;
                const bool prices = a.left > plotRight() && b.left > plotRight() && b.bottom < plotBottom();
                if (prices) {
                    EXPECT_GE(std::abs(a.top - b.top), 16 - slack) << "lines of text crowd";
                }
            }
            // The tag's box is 18 points high around its text.
            if (tag != nullptr && &labels[i] != tag && labels[i].left > plotRight() &&
                labels[i].bottom < plotBottom()) {
                const double middle = (tag->top + tag->bottom) / 2;
                EXPECT_GT(std::abs((labels[i].top + labels[i].bottom) / 2 - middle), 9 + 3.5);
            }
        }
        if (HasFailure()) return;
    }
    EXPECT_GT(seen, 15000U);
    EXPECT_GT(views, 1000U);
}

TEST_F(AxisLayerTest, TheTagLiesOnThePriceLineOfTheSameFrame) {
    auto list = bars(300);
    renderer.setCandles(list);
    settle();
    list.back().close += 12;
    list.back().high += 20;
    renderer.setCandles(list);
    for (int i = 0; i < 20; ++i) {
        renderer.panByPrice(7, height);
        frame();
        const auto line =
            gpu.screen(*layers().priceLine, 0, gpu.vertices<ChartVertex>(*layers().priceLine)[0].position[1])[1];
        const Drawn tag = texts().back();
        EXPECT_NEAR((tag.top + tag.bottom) / 2, line, 1.6);
        EXPECT_EQ(tag.alpha, 1.0F);
    }
    const auto tagColour = [&] {
        const auto box = std::find_if(gpu.draws.rbegin(), gpu.draws.rend(),
                                      [](const auto& c) { return c.pipeline == Pipeline::flat; });
        return gpu.vertices<ChartVertex>(*box).back().color;
    };
    EXPECT_EQ(tagColour(), (Rgba{0.149F, 0.651F, 0.604F, 1}));
    list.back().close = list.back().open - 3;
    renderer.setCandles(list);
    settle();
    EXPECT_EQ(tagColour(), (Rgba{0.937F, 0.325F, 0.314F, 1}));
    const std::size_t before = texts().size();
    renderer.panByPrice(3000, height);
    frame();
    EXPECT_LT(texts().size(), before + 3) << "a last price out of view has no tag";
}

TEST_F(AxisLayerTest, TimesAndDatesAreNamed) {
    glyphs.remember = true;
    renderer.setCandles(bars(1100));  // 08:00 to 02:19
    renderer.mirrorView(0, 1100);
    frame();
    EXPECT_THAT(named(), testing::HasSubstr("Jun 10"));
    EXPECT_THAT(named(), testing::HasSubstr("Jun 11"));
    EXPECT_THAT(named(), testing::HasSubstr("22:00"));
    EXPECT_THAT(named(), testing::Not(testing::HasSubstr("00:00"))) << "the date stands there instead";
    glyphs.characters.clear();
    renderer.mirrorView(960, 10);  // from midnight on: minutes, and the day is not named twice
    frame();
    EXPECT_THAT(named(), testing::HasSubstr("00:05"));
    renderer.mirrorView(963, 10);
    glyphs.rebuild();
    glyphs.characters.clear();
    frame();
    EXPECT_THAT(named(), testing::Not(testing::HasSubstr("Jun")));
}

TEST_F(AxisLayerTest, AStockSeenFromAfarIsNamedByDays) {
    std::vector<Candle> list;
    for (int day = 0; day < 12; ++day) {
        for (int i = 0; i < 26; ++i) {
            list.push_back(bars(1)[0]);
            list.back().time = 1781098200 + day * 86400 + i * 900;  // 09:30 on
        }
    }
    glyphs.remember = true;
    axes.setTimeframe(15);
    width = 700;
    renderer.setCandles(list);
    renderer.mirrorView(0, 312);
    frame();
    const auto labels = texts();
    EXPECT_GE(std::count_if(labels.begin(), labels.end(), [&](const Drawn& d) { return d.top > plotBottom(); }), 3);
    EXPECT_THAT(named(), testing::HasSubstr("Jun 1"));
}

TEST_F(AxisLayerTest, AnAtlasRebuiltInTheFrameLeavesNoOldGlyphs) {
    renderer.setCandles(bars(300));
    glyphs.rebuildAt = 40;
    EXPECT_FALSE(frame());
    for (const TextVertex& v : gpu.vertices<TextVertex>(*textCall())) EXPECT_GE(v.uv[0], 2.0F);
}

}  // namespace
}  // namespace vmr::test
