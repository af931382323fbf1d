// Plots drawn on demand in a real window: what happens to their frames when the window does something else.
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include "ui/FollowerItem.h"
#include "ui/UiWindow.h"
#include "ui/chart/OscillatorItem.h"
#include "ui/gpu/WindowFrames.h"

namespace vmr::test {
namespace {

class FrameItems : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_NE(ui.window, nullptr);
        ASSERT_TRUE(ui.settle());
        chart = ui.chartItem();
        ASSERT_NE(chart, nullptr);
        ui.view.oscillator.set(true, 120);
        oscillator = ui.window->findChild<OscillatorItem*>();
        ASSERT_NE(oscillator, nullptr);
        follower = std::make_unique<FollowerItem>(chart->parentItem(), chart->viewportState());
        follower->setPosition({200, 100});
        follower->setSize({300, 80});
        follower->setZ(2);
        ASSERT_TRUE(ui.settle());
        ASSERT_GT(follower->framesDrawn(), 0U);
        ASSERT_EQ(follower->shows(), camera());
        ASSERT_EQ(oscillator->height(), 120);
        ASSERT_GT(oscillator->framesDrawn(), 0U);
    }
    void TearDown() override { follower.reset(); }

    Viewport camera() const { return chart->renderer().camera().viewport(); }
    // Both are at rest and show one camera.
    void expectAtRest(const char* when) {
        ASSERT_TRUE(ui.settle()) << when;
        EXPECT_EQ(chart->pump().state(), FramePump::State::idle) << when;
        EXPECT_EQ(follower->pump().state(), FramePump::State::idle) << when;
        EXPECT_EQ(follower->shows(), camera()) << when;
        EXPECT_EQ(oscillator->pump().state(), FramePump::State::idle) << when;
        EXPECT_EQ(oscillator->shows(), camera()) << when;
    }
    // Both plots, without the toolbar.
    QImage picture() { return windowPicture(*ui.window).copy(0, 44, ui.window->width(), ui.window->height() - 44); }
    void pan() { chart->renderer().pan(-3.25); }
    std::uint64_t drawn() const { return chart->framesDrawn(); }

    UiWindow ui{QSize(900, 644), UiWindow::entered(), syntheticBars(400)};
    ChartItem* chart = nullptr;
    OscillatorItem* oscillator = nullptr;
    std::unique_ptr<FollowerItem> follower;
};

// What both items recorded last is compared at each meeting of the threads, when it becomes one frame of the window.
TEST_F(FrameItems, TwoItemsShowOneCameraInEveryFrameOfAFastPan) {
    int frames = 0, apart = 0;
    std::uint64_t seen = drawn();
    // before a frame is rendered, and while the main thread is still blocked
    QObject::connect(
        ui.window, &QQuickWindow::afterSynchronizing, ui.window,
        [&] {
            if (std::exchange(seen, drawn()) == drawn()) return;
            ++frames;
            if (follower->shows() != camera() || oscillator->shows() != camera()) ++apart;
        },
        Qt::DirectConnection);
    const int swaps = ui.swaps;
    const auto before = drawn();
    const QPoint from = chart->mapToScene(QPointF(400, 300)).toPoint();
    QTest::mousePress(ui.window, Qt::LeftButton, {}, from);
    constexpr int enough = 25, most = 1000;
    for (int i = 1; frames < enough && i <= most; ++i) {
        QTest::mouseMove(ui.window, from + QPoint(4 * (i % 80), i % 7));
        runFor(9);
    }
    QTest::mouseRelease(ui.window, Qt::LeftButton, {}, from);
    expectAtRest("after the pan");
    EXPECT_GE(frames, enough);
    EXPECT_EQ(apart, 0) << "of " << frames << " frames";
    EXPECT_LE(ui.swaps - swaps, static_cast<int>(drawn() - before) + 10) << "following costs no frames of the window";

    // the chart moves while a frame that the follower asked for itself is not on the screen yet
    const auto slow = QObject::connect(
        ui.window, &QQuickWindow::beforeRendering, ui.window, [] { QThread::msleep(60); }, Qt::DirectConnection);
    for (int i = 0; i < 5; ++i) {
        const auto own = follower->framesDrawn(), shown = drawn();
        follower->requestFrame();
        ASSERT_TRUE(runUntil([&] { return follower->framesDrawn() > own; }));
        pan();
        ASSERT_TRUE(runUntil([&] { return drawn() > shown; }));
    }
    QObject::disconnect(slow);
    expectAtRest("in the end");
    EXPECT_EQ(apart, 0) << "while the follower's own frame was under way";
}

