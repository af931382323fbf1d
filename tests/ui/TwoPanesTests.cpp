// Two charts of two panes in one window: each its own picture, each drawn for its own sake.
#include <gtest/gtest.h>

#include <QSGRendererInterface>
#include <functional>

#include "tests/chart/FullScene.h"
#include "ui/CpuChart.h"
#include "ui/FrameRaster.h"
#include "ui/UiWindow.h"

namespace vmr::test {
namespace {

struct Pane {
    explicit Pane(std::vector<Candle> list)
        : data(list, {.strikes = 20, .minutes = 20, .bubbles = 1, .triangles = 1, .ratio = 10.0}),
          source(std::move(list)) {
        data.config.initialCandles = 20;
        source.scene = &data;
        source.feed(view);
    }
    void show() {
        source.bars = data.candles;
        source.changed();
    }

    SceneData data;
    SceneSource source;
    PaneViewModel view;
    ChartItem* item = nullptr;
};

class TwoPanes : public testing::Test {
 protected:
    void SetUp() override {
        right_.data.config.candleTheme = "classic";
        right_.show();
        for (Pane* pane : {&left_, &right_}) {
            pane->item = new ChartItem(window_.contentItem());
            pane->item->setPane(&pane->view);
        }
        left_.item->setSize({450, 400});
        right_.item->setPosition({452, 0});
        right_.item->setSize({452, 370});
        window_.resize(904, 400);
        window_.show();
        QObject::connect(&window_, &QQuickWindow::frameSwapped, &window_, [this] { ++swaps_; });
        ASSERT_TRUE(settle());
        ASSERT_NE(window_.rendererInterface()->graphicsApi(), QSGRendererInterface::Software);
    }

    bool settle() { return comesToRest(swaps_); }
    double ratio() const { return window_.effectiveDevicePixelRatio(); }
    QImage part(const QImage& whole, const Pane& pane) const {
        return whole.copy(QRectF(pane.item->position() * ratio(), pane.item->size() * ratio()).toAlignedRect() &
                          whole.rect());
    }
    QImage picture(const Pane& pane) { return part(windowPicture(window_), pane); }
    // The pane's chart drawn elsewhere, with the bars that it had when it was first shown.
    void expectOwnPicture(const Pane& pane, CpuChart& expected) {
        expected.view.setContent(pane.data.content());
        expectPicture(picture(pane), pane, expected);
    }
    void expectPicture(const QImage& is, const Pane& pane, CpuChart& expected) {
        const RecordedFrame frame = expected.frame(pane.item->size(), ratio());
        ASSERT_EQ(expected.view.renderer().camera().viewport(), pane.item->renderer().camera().viewport());
        expectSame(is, frame, expected.atlas.image(), 0.6);
    }

