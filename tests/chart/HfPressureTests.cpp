// The pressure panel's numbers, texts and scales, and what its plots draw.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "chart/HfPressurePlot.h"
#include "gpu/FrameRecorder.h"
#include "support/gpu/RecordedFrames.h"
#include "support/time/TestTime.h"
#include "tests/chart/FakeGlyphs.h"

namespace vmr::test {
namespace {

constexpr double start = 1781098200;  // 2026-06-10 09:30 New York

std::deque<HfpSample> flow(std::size_t n, double call = 2000, double put = -1500) {
    std::deque<HfpSample> samples;
    for (std::size_t i = 0; i < n; ++i) {
        HfpSample sample{start + static_cast<double>(i), call, put, {}, {495, 500}};
        sample.atm = {{495, 10, -20}, {500, -40, 5}};
        samples.push_back(sample);
    }
    return samples;
}

HfPressure::Samples all(const std::deque<HfpSample>& samples) {
    HfPressure::Samples out;
    HfPressure::visible(samples, samples.empty() ? 0 : samples.back().t, 60 * 24, out);
    return out;
}

TEST(HfPressure, ThinsToEqualStepsAndKeepsTheNewest) {
    struct Case {
        std::size_t count, most, kept, second;
    };
    for (const Case& c : {Case{600, 600, 600, 1}, Case{601, 600, 601, 1}, Case{1800, 600, 601, 3}, Case{7, 3, 4, 2},
                          Case{1, 600, 1, 0}, Case{5, 0, 0, 0}}) {
        const auto samples = flow(c.count);
        HfPressure::Samples thin;
        for (const HfpSample& sample : samples) thin.push_back(&sample);
        HfPressure::decimate(thin, c.most);
        ASSERT_EQ(thin.size(), c.kept) << c.count;
        if (thin.empty()) continue;
        EXPECT_EQ(thin.front(), &samples.front());
        EXPECT_EQ(thin.back(), &samples.back());
        if (c.second > 0) {
            EXPECT_EQ(thin[1], &samples[c.second]) << c.count;
        }
        for (std::size_t i = 1; i < thin.size(); ++i) ASSERT_LT(thin[i - 1]->t, thin[i]->t) << c.count << " " << i;
    }
}

TEST(HfPressure, AWindowHoldsItsFirstMoment) {
    const auto samples = flow(400);
    HfPressure::Samples out;
    HfPressure::visible(samples, start + 399, 1, out);
    ASSERT_EQ(out.size(), 61U);
    EXPECT_EQ(out.front()->t, start + 339);
    HfPressure::visible(samples, start + 399 + 60.5, 1, out);
    EXPECT_TRUE(out.empty());
}

TEST(HfPressure, TextsOfNumbersAndTimes) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        double value;
        const char* text;
    };
    for (const Case& c : {Case{0, "0"}, Case{-0.4, "0"}, Case{-0.6, "-1"}, Case{999.4, "999"}, Case{1000, "1K"},
                          Case{-999999, "-1000K"}, Case{1e6, "1.0M"}, Case{-2.345e6, "-2.3M"}, Case{1e9, "1.00B"},
                          Case{-7.126e9, "-7.13B"}, Case{nan, "—"}})
        EXPECT_EQ(HfPressure::fmt(c.value).text(), c.text) << c.value;
    EXPECT_EQ(HfPressure::strikeText(5000).text(), "5000");
    EXPECT_EQ(HfPressure::strikeText(500.5).text(), "500.5");
    EXPECT_EQ(HfPressure::timeText(start + 75, 15).text(), "09:31:15");
    EXPECT_EQ(HfPressure::timeText(start + 75, 60).text(), "09:31");
    EXPECT_EQ(HfPressure::timeText(start + 182 * 86400.0, 60).text(), "08:30") << "standard time by then";
}

TEST(HfPressure, SharesOfOneSidedZeroAndMissingFlow) {
    struct Case {
        double call, put, callShare, putShare;
    };
    for (const Case& c : {Case{300, -100, 75, 25}, Case{-50, 0, 100, 0}, Case{0, 0, 0, 0}}) {
        const auto samples = flow(1, c.call, c.put);
        const HfPressure::Readouts read = HfPressure::readouts(all(samples));
        EXPECT_TRUE(read.known);
        EXPECT_DOUBLE_EQ(read.callShare, c.callShare);
        EXPECT_DOUBLE_EQ(read.putShare, c.putShare);
        EXPECT_DOUBLE_EQ(read.put, c.put);
    }
    EXPECT_FALSE(HfPressure::readouts({}).known);
}

