// The whole chart: what of a content costs a frame, when a chart starts over, and what leaves a frame.
#include "chart/ChartView.h"

#include <gmock/gmock.h>

#include "support/StillAccount.h"
#include "tests/chart/ChartScene.h"
#include "tests/chart/FakeGlyphs.h"
#include "tests/chart/FullScene.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;

// Its pictures move when the test says so, as they do when a texture is full.
struct MovingGlyphs final : GlyphSource {
    FakeGlyphs real;
    unsigned moves = 1;
    bool moveAtNext = false;
    const Glyph& glyph(char32_t character, FontFace face, double pointSize, double ratio) override {
        if (std::exchange(moveAtNext, false)) ++moves;
        return real.glyph(character, face, pointSize, ratio);
    }
    float lineHeight(FontFace face, double pointSize, double ratio) override {
        return real.lineHeight(face, pointSize, ratio);
    }
    unsigned generation() const override { return moves; }
};

struct ScenePane final : ChartSource {
    explicit ScenePane(SceneData scene) : data(std::move(scene)) {}
    SceneData data;
    mutable int reads = 0;
    int dragsEnded = 0;
    std::uint64_t chart = 1, seriesRevision = 1;
    ChartContent chartContent() const override {
        ++reads;
        ChartContent content = data.content(chart);
        content.revisions.overlays = content.revisions.srLines =
            seriesRevision;  // a pane raises these for other points
        return content;
    }
    void interactionEnded() override { ++dragsEnded; }
    void marketClosedOrder() override {}
};

struct ChartViewTest : testing::Test {
    TestTime time;
    TestQueue queue{time};
    FrameRecorder gpu;
    RecordedFrames recorded;  // the newest frame
    MovingGlyphs glyphs;
    SessionTime session;
    SceneData data{bars(300)};
    StillAccount account{data.candles.back().close};
    std::optional<ChartView> view;
    int asked = 0;

