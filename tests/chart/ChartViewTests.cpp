// The whole chart: what of a content costs a frame, when a chart starts over, and what leaves a frame.
#include "chart/ChartView.h"

#include <gmock/gmock.h>

#include <random>

#include "chart/AxisScale.h"
#include "support/StillAccount.h"
#include "tests/chart/ChartScene.h"
#include "tests/chart/FullScene.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

struct ScenePane final : ChartSource {
    explicit ScenePane(SceneData scene) : data(std::move(scene)) {}
    SceneData data;
    mutable int reads = 0;
    int dragsEnded = 0;
    std::uint64_t chart = 1, seriesRevision = 1, lookRevision = 1;
    double timeframe = 1;
    ChartContent chartContent() const override {
        ++reads;
        ChartContent content = data.content(chart);
        content.timeframe = timeframe;
        content.revisions.look = lookRevision;
        content.revisions.overlays = content.revisions.srLines =
            seriesRevision;  // a pane raises these for other points
        return content;
    }
    void interactionEnded() override { ++dragsEnded; }
    void marketClosedOrder() override {}
};

struct ChartViewTest : RecordedScene {
    SceneData data{bars(300)};
    StillAccount account{data.candles.back().close};
    std::optional<ChartView> view;
    int asked = 0, askedCalmly = 0;

    ChartViewTest() {
        view.emplace(ChartView::Surroundings{gpu, glyphs, session, time, queue, nullptr, &account});
        view->onNeedsFrame = [this](ChartView::Need need) {
            ++asked;
            if (need == ChartView::Need::calm) ++askedCalmly;
        };
    }
    bool draw() override { return view->record(width, height, pixelRatio, time.monotonic()); }
    bool shows(const ChartContent& content) {
        asked = 0;
        view->setContent(content);
        return asked > 0;
    }
};

TEST_F(ChartViewTest, APartIsLookedAtWhenItsRevisionIsAnotherAndShownWhenItDiffers) {
    using Revisions = ChartContent::Revisions;
    const struct {
        const char* name;
        std::uint64_t Revisions::*part;
        std::function<void()> change;
    } parts[] = {
        {"look", &Revisions::look, [&] { data.config.gexEnabled = false; }},
        {"forming bar", &Revisions::candles, [&] { data.candles.back().close += 0.25; }},
        {"wall", &Revisions::levels, [&] { data.levels[0].price += 1; }},
        {"strike row", &Revisions::strikes, [&] { data.strikes[3].callGex += 1; }},
        {"ratio", &Revisions::strikes, [&] { data.ratio += 0.5; }},
        {"gamma flip", &Revisions::strikes, [&] { data.flip.reset(); }},
        {"second row", &Revisions::secStrikes, [&] { data.secStrikes[3].callGex += 1; }},
        {"second ratio", &Revisions::secStrikes, [&] { data.secRatio += 0.5; }},
        {"bubble", &Revisions::markers, [&] { data.bubbles.push_back(data.bubbles.back()); }},
        {"triangle", &Revisions::markers, [&] { data.triangles.back().net *= 2; }},
        {"series", &Revisions::overlays, [&] { data.series.ema1.back().v += 1; }},
        {"paired candle", &Revisions::overlays, [&] { data.series.secondCandles.back().c += 1; }},
        {"session line", &Revisions::srLines, [&] { data.srLines[0].price += 1; }},
    };
    ChartContent content = data.content();
    EXPECT_TRUE(shows(content));
    settle();
    EXPECT_FALSE(shows(data.content())) << "all revisions are others, and nothing differs";
    content = data.content();
    view->setContent(content);
    for (const auto& [name, part, change] : parts) {
        SCOPED_TRACE(name);
        change();
        const Revisions before = content.revisions;
        content = data.content();
        content.revisions = before;
        EXPECT_FALSE(shows(content));
        ++(content.revisions.*part);
        EXPECT_TRUE(shows(content));
        settle();
    }
    const std::function<void()> others[] = {[&] { content.timeframe = 5; }, [&] { content.simRoot = "ES"; },
                                            [&] { content.overlayStyle.showLevels = false; }};
    for (const auto& change : others) {
        change();
        EXPECT_TRUE(shows(content));
        settle();
        EXPECT_FALSE(shows(content));
    }
}