TEST(HfPressure, RoundStepsOfValueAndTime) {
    struct Case {
        double peak, step, top;
    };
    for (const Case& c : {Case{2000, 500, 2000}, Case{2001, 500, 2500}, Case{5.6, 1, 6}, Case{6, 2, 6},
                          Case{0.4, 0.1, 0.4}, Case{12, 5, 15}, Case{29, 10, 30}}) {
        const auto samples = flow(3, c.peak / 2, -c.peak);
        const HfPressure::Scale scale = HfPressure::scale(all(samples));
        ASSERT_TRUE(scale.drawn);
        EXPECT_NEAR(scale.step, c.step, 1e-9) << c.peak;
        EXPECT_NEAR(scale.top, c.top, 1e-9) << c.peak;
    }
    for (const auto& [span, step] :
         {std::pair{95., 15.}, {95.5, 60.}, {330., 60.}, {331., 120.}, {760., 120.}, {761., 300.}})
        EXPECT_EQ(HfPressure::timeStep(span), step) << span;
    EXPECT_FALSE(HfPressure::scale(all(flow(1))).drawn);
    EXPECT_FALSE(HfPressure::scale(all(flow(9, 0, 0))).drawn);
    auto samples = flow(2);
    samples[1].t = samples[0].t;
    EXPECT_FALSE(HfPressure::scale(all(samples)).drawn);
}

TEST(HfPressure, PlotAndStripPlaceTimesEachInItsOwnWay) {
    const auto samples = flow(91);
    const HfPressure::Scale scale = HfPressure::scale(all(samples));
    EXPECT_DOUBLE_EQ(HfPressure::mainX(scale, start, 300), 6);
    EXPECT_DOUBLE_EQ(HfPressure::mainX(scale, start + 90, 300), 250);
    EXPECT_DOUBLE_EQ(HfPressure::stripX(scale, start, 300), 50);
    EXPECT_DOUBLE_EQ(HfPressure::stripX(scale, start + 90, 300), 294);
    EXPECT_DOUBLE_EQ(HfPressure::mainY(scale, 0, 200), 184);
    EXPECT_DOUBLE_EQ(HfPressure::mainY(scale, -scale.top, 200), 14);

    std::vector<HfPressure::StripTick> ticks;
    HfPressure::stripTicks(
        scale, 300, [](std::string_view) { return 52.0; }, ticks);
    ASSERT_EQ(ticks.size(), 7U);
    double end = -100;
    int texts = 0;
    for (const auto& tick : ticks) {
        if (tick.text.size == 0) continue;
        ++texts;
        EXPECT_GE(tick.left, 50);
        EXPECT_LE(tick.left + 52, 298);
        EXPECT_GT(tick.left, end + 8);
        end = tick.left + 52;
    }
    EXPECT_EQ(ticks[0].text.text(), "09:30:00");
    EXPECT_EQ(ticks[1].text.size, 0U) << "15 seconds are 41 points: too close";
    EXPECT_GE(texts, 3);
}

TEST(HfPressure, ThePointerFindsTheNearestSample) {
    auto samples = flow(11);
    samples[4].t += 0.9;  // all but at the next one
    const auto seen = all(samples);
    const HfPressure::Scale scale = HfPressure::scale(seen);
    constexpr double width = 256;  // 20 points a second from 6 on
    for (const auto& [x, index] : {std::pair(-50.0, 0),
                                   {6.0, 0},
                                   {15.9, 0},
                                   {16.1, 1},
                                   {80.0, 3},
                                   {96.0, 4},
                                   {105.5, 5},
                                   {206.0, 10},
                                   {300.0, 10}})
        EXPECT_EQ(HfPressure::nearest(seen, scale, x, width), seen[static_cast<std::size_t>(index)]) << x;
    EXPECT_EQ(HfPressure::nearest(seen, {}, 50, width), nullptr) << "nothing is drawn";
}