    ChartViewTest() {
        view.emplace(ChartView::Surroundings{gpu, glyphs, session, time, queue, nullptr, &account});
        view->onNeedsFrame = [this](ChartView::Need) { ++asked; };
    }
    bool record() {
        time.advance(1.0 / 60);
        const bool another = view->record(1400, 900, 1, time.monotonic());
        recorded.take(gpu);
        return another;
    }
    void settle() {
        for (int i = 0; record(); ++i) ASSERT_LT(i, 200) << "never settles";
    }
    bool shows(const ChartContent& content) {
        asked = 0;
        view->setContent(content);
        return asked > 0;
    }
    std::size_t texts() const {
        return static_cast<std::size_t>(
            std::ranges::count(recorded.draws, Pipeline::text, &RecordedFrames::DrawCall::pipeline));
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
    for (const auto& change :
         std::initializer_list<std::function<void()>>{[&] { content.timeframe = 5; }, [&] { content.simRoot = "ES"; },
                                                      [&] {
                                                          content.overlayStyle.ema1Color = {1, 0, 0, 1};
                                                      },
                                                      [&] { content.overlayStyle.showLevels = false; }}) {
        change();
        EXPECT_TRUE(shows(content));
        settle();
        EXPECT_FALSE(shows(content));
    }
}

TEST_F(ChartViewTest, TheAccountsLinesAreThereWithARoot) {
    view->setContent(data.content(1, ""));
    settle();
    const auto without = recorded.draws.size();
    view->setContent(data.content(1, "NQ"));
    settle();
    EXPECT_GT(recorded.draws.size(), without);
}

// Every chart has as many bars at the same times, and nobody sees the list without bars in between.
TEST_F(ChartViewTest, AnotherChartStartsOver) {
    for (const bool another : {false, true}) {
        SCOPED_TRACE(another);
        data = SceneData(bars(300));
        view->setContent(data.content(1));
        settle();
        view->renderer().pan(-100);
        view->renderer().zoomPrice(0.7);
        settle();
        SceneData other(bars(300));
        other.revision = data.revision;
        other.bubbles.front().strike += 2;  // the ends of the list are those of the one before
        for (StrikeRow& row : other.strikes) row.callGex *= 3;
        other.candles.back().close += 12;
        view->setContent(other.content(another ? 2 : 1));
        EXPECT_EQ(view->renderer().camera().followLive, another);
        EXPECT_EQ(view->renderer().camera().autoY, another);
        record();
        EXPECT_EQ(view->renderer().dispClose() == other.candles.back().close, another);
        EXPECT_EQ(record(), !another) << "nothing eases over from another chart";
        view->setContent(data.content(another ? 1 : 2));
        settle();
    }
}

TEST_F(ChartViewTest, ASourcesChangesOfATurnAreReadOnceAndAnAwaitedFrameReadsThemItself) {
    ScenePane first(data), second(data);
    view->setSource(&first);
    time.runUntilIdle();
    EXPECT_EQ(first.reads, 0) << "the frame that it asked for will";
    settle();
    EXPECT_EQ(first.reads, 1);
    asked = 0;
    for (int i = 0; i < 3; ++i) view->contentChanged();
    EXPECT_EQ(first.reads, 1) << "never at once";
    time.runUntilIdle();
    EXPECT_EQ(first.reads, 2);
    EXPECT_EQ(asked, 0) << "nothing differs";
    first.data.candles.back().close += 3;
    view->contentChanged();
    time.runUntilIdle();
    EXPECT_GE(asked, 1);
    view->contentChanged();
    time.runUntilIdle();
    EXPECT_EQ(first.reads, 3);
    record();
    EXPECT_EQ(first.reads, 4);
    asked = 0;
    first.data.series.ema1.clear();
    ++first.seriesRevision;
    view->contentChanged();
    time.runUntilIdle();
    EXPECT_GE(asked, 1) << "other series";
    const std::size_t before = recorded.draws.size();
    record();
    EXPECT_EQ(recorded.draws.size(), before) << "the other ribbons are still there";

    // another pane with the same chart number, in the middle of a drag
    view->renderer().setInteracting(true);
    EXPECT_TRUE(view->interacting());
    view->renderer().pan(-50);
    record();
    view->setSource(&second);
    EXPECT_EQ(first.dragsEnded, 1);
    EXPECT_FALSE(view->interacting());
    EXPECT_EQ(view->viewport(), std::nullopt);
    record();
    EXPECT_TRUE(view->renderer().camera().followLive);
    EXPECT_EQ(view->viewport(), view->renderer().camera().viewport());
    view->contentChanged();
    view.reset();
    time.runUntilIdle();
    EXPECT_EQ(second.reads, 1) << "its chart is gone";
}

TEST_F(ChartViewTest, FollowersHearOfTheCameraInTheFrameThatMovesIt) {
    const auto state = view->viewportState();
    std::vector<double> heard;
    const auto following =
        state->changed.connect([&] { heard.push_back(state->get() ? std::round(state->get()->first) : -1); });
    int moved = 0;
    view->onMoved = [&] { ++moved; };
    record();
    EXPECT_EQ(moved, 0) << "without bars there is no camera";
    view->setContent(data.content());
    view->renderer().mirrorView(40, 150);
    EXPECT_TRUE(heard.empty());
    record();
    EXPECT_THAT(heard, ElementsAre(40));
    record();
    EXPECT_EQ(heard.size(), 1U) << "nothing moved";
    EXPECT_EQ(moved, 1);
    view->renderer().pan(7);
    view->record(0, 900, 1, time.monotonic());  // no frame of bars
    EXPECT_EQ(heard.size(), 1U);
    record();
    view.reset();
    time.runUntilIdle();
    EXPECT_THAT(heard, ElementsAre(40, 47, -1));
}

TEST_F(ChartViewTest, AFrameWhosePicturesOfGlyphsMovedIsRecordedAgainAsTheSameFrame) {
    view->setContent(data.content());
    settle();
    EXPECT_GE(texts(), 3U) << "labels, lines, axes";
    int moved = 0;
    view->onMoved = [&] { ++moved; };
    view->renderer().pan(-3);
    glyphs.moveAtNext = true;
    const auto before = glyphs.moves;
    data.strikes[3].callGex *= 7;  // a label that must be laid out
    data.strikes[3].putGex = 0;
    view->setContent(data.content());
    record();
    EXPECT_EQ(glyphs.moves, before + 1);
    EXPECT_TRUE(view->inputLagMs().has_value()) << "the first recording showed the input";
    EXPECT_EQ(moved, 1);
}

TEST_F(ChartViewTest, InputKeepsFramesComingWhileItLasts) {
    view->setContent(data.content());
    settle();
    asked = 0;
    view->input().magnify(0.01);
    EXPECT_GE(asked, 1);
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(record());
    time.advance(0.5);
    settle();
}

}  // namespace
}  // namespace vmr::test