// Every chart has as many bars at the same times, and nobody sees the list without bars in between.
TEST_F(ChartViewTest, AnotherChartStartsOver) {
    const ChartPoint menu{700, 300}, hand{700, 890};  // on the time axis, where no lines are
    int begun = 0;
    view->onStartOver = [&] { ++begun; };
    for (const bool another : {false, true}) {
        SCOPED_TRACE(another);
        data = SceneData(bars(300));
        view->setContent(data.content(1));
        settle();
        ASSERT_FALSE(view->input().orderMenu(menu).empty());
        view->input().mouseDown(hand);
        view->input().mouseDragged({900, 895});
        EXPECT_TRUE(view->interacting());
        frame();
        begun = 0;
        SceneData other(bars(300));
        other.revision = data.revision;
        other.bubbles.front().strike += 2;  // the ends of the list are those of the one before
        for (StrikeRow& row : other.strikes) row.callGex *= 3;
        other.candles.back().close += 12;
        view->setContent(other.content(another ? 2 : 1));
        EXPECT_EQ(begun, another);
        // no frame has shown the other chart's prices yet, and what the hand began was meant for the one before
        EXPECT_EQ(view->input().orderMenu(menu).empty(), another);
        EXPECT_EQ(view->interacting(), !another);
        view->input().mouseDragged({950, 890});
        view->input().scrollWheel(0, 5, false, true);
        EXPECT_EQ(view->renderer().camera().followLive, another);
        EXPECT_EQ(view->renderer().camera().autoY, another);
        EXPECT_EQ(view->viewport().has_value(), !another);
        time.advance(0.5);  // the wheel's live refresh ends
        frame();
        EXPECT_EQ(view->viewport(), view->renderer().camera().viewport());
        EXPECT_EQ(view->renderer().dispClose() == other.candles.back().close, another);
        EXPECT_EQ(frame(), !another) << "nothing eases over from another chart";
        view->input().mouseUp(hand);
        view->setContent(data.content(another ? 1 : 2));
        settle();
    }
}

// The cap drops bars, or a longer history comes, while series wait for their rebuild, as they do in a drag.
TEST_F(ChartViewTest, SeriesStayWithTheirBarsInTheSameFrame) {
    data = SceneData(bars(300, 50), {.ribbons = 1});
    data.series.anchor = {data.candles.back().time, 299};
    const OvPoint point = data.series.vwapMain[250];
    const std::int64_t itsBar = data.candles[250].time;
    ScenePane pane(data);
    view->setSource(&pane);
    settle();
    view->renderer().setInteracting(true);
    view->renderer().pan(-90);
    const auto expectInPlace = [&] {
        frame();
        const auto& bars = pane.data.candles;
        const auto found = std::ranges::find(bars, itsBar, &Candle::time);
        const double x = AxisScale::xForIndex(view->renderer().camera().viewport(), double(found - bars.begin()), 1400);
        const auto kept = [](const auto& call) { return call.pipeline == Pipeline::ribbon && call.retained; };
        const auto& draws = recorded.draws;  // the walls lie under the price line, the series over it
        const auto priceLine = std::ranges::find(draws, Primitive::lines, &RecordedFrames::DrawCall::primitive);
        const auto line = std::find_if(priceLine, draws.end(), kept);
        ASSERT_NE(line, recorded.draws.end());
        const auto end =
            recorded.vertices<LineVertex>(*line).at(250 * segmentVertices - line->offset / sizeof(LineVertex));
        EXPECT_NEAR(recorded.screen(*line, end.pos[0], end.pos[1])[0], x, 0.02);
    };
    expectInPlace();
    for (const auto& next : {bars(300, 51), bars(300, 54), bars(340, 20)}) {
        pane.data.candles = next;
        view->contentChanged();
        expectInPlace();
        ++pane.seriesRevision;  // another look, of the same old points
        view->contentChanged();
        expectInPlace();
    }
    EXPECT_EQ(pane.data.series.vwapMain[250], point) << "they were never rebuilt";
}