TEST(HfPressure, SwitchesAreWordsOfAList) {
    using HfPressure::Switches, HfPressure::switchesOf;
    EXPECT_EQ(switchesOf(""), Switches());
    EXPECT_EQ(switchesOf("nostats,noladder"), (Switches{.stats = false, .ladder = false}));
    EXPECT_EQ(switchesOf("nocharts,,noanim"), (Switches{.anim = false})) << "whole words";
    EXPECT_EQ(switchesOf("x noview y"), (Switches{.view = false})) << "but for this one";
}

TEST(HfPressure, LadderOfTheLastBand) {
    auto samples = flow(3);
    samples[0].atm = {{490, 900, 0}};  // a strike that left the band still sets the scale
    samples[2].band = {490, 495, 500, 505};
    const auto seen = all(samples);
    const HfPressure::Ladder ladder = HfPressure::ladder(seen);
    EXPECT_EQ(ladder.atm, 2U);
    EXPECT_EQ(HfPressure::ladderPeak(seen), 900);
    EXPECT_DOUBLE_EQ(HfPressure::sparkY(-900, 900, 40), 6);
    EXPECT_TRUE(HfPressure::ladder({}).band.empty());
}

class HfPressurePlots : public testing::Test {
 protected:
    RecordedFrames draw(const std::deque<HfpSample>& samples) {
        const HfPressure::Samples seen = all(samples);
        gpu.beginFrame(300, 400, 1);
        arena.beginFrame();
        PaintSurface surface{gpu, arena, 300, 400, 1};
        EXPECT_FALSE(plot.draw(surface, seen, places));
        gpu.endFrame();
        RecordedFrames recorded;
        EXPECT_TRUE(recorded.take(gpu));
        return recorded;
    }
    TestTime time;
    FakeGlyphs glyphs;
    FrameRecorder gpu;
    FrameArena arena{gpu};
    HfPressurePlot plot{glyphs, time};
    HfPressurePlot::Places places{.main = {0, 0, 300, 200}, .strip = {}, .sparks = {}};
};

TEST_F(HfPressurePlots, JoinTheSamplesThatAStrikeHas) {
    auto samples = flow(5);
    samples[2].atm = {{500, 7, 7}};  // 495 is missing: the line joins across it
    samples[4].band = {495};
    places.sparks[0] = {10, 300, 100, 40};
    const auto lines = [&] {
        std::size_t count = 0;
        for (const auto& call : draw(samples).draws)
            if (call.pipeline == Pipeline::ribbon) count += call.count;
        return count;
    };
    const std::size_t whole = lines();
    places.sparks[0] = {};
    const std::size_t main = lines();
    places.main = {};
    EXPECT_EQ(lines(), 0U);
    // four pieces each in the plot, three each in the sparkline
    EXPECT_EQ(main % 8, 0U);
    EXPECT_EQ(whole - main, main / 8 * 6);

    samples = flow(600);
    samples[300].atm = {{495, 900, -20}};
    places.sparks[0] = {10, 300, 60, 40};
    EXPECT_LT(lines(), main / 8 * 2 * 130) << "samples that lie on each other";
    const RecordedFrames recorded = draw(samples);
    float left = 100, right = 0, top = 400;
    for (const auto& call : recorded.draws) {
        if (call.pipeline != Pipeline::ribbon) continue;
        for (const LineVertex& corner : recorded.vertices<LineVertex>(call)) {
            left = std::min(left, corner.pos[0]);
            right = std::max(right, corner.pos[0]);
            top = std::min(top, corner.pos[1]);
        }
    }
    EXPECT_NEAR(left, 10, 1);
    EXPECT_NEAR(right, 70, 1) << "the newest";
    EXPECT_NEAR(top, 306, 1) << "the one that stands out";
}

TEST_F(HfPressurePlots, KeepTheirNumbersWithinTheCard) {
    for (const double most : {2e7, 7e8}) {  // up to "20.0M" and to "800.0M"
        float right = 0;
        const RecordedFrames recorded = draw(flow(5, most));
        for (const auto& call : recorded.draws) {
            if (call.pipeline != Pipeline::text) continue;
            for (const auto& corner : recorded.vertices<TextVertex>(call)) right = std::max(right, corner.position[0]);
        }
        EXPECT_GT(right, 270) << most;
        EXPECT_LE(right, 298) << most;
    }
}

}  // namespace
}  // namespace vmr::test
