// What a chart in a window makes of the toolkit's events.
#include <gtest/gtest.h>

#include <QTest>
#include <QWheelEvent>

#include "ui/UiWindow.h"

namespace vmr::test {
namespace {

class ChartItemInput : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_NE(ui.window, nullptr);
        ui.window->setPosition(0, 0);
        ui.window->requestActivate();
        chart = ui.chartItem();
        ASSERT_NE(chart, nullptr);
        ui.showBars();
        ASSERT_TRUE(ui.settle());
        startOver();
    }
    void startOver() {
        chart->renderer().mirrorView(100, 200);
        chart->renderer().mirrorPrice(21400, 21600);
    }
    const Camera& camera() const { return chart->renderer().camera(); }
    QPoint inWindow(double x, double y) const { return chart->mapToScene(QPointF(x, y)).toPoint(); }
    // Further apart than the least time between two reports.
    void hover(double x, double y) {
        runFor(20);
        QTest::mouseMove(ui.window, inWindow(x, y));
        runFor(20);
    }
    bool shows(const char* name) const { return ui.item(name)->isVisible(); }

    UiWindow ui{QSize(900, 644), UiWindow::entered(), syntheticBars(1000)};
    ChartItem* chart = nullptr;
};

TEST_F(ChartItemInput, WheelsOfEveryKindTurnTheRightWay) {
    struct Case {
        const char* name;
        QPoint pixels, angle;
        Qt::ScrollPhase phase;
        Qt::KeyboardModifiers keys;
        double time, price, panned;  // zoom factors, and points to the right
    };
    const auto none = Qt::NoScrollPhase, update = Qt::ScrollUpdate;
    const Case cases[] = {
        {"a notch is a line", {}, {0, 120}, none, {}, 0.94, 0.94, 0},
        {"pixels without phases count for nothing", {0, 40}, {0, 120}, none, {}, 0.94, 0.94, 0},
        {"pixels of a touchpad", {0, 20}, {0, 240}, update, {}, 0.93, 0.93, 0},
        {"a touchpad without pixels", {}, {0, 120}, update, {}, 0.94, 0.94, 0},
        {"sideways", {30, 10}, {240, 80}, update, {}, 1, 1, 30},
        {"a wheel sideways", {}, {-120, 0}, none, {}, 1, 1, -1},
        {"Alt swaps nothing", {}, {120, 0}, none, Qt::AltModifier, 0.94, 0.94, 0},
        {"Shift with the axes swapped", {}, {120, 0}, none, Qt::ShiftModifier, 1, 0.94, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        startOver();
        const QPointF at = inWindow(300, 200);
        QWheelEvent event(at, ui.window->mapToGlobal(at), c.pixels, c.angle, Qt::NoButton, c.keys, c.phase, false);
        QCoreApplication::sendEvent(ui.window, &event);
        EXPECT_NEAR(camera().visibleCount, 200 * c.time, 1e-9);
        EXPECT_NEAR(camera().yMaxManual - camera().yMinManual, 200 * c.price, 1e-9);
        EXPECT_NEAR(camera().firstVisible + camera().visibleCount, 300 - c.panned * 200 / chart->width(), 1e-9);
    }
}

TEST_F(ChartItemInput, KeysMoveTheCamera) {
    struct Case {
        Qt::Key key;
        Qt::KeyboardModifiers keys;
        double first, count, low;
    };
    const double perKey = 0.1 * 200, in = 200 / 1.15, out = 200 * 1.15;
    const Case cases[] = {{Qt::Key_Left, {}, 100 - perKey, 200, 21400},
                          {Qt::Key_Right, {}, 100 + perKey, 200, 21400},
                          {Qt::Key_Up, {}, 100, 200, 21400 + perKey},
                          {Qt::Key_Down, {}, 100, 200, 21400 - perKey},
                          {Qt::Key_Plus, Qt::ShiftModifier, 300 - in, in, 21400},
                          {Qt::Key_Equal, {}, 300 - in, in, 21400},
                          {Qt::Key_Minus, {}, 300 - out, out, 21400},
                          {Qt::Key_Home, {}, chart->renderer().rightEdgeFirst(), 200, 21400},
                          {Qt::Key_Left, Qt::ControlModifier, 100, 200, 21400}};
    chart->forceActiveFocus();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        startOver();
        const double first = c.key == Qt::Key_Home ? chart->renderer().rightEdgeFirst() : c.first;
        QTest::keyClick(ui.window, c.key, c.keys);
        EXPECT_NEAR(camera().firstVisible, first, 1e-9);
        EXPECT_NEAR(camera().visibleCount, c.count, 1e-9);
        EXPECT_NEAR(camera().yMinManual, c.low, 1e-9);
    }
}

TEST_F(ChartItemInput, TheCrosshairTellsWhatLiesUnderThePointer) {
    const auto priceShown = [&] {
        QString tag = ui.item("crosshairPrice")->property("text").toString();
        return tag.remove(QLatin1Char(',')).toDouble();
    };
    const auto priceAt = [&](double y, double low) { return low + (1.9 - 2 * y / chart->height()) * 200 / 1.8; };
    hover(250, 411);
    ASSERT_TRUE(shows("crosshairPrice"));
    EXPECT_NEAR(priceShown(), priceAt(411, 21400), 0.005);
    EXPECT_EQ(ui.item("crosshairHorizontal")->y(), 411);
    EXPECT_EQ(ui.item("crosshairVertical")->x(), 250);
    const double bar = std::round(100 + 250 / chart->width() * 200);
    const auto minute = static_cast<int>(bar) + 9 * 60 + 30;  // the first bar is at 09:30
    const QString time = QStringLiteral("Jun 10  %1:%2")
                             .arg(minute / 60, 2, 10, QLatin1Char('0'))
                             .arg(minute % 60, 2, 10, QLatin1Char('0'));
    EXPECT_EQ(ui.item("crosshairTime")->property("text").toString(), time);

    chart->renderer().mirrorPrice(21300, 21500);  // the camera moves under a resting pointer
    ASSERT_TRUE(ui.settle());
    EXPECT_NEAR(priceShown(), priceAt(411, 21300), 0.005);

    hover(chart->width() - 10, 300);
    EXPECT_FALSE(shows("crosshairPrice")) << "over the price axis";
    hover(250, 300);
    EXPECT_TRUE(shows("crosshairPrice"));
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(ui.window, &leave);
    EXPECT_FALSE(shows("crosshairVertical")) << "outside of the window";
}

TEST_F(ChartItemInput, TakingThePointerAwayEndsADrag) {
    int ended = 0;
    PaneViewModel::Actions actions;
    actions.interactionEnded = [&] { ++ended; };
    ui.view.setActions(actions);
    const auto press = [&](double y) { QTest::mousePress(ui.window, Qt::LeftButton, {}, inWindow(300, y)); };
    const auto moveTo = [&](double y) { QTest::mouseMove(ui.window, inWindow(300, y)); };

    press(100);
    moveTo(150);
    moveTo(180);
    EXPECT_TRUE(chart->renderer().interacting());
    chart->ungrabMouse();
    EXPECT_FALSE(chart->renderer().interacting());
    EXPECT_EQ(ended, 1);
    EXPECT_NEAR(camera().yMinManual, 21400 + 80 / chart->height() * 200, 1e-9) << "nothing of the drag is lost";
    QTest::mouseRelease(ui.window, Qt::LeftButton, {}, inWindow(300, 300));
    EXPECT_EQ(ended, 1);
}

}  // namespace
}  // namespace vmr::test