TEST_F(ChartViewTest, ATradeMakesOnlyTheEndsOfSeriesAnewAndTheyLookAsIfAllWere) {
    data = SceneData(bars(300), {.ribbons = 5});
    for (std::size_t i = 0; i < 300; ++i) {
        const double value = 9 * std::sin(static_cast<double>(i));
        data.series.hfLine.push_back({static_cast<double>(i), 21000 + value, value >= 0, 21000, value});
    }
    ScenePane pane(data);
    view->setSource(&pane);
    settle();
    OverlaySet& series = pane.data.series;
    std::mt19937 random(3);
    const auto number = [&](std::size_t below) { return random() % below; };
    const auto move = [&](std::ptrdiff_t back) {
        for (auto* line : {&series.vwapMain, &series.vwapNY, &series.vixLine, &series.ema1, &series.ema2})
            if (back <= std::ssize(*line)) line->end()[-back].v += 1 - static_cast<double>(number(3));
        OvColorPoint& flow = series.hfLine.end()[-back];
        flow.v = 42000 - flow.v;
        flow.positive = !flow.positive;
        series.secondCandles.end()[-back].c += 2 - static_cast<double>(number(5));
    };
    const auto isOverlay = [](const auto& call) {
        return call.uniforms[0] != 1 && (call.pipeline == Pipeline::ribbon || call.pipeline == Pipeline::dashed ||
                                         call.pipeline == Pipeline::candle);
    };
    bool calm = false;
    for (int step = 0; step < 300; ++step) {
        SCOPED_TRACE(step);
        const std::size_t what = number(6);
        if (what == 0) move(1 + static_cast<std::ptrdiff_t>(number(300)));
        if (what == 1) series.ema1.resize(number(2) == 0 ? 0 : 290 + number(10), {299, 21000});
        if (what == 2) series.vwapNY.push_back({static_cast<double>(series.vwapNY.size()), 21003});
        if (what > 2) move(1);
        const auto made = gpu.buffersMade();
        ++pane.seriesRevision;
        view->contentChanged();
        frame();
        std::size_t uploaded = 0;
        for (const auto& call : recorded.draws)
            if (isOverlay(call) && !call.retained) uploaded += call.count * vertexStride(call.pipeline);
        if (std::exchange(calm, what > 2) && calm) {
            EXPECT_EQ(gpu.buffersMade(), made);
            EXPECT_LT(uploaded, 7000U) << "of seven series";
        }
        FrameRecorder otherGpu;
        ChartView fresh(ChartView::Surroundings{otherGpu, glyphs, session, time, queue, nullptr, &account});
        fresh.setContent(pane.chartContent());
        fresh.record(1400, 900, 1, time.monotonic());
        RecordedFrames whole;
        whole.take(otherGpu);
        const auto drawn = [&](const RecordedFrames& of) {
            std::vector<std::uint32_t> out;
            for (auto call : of.draws) {
                if (!isOverlay(call)) continue;
                call.count *= vertexStride(call.pipeline) / sizeof(std::uint32_t);
                std::ranges::copy(of.vertices<std::uint32_t>(call), std::back_inserter(out));
            }
            return out;
        };
        ASSERT_TRUE(drawn(recorded) == drawn(whole));
    }
}

