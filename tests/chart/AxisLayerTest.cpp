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
    std::mt19937 random{7};

    AxisLayerTest() { renderer.addScreenLayer(axes); }

    double between(double lo, double hi) { return std::uniform_real_distribution(lo, hi)(random); }
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
    double plotBottom() const { return height - AxisLayer::timeAxisHeight; }
    double plotRight() const { return width - AxisLayer::priceAxisWidth; }

    /// Any bars under any camera in a view of any size.
    void showAnything(int round) {
        const double timeframe = std::array{1.0, 5.0, 15.0, 60.0, 240.0}[static_cast<std::size_t>(round % 5)];
        auto list = bars(static_cast<std::size_t>(between(1, 1500)));
        std::int64_t at = firstBarTime;
        for (Candle& c : list) {
            c.time = at;
            at += static_cast<std::int64_t>(timeframe) * 60;
            const bool night = round % 2 == 0 && AxisScale::fmtTime(session, at, false).text() >= "16:00";
            if (night) at += 17 * 3600 + 1800;
        }
        axes.setTimeframe(timeframe);
        renderer.setCandles({});
        renderer.setCandles(list);
        width = between(80, 3000);
        height = between(30, 2000);
        pixelRatio = std::array{1.0, 1.25, 1.5, 2.0}[static_cast<std::size_t>(round / 5 % 4)];
        frame();
        if (round % 3 == 0) return;
        renderer.zoom(std::exp(between(-4, 3)));
        renderer.pan(between(-1500, 100));
        renderer.zoomPrice(std::exp(between(-7, 3)));
        renderer.panByPrice(between(-0.6, 0.6) * height, height);
        frame();
    }
};

TEST_F(AxisLayerTest, LabelsNeverMeetEachOtherTheEdgesOrTheTag) {
    std::size_t seen = 0;
    for (int round = 0; round < 1500 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        showAnything(round);
        const auto labels = texts();
        seen += labels.size();
        const double slack = 1.01 / pixelRatio;  // rounding to pixels
        const auto onPriceAxis = [&](const Drawn& d) { return d.left > plotRight() && d.bottom < plotBottom(); };
        const bool tagged = !labels.empty() && labels.back().alpha == 1.0F && labels.back().top < plotBottom();
        for (std::size_t i = 0; i < labels.size(); ++i) {
            const Drawn& a = labels[i];
            EXPECT_TRUE(a.left >= -slack && a.right <= width + slack && a.top >= -slack && a.bottom <= height + slack);
            if (a.bottom > plotBottom() + slack) {
                EXPECT_GE(a.top, plotBottom() - slack) << "between plot and time axis";
                EXPECT_LE(a.right, plotRight() + slack) << "time label under the price axis";
            } else {
                EXPECT_GE(a.left, plotRight() - slack) << "price label outside its axis";
            }
            for (std::size_t j = i + 1; j < labels.size(); ++j) {
                const Drawn& b = labels[j];
                const bool apart = a.right <= b.left || b.right <= a.left || a.bottom <= b.top || b.bottom <= a.top;
                EXPECT_TRUE(apart) << a.left << "," << a.top << " and " << b.left << "," << b.top;
                if (!onPriceAxis(a) || !onPriceAxis(b)) continue;
                EXPECT_GE(std::abs(a.top - b.top), 16 - slack) << "lines of text crowd";
                const bool isTag = tagged && j + 1 == labels.size();  // its box is 18 points high around its text
                if (isTag) {
                    EXPECT_GT(std::abs(a.top + a.bottom - b.top - b.bottom) / 2, 9 + 3.5);
                }
            }
        }
    }
    EXPECT_GT(seen, 15000U);
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
}

TEST_F(AxisLayerTest, TimesAndDatesAreNamed) {
    glyphs.remember = true;
    const auto named = [&](double first, double count) {
        renderer.mirrorView(first, count);
        glyphs.rebuild();
        glyphs.characters.clear();
        frame();
        return std::string(glyphs.characters.begin(), glyphs.characters.end());
    };
    using testing::HasSubstr;
    renderer.setCandles(bars(1100));  // 08:00 to 02:19
    EXPECT_THAT(named(0, 1100),
                testing::AllOf(HasSubstr("Jun 10"), HasSubstr("Jun 11"), HasSubstr("22:00"), Not(HasSubstr("00:00"))))
        << "at midnight stands the date";
    EXPECT_THAT(named(963, 10), testing::AllOf(HasSubstr("00:05"), Not(HasSubstr("Jun"))));
}

}  // namespace
}  // namespace vmr::test