// The chart reaches from 44 to 518, the handle to 524, the oscillator to 644.
TEST_F(FrameItems, ThePointerOverTheOscillatorRecordsNothingAndMovesTimeAlone) {
    const auto shown = [&](const char* name) {
        const QQuickItem* item = ui.item(name);
        return item && item->isVisible();
    };
    const auto lineX = [&](const char* name) { return ui.item(name)->x(); };
    const auto frames = [&] { return drawn() + oscillator->framesDrawn(); };
    const auto before = frames();
    QTest::mouseMove(ui.window, {300, 555});
    ASSERT_TRUE(runUntil([&] { return shown("oscCrosshairValue") && lineX("oscCrosshairVertical") == 300; }));
    EXPECT_TRUE(shown("crosshairVertical") && shown("crosshairTime"));
    EXPECT_FALSE(shown("crosshairHorizontal") || shown("crosshairPrice"));
    EXPECT_EQ(lineX("crosshairVertical"), 300);
    EXPECT_EQ(chart->crosshair()->oscillatorText(), QStringLiteral("72.50"));  // 31 of 120 points below 150
    ASSERT_TRUE(ui.source.pointer);
    EXPECT_TRUE(std::isnan(ui.source.pointer->price)) << "a time and no price";
    QTest::mouseMove(ui.window, {350, 300});
    ASSERT_TRUE(runUntil([&] { return shown("crosshairHorizontal") && lineX("oscCrosshairVertical") == 350; }));
    EXPECT_FALSE(shown("oscCrosshairHorizontal"));

    // that of a linked pane, over its oscillator
    ASSERT_TRUE(ui.source.pointer);
    ui.source.camera().showPeerCrosshair(ChartSpot{ui.source.pointer->time, std::nan("")});
    ASSERT_TRUE(runUntil([&] { return shown("peerCrosshairVertical") && shown("oscPeerCrosshairVertical"); }));
    for (const char* name : {"peerCrosshairVertical", "oscPeerCrosshairVertical"}) EXPECT_NEAR(lineX(name), 350, 1);
    EXPECT_FALSE(shown("peerCrosshairHorizontal") || shown("oscPeerCrosshairHorizontal"));
    ui.source.camera().showPeerCrosshair(std::nullopt);
    EXPECT_EQ(frames(), before);

    const Viewport at = camera();
    QTest::mousePress(ui.window, Qt::LeftButton, {}, {860, 560});  // below the price axis
    for (int i = 1; i <= 10; ++i) {
        QTest::mouseMove(ui.window, {860 + 3 * i, 560 + 5 * i});
        runFor(12);
    }
    QTest::mouseRelease(ui.window, Qt::LeftButton, {}, {890, 610});
    expectAtRest("after the drag");
    EXPECT_NEAR(camera().first, at.first - 30 * at.count / 900, 1e-6 * at.count) << "time moved";
    EXPECT_TRUE(chart->renderer().camera().autoY) << "price did not";
}

TEST_F(FrameItems, SymbolChangeWhileHiddenShowsTheOtherBars) {
    chart->renderer().pan(-200);
    chart->renderer().zoomPrice(0.5);
    ui.window->hide();
    runFor(100);
    const auto hidden = drawn();
    ui.source.openChart(syntheticBars(90));
    ui.bars().back().close += 7;
    ui.showBars();
    runFor(150);
    EXPECT_EQ(drawn(), hidden);
    ui.window->show();
    expectAtRest("shown again");
    EXPECT_EQ(chart->renderer().candles().size(), 90U);
    EXPECT_TRUE(chart->renderer().camera().followLive && chart->renderer().camera().autoY);
    EXPECT_EQ(chart->renderer().dispClose(), ui.bars().back().close);
}