    Pane left_{syntheticBars(40)}, right_{syntheticBars(90)};
    QQuickWindow window_;
    int swaps_ = 0;
};

TEST_F(TwoPanes, EachShowsItsOwnAndIsDrawnForItsOwnSake) {
    CpuChart left, right;
    expectOwnPicture(left_, left);
    expectOwnPicture(right_, right);

    for (const bool isLeft : {true, false}) {
        SCOPED_TRACE(isLeft ? "left" : "right");
        Pane &one = isLeft ? left_ : right_, &other = isLeft ? right_ : left_;
        const auto drawn = one.item->framesDrawn(), untouched = other.item->framesDrawn();
        const auto camera = other.item->renderer().camera().viewport();
        const QImage before = picture(other);
        one.data.candles.back().close += 3;
        one.data.levels[0].price -= 2;
        one.show();
        ASSERT_TRUE(settle());
        EXPECT_GT(one.item->framesDrawn(), drawn + 1) << "it eases";
        expectOwnPicture(one, isLeft ? left : right);
        one.item->magnify(0.5);
        ASSERT_TRUE(settle());
        EXPECT_EQ(other.item->framesDrawn(), untouched);
        EXPECT_EQ(other.item->renderer().camera().viewport(), camera);
        EXPECT_EQ(picture(other), before);
    }
}

// As linked panes are moved: within the recording of the one that moves the other.
TEST_F(TwoPanes, TheChartThatIsMovedByTheOtherShowsTheSameFrame) {
    const auto shows = [](const Pane& pane) { return pane.item->viewportState()->get(); };
    const auto follows = left_.item->viewportState()->changed.connect([&] {
        right_.source.camera().mirrorView(shows(left_)->first, shows(left_)->count);
        right_.source.camera().mirrorPrice(shows(left_)->minP, shows(left_)->maxP);
    });
    int frames = 0, apart = 0;
    auto seen = left_.item->framesDrawn();
    // while the main thread is still blocked
    QObject::connect(
        &window_, &QQuickWindow::afterSynchronizing, &window_,
        [&] {
            if (std::exchange(seen, left_.item->framesDrawn()) == left_.item->framesDrawn()) return;
            ++frames;
            if (shows(left_) != shows(right_)) ++apart;
        },
        Qt::DirectConnection);
    left_.item->renderer().zoom(0.5);
    for (int i = 0; frames < 25 && i < 1000; ++i) {
        left_.item->renderer().pan(i % 2 ? 1.25 : -1.25);
        if (i % 3 == 0) right_.item->renderer().redraw();  // a frame of its own may be on its way
        runFor(9);
    }
    ASSERT_TRUE(settle());
    EXPECT_GE(frames, 25);
    EXPECT_EQ(apart, 0) << "of " << frames << " frames";
}

// Bars, texts and lines of both, in every frame of a gesture over one of them.
TEST_F(TwoPanes, EveryPixelOfBothIsOfOneCameraWhileOneMovesTheOther) {
    const auto follow = [](const Viewport& shown, auto& other) {
        other.mirrorView(shown.first, shown.count);
        other.mirrorPrice(shown.minP, shown.maxP);
    };
    const auto following = left_.item->viewportState()->changed.connect(
        [&] { follow(*left_.item->viewportState()->get(), right_.source.camera()); });
    CpuChart left, right;
    expectOwnPicture(left_, left);
    expectOwnPicture(right_, right);
    const std::function<void(ChartRenderer&)> moves[] = {
        [](ChartRenderer& one) { one.pan(-3.37); }, [](ChartRenderer& one) { one.zoom(1.3); },
        [&](ChartRenderer& one) { one.panByPrice(31, left_.item->height()); },
        [](ChartRenderer& one) { one.pan(5.81), one.zoomPrice(0.8); },
        [&](ChartRenderer&) {
            left_.item->setSize({430, 380});
            right_.item->setSize({440, 396});
        }};
    for (std::size_t i = 0; i < std::size(moves); ++i) {
        SCOPED_TRACE(i);
        for (ChartRenderer* one : {&left_.item->renderer(), &left.view.renderer()}) {
            one->setInteracting(true);
            moves[i](*one);
        }
        const QImage whole = windowPicture(window_);
        expectPicture(part(whole, left_), left_, left);
        follow(left_.item->renderer().camera().viewport(), right.view.renderer());
        expectPicture(part(whole, right_), right_, right);
    }
}

TEST_F(TwoPanes, OneTakesTheOthersPaneAndOneGoesAway) {
    right_.data.series = {};
    right_.data.srLines.clear();
    right_.show();
    delete right_.item;
    left_.item->magnify(0.5);
    left_.item->setPane(&right_.view);
    ASSERT_TRUE(settle());
    EXPECT_FALSE(left_.item->renderer().hasOverlays()) << "of the pane before";
    EXPECT_EQ(left_.item->renderer().camera().visibleCount, 2 * right_.data.config.initialCandles);
    right_.data.candles.back().close -= 3;
    right_.show();
    ASSERT_TRUE(settle());
    EXPECT_EQ(left_.item->renderer().dispClose(), right_.data.candles.back().close);
}

}  // namespace
}  // namespace vmr::test
