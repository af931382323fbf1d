// What a chart in a window makes of the toolkit's events.
#include <gtest/gtest.h>

#include <QTest>
#include <QWheelEvent>

#include "chart/AxisScale.h"
#include "chart/ChartTrading.h"
#include "ui/UiWindow.h"

namespace vmr::test {
namespace {

// One buy order, to a quarter.
struct OneOrder final : ChartTrading {
    OrderLine order{Uuid{{1}}, 21450, true, 1, "LMT"};
    std::vector<double> moved;

    void lines(const std::string&, TradingLines& out) const override { out = {{}, {order}, {}}; }
    std::size_t workingCount(const std::string&) const override { return 1; }
    std::optional<double> last(const std::string&) const override { return std::nullopt; }
    std::int64_t ticketQty() const override { return 1; }
    double roundTick(const std::string&, double price) const override { return std::round(price * 4) / 4; }
    void place(const std::string&, std::string_view, std::string_view, double) override {}
    void cancel(const Uuid&) override {}
    void cancelAll(const std::string&) override {}
    void modify(const Uuid&, double price) override { moved.push_back(price); }
    void modifyProjectedLeg(const Uuid&, std::string_view, double) override {}
    void setProtective(const std::string&, std::string_view, double) override {}
    void flatten(const std::string&) override {}
};

class ChartItemInput : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_NE(ui.window, nullptr);
        ui.window->setPosition(0, 0);
        ui.window->requestActivate();
        chart = ui.chartItem();
        ASSERT_NE(chart, nullptr);
        PaneViewModel::Surroundings surroundings;
        surroundings.trading = &trading;
        ui.view.setSurroundings(surroundings);
        chart->setPane(nullptr);
        chart->setPane(&ui.view);
        ui.chart.simRoot = "NQ";
        ui.showBars();
        ASSERT_TRUE(ui.settle());
        startOver();
    }
    void startOver() {
        chart->renderer().mirrorView(100, 200);
        chart->renderer().mirrorPrice(21400, 21600);
    }
    const Camera& camera() const { return chart->renderer().camera(); }
    double yOf(double price) const { return std::round(AxisScale::yFor(camera().viewport(), price, chart->height())); }
    QPoint inWindow(double x, double y) const { return chart->mapToScene(QPointF(x, y)).toPoint(); }
    // Further apart than the least time between two reports.
    void hover(double x, double y) {
        runFor(20);
        QTest::mouseMove(ui.window, inWindow(x, y));
        runFor(20);
    }
    bool shows(const char* name) const { return ui.item(name)->isVisible(); }

    OneOrder trading;
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
        {"half a notch", {}, {0, -60}, none, {}, 1.03, 1.03, 0},
        {"pixels without phases count for nothing", {0, 40}, {0, 120}, none, {}, 0.94, 0.94, 0},
        {"pixels of a touchpad", {0, 20}, {0, 240}, update, {}, 0.93, 0.93, 0},
        {"a touchpad without pixels", {}, {0, 120}, update, {}, 0.94, 0.94, 0},
        {"sideways", {30, 10}, {240, 80}, update, {}, 1, 1, 30},
        {"a wheel sideways", {}, {-120, 0}, none, {}, 1, 1, -1},
        {"Alt swaps nothing", {}, {120, 0}, none, Qt::AltModifier, 0.94, 0.94, 0},
        {"Shift", {}, {0, 120}, none, Qt::ShiftModifier, 1, 0.94, 0},
        {"Shift with the axes swapped", {}, {120, 0}, none, Qt::ShiftModifier, 1, 0.94, 0},
        {"the end of a scroll", {}, {}, Qt::ScrollEnd, {}, 1, 1, 0},
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
    const double height = chart->height();
    for (const double y : {37.0, 300.0, 411.0}) {
        hover(250, y);
        ASSERT_TRUE(shows("crosshairPrice"));
        const double price = 21400 + (1.9 - 2 * y / height) * 200 / 1.8;
        QString tag = ui.item("crosshairPrice")->property("text").toString();
        EXPECT_NEAR(tag.remove(QLatin1Char(',')).toDouble(), price, 0.005);
        EXPECT_EQ(ui.item("crosshairHorizontal")->y(), y);
        EXPECT_EQ(ui.item("crosshairVertical")->x(), 250);
    }
    const double bar = std::round(100 + 250 / chart->width() * 200);
    const auto minute = static_cast<int>(bar) + 9 * 60 + 30;  // the first bar is at 09:30
    const QString time = QStringLiteral("Jun 10  %1:%2")
                             .arg(minute / 60, 2, 10, QLatin1Char('0'))
                             .arg(minute % 60, 2, 10, QLatin1Char('0'));
    EXPECT_EQ(ui.item("crosshairTime")->property("text").toString(), time);

    chart->renderer().mirrorPrice(21300, 21500);  // the camera moves under a resting pointer
    ASSERT_TRUE(ui.settle());
    QString tag = ui.item("crosshairPrice")->property("text").toString();
    EXPECT_NEAR(tag.remove(QLatin1Char(',')).toDouble(), 21300 + (1.9 - 2 * 411 / height) * 200 / 1.8, 0.005);

    hover(chart->width() - 10, 300);
    EXPECT_FALSE(shows("crosshairPrice")) << "over the price axis";
    hover(250, 300);
    EXPECT_TRUE(shows("crosshairPrice"));
    hover(250, -20);
    EXPECT_FALSE(shows("crosshairVertical")) << "over the toolbar";
    hover(250, 300);
    EXPECT_TRUE(shows("crosshairVertical"));
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
    moveTo(300);
    EXPECT_NEAR(camera().yMinManual, 21400 + 80 / chart->height() * 200, 1e-9);
    QTest::mouseRelease(ui.window, Qt::LeftButton, {}, inWindow(300, 300));
    EXPECT_EQ(ended, 1);

    startOver();
    press(yOf(21450));
    moveTo(yOf(21480));
    chart->ungrabMouse();
    ASSERT_FALSE(trading.moved.empty());
    EXPECT_NEAR(trading.moved.back(), 21480, 0.25);
    const auto moves = trading.moved.size();
    moveTo(yOf(21500));
    EXPECT_EQ(trading.moved.size(), moves);
    QTest::mouseRelease(ui.window, Qt::LeftButton, {}, inWindow(300, yOf(21500)));
    EXPECT_EQ(camera().yMinManual, 21400);
}

TEST_F(ChartItemInput, TheOrderMenuStaysInsideTheChart) {
    auto* menu = ui.window->findChild<QObject*>("orderMenu");
    ASSERT_NE(menu, nullptr);
    for (const QPointF at : {QPointF(40, 30), QPointF(chart->width() - 80, chart->height() - 30)}) {
        QTest::mouseClick(ui.window, Qt::RightButton, {}, inWindow(at.x(), at.y()));
        ASSERT_TRUE(ui.settle());
        ASSERT_TRUE(menu->property("opened").toBool());
        EXPECT_EQ(chart->orderMenu().size(), 7);
        const QRectF place(menu->property("x").toDouble(), menu->property("y").toDouble(),
                           menu->property("width").toDouble(), menu->property("height").toDouble());
        EXPECT_GT(place.height(), 5 * 28);
        EXPECT_TRUE(QRectF(QPointF(), chart->size()).contains(place)) << place.y() << " + " << place.height();
        if (at.x() < 100) {
            EXPECT_EQ(place.topLeft(), at);
        }
        QTest::keyClick(ui.window, Qt::Key_Escape);
        ASSERT_TRUE(ui.settle());
    }
}

}  // namespace
}  // namespace vmr::test