TEST_F(ChartViewTest, ASourcesChangesOfATurnAreReadOnceAndAnAwaitedFrameReadsThemItself) {
    ScenePane first(data), second(data);
    view->setSource(&first);
    time.runUntilIdle();
    EXPECT_EQ(first.reads, 0) << "the frame that it asked for will";
    settle();
    EXPECT_EQ(first.reads, 1);
    const auto change = [&](auto&& what) {
        asked = 0;
        what();
        for (int i = 0; i < 3; ++i) view->contentChanged();
        time.runUntilIdle();
        return asked > 0;
    };
    EXPECT_FALSE(change([] {})) << "nothing differs";
    EXPECT_EQ(first.reads, 2);
    EXPECT_TRUE(change([&] { first.data.candles.back().close += 3; }));
    EXPECT_FALSE(change([] {}));
    EXPECT_EQ(first.reads, 4) << "for what may not wait for a calm frame";
    frame();
    EXPECT_EQ(first.reads, 5);
    EXPECT_TRUE(change([&] { first.data.series.ema1.clear(), ++first.seriesRevision; }));
    const std::size_t before = recorded.draws.size();
    frame();
    EXPECT_EQ(recorded.draws.size(), before - 2) << "all but the settled part and the end of this one";

    // another pane with the same chart number, in the middle of a drag
    view->renderer().setInteracting(true);
    view->renderer().pan(-50);
    frame();
    view->setSource(&second);
    EXPECT_EQ(first.dragsEnded, 1);
    EXPECT_FALSE(view->interacting() || view->viewport());
    frame();
    EXPECT_TRUE(view->renderer().camera().followLive);
    view->contentChanged();
    view.reset();
    time.runUntilIdle();
    EXPECT_EQ(second.reads, 1) << "its chart is gone";
}

TEST_F(ChartViewTest, OnlyNewDataOfTheChartOnShowIsAskedForCalmly) {
    ScenePane pane(data);
    view->setSource(&pane);
    settle();
    const auto tick = [&] {
        if (!pane.data.candles.empty()) pane.data.candles.back().close += 0.25;
    };
    const struct {
        const char* name;
        std::function<void()> change;
        bool calm = false;
    } cases[] = {
        {"tick", tick, true},
        {"wall", [&] { pane.data.levels[0].price += 1; }, true},
        {"strike row", [&] { pane.data.strikes[3].callGex += 1; }, true},
        {"series", [&] { ++pane.seriesRevision, pane.data.series.ema1.back().v += 1; }, true},
        {"settings", [&] { ++pane.lookRevision, pane.data.config.gexEnabled ^= true; }},
        {"timeframe", [&] { pane.timeframe = 6 - pane.timeframe; }},
        {"another chart", [&] { ++pane.chart; }},
        {"input", [&] { view->renderer().pan(-1); }},
        {"account", [&] { view->redraw(); }},
        {"no more bars", [&] { pane.data.candles.clear(); }},
        {"first bars", [&] { pane.data.candles = bars(300); }},
    };
    for (const bool awaited : {false, true}) {  // a calm frame, for a tick
        for (const auto& [name, change, calm] : cases) {
            SCOPED_TRACE(name);
            const auto turn = [&](const std::function<void()>& what) {
                asked = askedCalmly = 0;
                what();
                view->contentChanged();
                time.runUntilIdle();
            };
            if (awaited) turn(tick);
            turn(change);
            EXPECT_EQ(asked > askedCalmly, !calm) << "at once";
            EXPECT_EQ(askedCalmly > 0, calm && !awaited) << "what a calm frame will read is not read before";
            settle();
        }
    }
}

TEST_F(ChartViewTest, FollowersHearOfTheCameraInTheFrameThatMovesIt) {
    const auto state = view->viewportState();
    std::vector<double> heard;
    const auto following =
        state->changed.connect([&] { heard.push_back(state->get() ? std::round(state->get()->first) : -1); });
    frame();  // without bars there is no camera
    view->setContent(data.content());
    view->renderer().mirrorView(40, 150);
    EXPECT_TRUE(heard.empty());
    frame();
    frame();  // nothing moved
    EXPECT_THAT(heard, ElementsAre(40));
    view->renderer().pan(7);
    view->record(0, 900, 1, time.monotonic());  // no frame of bars
    EXPECT_EQ(heard.size(), 1U);
    frame();
    view.reset();
    EXPECT_THAT(heard, ElementsAre(40, 47, -1));
}

}  // namespace
}  // namespace vmr::test