TEST_F(FrameItems, AtlasFullIsDrawnAnewInEveryItem) {
    const QImage before = picture();
    expectAtRest("after the picture");
    const auto atlas = WindowFrames::of(*ui.window).atlas();
    const unsigned generation = atlas->generation();
    const auto otherDrawn = follower->framesDrawn();
    for (char32_t c = 0x4e00; atlas->generation() == generation; ++c)  // until they no longer fit
        atlas->glyph(c, FontFace::regular, 40, ui.window->effectiveDevicePixelRatio());
    WindowFrames::of(*ui.window).glyphsMoved();
    expectAtRest("with all glyphs in other places");
    EXPECT_GT(follower->framesDrawn(), otherDrawn);
    EXPECT_EQ(picture(), before);
}

// The displays of the tests have no graphics card behind them.
TEST_F(FrameItems, WithoutAGraphicsCardCalmFramesArePacedAndUrgentOnesAreNot) {
    constexpr int most = 8;
    constexpr qint64 leastInterval = 50;  // milliseconds
    QElapsedTimer clock;
    int frames = 0;
    std::uint64_t seen = drawn();
    ASSERT_TRUE(runUntil([&] {
        if (std::exchange(seen, drawn()) != drawn() && frames++ == 0) clock.start();
        chart->requestCalmFrame();
        return frames == most;
    }));
    EXPECT_GE(clock.elapsed(), (most - 1) * leastInterval);
    ASSERT_TRUE(runUntil([&] { return chart->pump().state() == FramePump::State::idle; }));
    chart->requestCalmFrame();
    EXPECT_EQ(chart->pump().state(), FramePump::State::idle) << "waits";
    chart->requestFrame();
    EXPECT_EQ(chart->pump().state(), FramePump::State::asked);
    expectAtRest("after the calm frames");
    for (const double moved : {3.0, -8.0}) {  // at rest, then while the next frame waits
        const auto before = drawn();
        clock.start();
        ui.source.trade(ui.bars().back().close + moved);
        ASSERT_TRUE(runUntil([&] { return drawn() > before && chart->pump().state() == FramePump::State::idle; }));
        EXPECT_LE(clock.elapsed(), 250) << "that a trade may take to the screen";
        EXPECT_EQ(chart->renderer().dispClose(), ui.bars().back().close) << "which has no time for easing";
        EXPECT_EQ(drawn(), before + 1);
    }
    QTest::mousePress(ui.window, Qt::LeftButton, {}, chart->mapToScene(QPointF(400, 300)).toPoint());
    QTest::mouseMove(ui.window, chart->mapToScene(QPointF(440, 300)).toPoint());
    ASSERT_TRUE(runUntil([&] { return chart->pump().state() == FramePump::State::idle; }));
    chart->requestCalmFrame();
    EXPECT_EQ(chart->pump().state(), FramePump::State::asked) << "a hand is on the chart";
    QTest::mouseRelease(ui.window, Qt::LeftButton, {}, chart->mapToScene(QPointF(440, 300)).toPoint());
    expectAtRest("after the drag");
}

// What comes while a person reads the list.
TEST(ChoiceRows, StayWhatTheyAreWhileTheListIsOpen) {
    UiWindow ui(QSize(900, 600), UiWindow::entered(), syntheticBars(40));
    QQuickItem* button = ui.item("expiration");
    const auto* list = button->findChild<QObject*>("choices");
    ASSERT_NE(list, nullptr);
    QSignalSpy rebuilt(list, SIGNAL(shownRowsChanged()));
    const auto rows = [&] { return button->property("shownRows").toList().size(); };
    ToolbarViewModel::State choices{.expirations = {"2026-06-10", "2026-06-11"}, .expirationLabels = {"a", "b"}};
    ui.view.toolbar.set(choices);
    EXPECT_EQ(rebuilt.count(), 1);
    EXPECT_EQ(rows(), 3) << "with all together";

    QTest::mouseClick(ui.window, Qt::LeftButton, {}, button->mapToScene({10, 10}).toPoint());
    ASSERT_TRUE(runUntil([&] { return list->property("opened").toBool(); }));
    choices.expiration = "2026-06-11";
    choices.timeframe = 5;
    ui.view.toolbar.set(choices);
    choices.expirations.push_back("2026-06-12");
    choices.expirationLabels.push_back("c");
    ui.view.toolbar.set(choices);
    runFor(50);
    EXPECT_EQ(rebuilt.count(), 1);
    EXPECT_EQ(rows(), 3);
    QTest::keyClick(ui.window, Qt::Key_Escape);
    ASSERT_TRUE(runUntil([&] { return rows() == 4; })) << "what came meanwhile";
}

}  // namespace
}  // namespace vmr::test
