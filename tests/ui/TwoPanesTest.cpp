// Two charts of two panes in one window: each its own picture, each drawn for its own sake.
#include <gtest/gtest.h>

#include <QQmlComponent>
#include <QSGRendererInterface>
#include <memory>

#include "tests/chart/FullScene.h"
#include "ui/CpuChart.h"
#include "ui/FrameRaster.h"
#include "ui/UiWindow.h"

namespace vmr::test {
namespace {

constexpr const char* twoCharts = R"(
import QtQuick
import QtQuick.Window
import Velmora
Window {
    width: 903
    height: 400
    visible: true
    ChartItem { objectName: "left"; width: 450; height: parent.height }
    ChartItem { objectName: "right"; x: 451; width: 452; height: parent.height - 30 }
})";

struct Pane {
    explicit Pane(std::vector<Candle> list)
        : data(std::move(list), {.strikes = 20, .minutes = 20, .bubbles = 1, .triangles = 1, .ratio = 10.0}) {
        data.config.initialCandles = 20;
        show();
    }
    void show() {
        PaneViewModel::Chart chart;
        chart.candles = &data.candles;
        setScene(chart, data);
        view.setChart(chart);
    }

    SceneData data;
    PaneViewModel view;
    ChartItem* item = nullptr;
};

class TwoPanes : public testing::Test {
 protected:
    void SetUp() override {
        right_.data.config.candleTheme = "classic";
        right_.show();
        registerQml(engine_);
        QQmlComponent component(&engine_);
        component.setData(twoCharts, QUrl());
        window_.reset(qobject_cast<QQuickWindow*>(component.create()));
        ASSERT_NE(window_, nullptr) << component.errorString().toStdString();
        left_.item = window_->findChild<ChartItem*>("left");
        right_.item = window_->findChild<ChartItem*>("right");
        left_.item->setPane(&left_.view);
        right_.item->setPane(&right_.view);
        QObject::connect(window_.get(), &QQuickWindow::frameSwapped, window_.get(), [this] { ++swaps_; });
        ASSERT_TRUE(settle());
        ASSERT_NE(window_->rendererInterface()->graphicsApi(), QSGRendererInterface::Software);
    }

    bool settle() { return comesToRest(swaps_); }
    QImage picture(const Pane& pane) {
        const QRectF place(pane.item->mapToScene(QPointF()), pane.item->size());
        return windowPicture(*window_).copy(place.toRect());
    }
    // The pane's chart drawn elsewhere, with the bars that it had when it was first shown.
    void expectOwnPicture(const Pane& pane, CpuChart& expected) {
        pane.data.give(expected.renderer, expected.now == 1);
        const RecordedFrame frame = expected.frame(pane.item->size(), 1);
        ASSERT_EQ(expected.renderer.camera().viewport(), pane.item->renderer().camera().viewport());
        expectSame(picture(pane), rasterise(frame, expected.atlas.image()), 0.6);
    }

    QQmlEngine engine_;
    Pane left_{syntheticBars(40)}, right_{syntheticBars(90)};
    std::unique_ptr<QQuickWindow> window_;
    int swaps_ = 0;
};

TEST_F(TwoPanes, EachShowsItsOwnAndIsDrawnForItsOwnSake) {
    CpuChart left, right;
    expectOwnPicture(left_, left);
    expectOwnPicture(right_, right);

    Pane* panes[] = {&left_, &right_};
    for (const int changed : {0, 1}) {
        SCOPED_TRACE(changed == 0 ? "left" : "right");
        Pane &one = *panes[changed], &other = *panes[1 - changed];
        const auto drawn = one.item->framesDrawn(), untouched = other.item->framesDrawn();
        const QImage before = picture(other);
        one.data.candles.back().close += 3;
        one.data.levels[0].price -= 2;
        one.show();
        ASSERT_TRUE(settle());
        EXPECT_GT(one.item->framesDrawn(), drawn + 1) << "it eases";
        EXPECT_EQ(other.item->framesDrawn(), untouched);
        EXPECT_EQ(picture(other), before);
        expectOwnPicture(one, changed == 0 ? left : right);

        const auto eased = one.item->framesDrawn();
        const auto camera = other.item->renderer().camera().viewport();
        one.item->magnify(0.5);
        ASSERT_TRUE(settle());
        EXPECT_GT(one.item->framesDrawn(), eased);
        EXPECT_EQ(other.item->framesDrawn(), untouched);
        EXPECT_EQ(other.item->renderer().camera().viewport(), camera);
        EXPECT_EQ(picture(other), before);
    }
}

TEST_F(TwoPanes, TheCrosshairWaitsForAFrameWithBars) {
    PaneViewModel fresh;
    ChartItem item;
    item.setParentItem(window_->contentItem());
    item.setPosition({451, 370});
    item.setSize({400, 30});
    item.setPane(&fresh);
    ASSERT_TRUE(settle());
    const auto point = [&] {
        QHoverEvent event(QEvent::HoverMove, QPointF(90, 10), QPointF(90, 10), QPointF(90, 10));
        QCoreApplication::sendEvent(&item, &event);
    };
    fresh.setChart(left_.view.chart());
    QCoreApplication::sendPostedEvents(&item, QEvent::MetaCall);
    ASSERT_FALSE(item.renderer().candles().empty());
    point();
    EXPECT_FALSE(item.crosshair()->shown());
    ASSERT_TRUE(settle());
    point();
    EXPECT_TRUE(item.crosshair()->shown());
    EXPECT_GT(item.crosshair()->priceText().remove(',').toDouble(), 10000);
}

TEST_F(TwoPanes, OneTakesTheOthersPaneAndOneGoesAway) {
    right_.item->setPane(nullptr);
    auto bare = right_.view.chart();
    bare.overlays = nullptr;
    right_.view.setChart(bare);
    left_.item->magnify(0.5);
    ASSERT_TRUE(left_.item->renderer().hasOverlays());
    left_.item->setPane(&right_.view);
    ASSERT_TRUE(settle());
    EXPECT_FALSE(left_.item->renderer().hasOverlays()) << "of the pane before";
    EXPECT_EQ(left_.item->renderer().camera().visibleCount, 2 * right_.data.config.initialCandles);
    EXPECT_EQ(left_.item->renderer().candles().size(), right_.data.candles.size());
    const auto drawn = left_.item->framesDrawn(), gone = right_.item->framesDrawn();
    right_.data.candles.back().close += 3;
    right_.show();
    ASSERT_TRUE(settle());
    EXPECT_GT(left_.item->framesDrawn(), drawn);
    EXPECT_EQ(right_.item->framesDrawn(), gone);

    delete right_.item;
    right_.data.candles.back().close -= 3;
    right_.show();
    ASSERT_TRUE(settle());
    EXPECT_EQ(left_.item->renderer().dispClose(), right_.data.candles.back().close);
}

}  // namespace
}  // namespace vmr::test
