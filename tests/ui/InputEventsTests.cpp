// What a chart makes of the toolkit's events.
#include <gtest/gtest.h>

#include <QTest>
#include <QWheelEvent>

#include "chart/ChartView.h"
#include "ui/UiWindow.h"

namespace vmr::test {
namespace {

class ChartItemInput : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_NE(ui.window, nullptr);
        ui.window->setPosition(0, 0);
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

    UiWindow ui{QSize(900, 644), UiWindow::entered(), syntheticBars(1000)};
    ChartItem* chart = nullptr;
};

TEST_F(ChartItemInput, WheelsOfEveryKindAndKeysTurnTheRightWay) {
    struct View {
        double count = 200, right = 300, span = 200, middle = 21500;
    };
    const auto expect = [&](const View& expected) {
        EXPECT_NEAR(camera().visibleCount, expected.count, 1e-9);
        EXPECT_NEAR(camera().firstVisible + camera().visibleCount, expected.right, 1e-9);
        EXPECT_NEAR(camera().yMaxManual - camera().yMinManual, expected.span, 1e-9);
        EXPECT_NEAR((camera().yMaxManual + camera().yMinManual) / 2, expected.middle, 1e-9);
        startOver();
    };
    const auto none = Qt::NoScrollPhase, update = Qt::ScrollUpdate;
    const auto wheel = [&](const char* name, const View& expected, QPoint pixels, QPoint angle, Qt::ScrollPhase phase,
                           Qt::KeyboardModifiers keys = {}) {
        SCOPED_TRACE(name);
        const QPointF at = inWindow(300, 200);
        QWheelEvent event(at, ui.window->mapToGlobal(at), pixels, angle, Qt::NoButton, keys, phase, false);
        QCoreApplication::sendEvent(ui.window, &event);
        expect(expected);
    };
    const View notch{.count = 188, .span = 188}, pan{.right = 300 - 30 * 200 / chart->width()};
    wheel("a notch is a line", notch, {}, {0, 120}, none);
    wheel("no more than this at once", {.count = 120, .span = 120}, {}, {0, 24000}, none);
    wheel("pixels without phases count for nothing", notch, {0, 40}, {0, 120}, none);
    wheel("pixels of a touchpad", {.count = 186, .span = 186}, {0, 20}, {0, 240}, update);
    wheel("a touchpad without pixels", notch, {}, {0, 120}, update);
    wheel("sideways", pan, {30, 10}, {240, 80}, update);
    wheel("Alt swaps nothing", notch, {}, {120, 0}, none, Qt::AltModifier);
    wheel("Shift with the axes swapped", {.span = 188}, {}, {120, 0}, none, Qt::ShiftModifier);

    const auto press = [&](Qt::Key key, const View& expected) {
        SCOPED_TRACE(key);
        QTest::keyClick(ui.window, key);
        expect(expected);
    };
    chart->forceActiveFocus();
    press(Qt::Key_Left, {.right = 280});
    press(Qt::Key_Right, {.right = 320});
    press(Qt::Key_Up, {.middle = 21520});
    press(Qt::Key_Down, {.middle = 21480});
    press(Qt::Key_Equal, {.count = 200 / 1.15});
    press(Qt::Key_Minus, {.count = 200 * 1.15});
    press(Qt::Key_Home, {.right = chart->renderer().rightEdgeFirst() + 200});
}

TEST_F(ChartItemInput, TheCrosshairTellsWhatLiesUnderThePointer) {
    const auto hover = [&](double x, double y) {
        runFor(20);  // further apart than the least time between two reports
        QTest::mouseMove(ui.window, inWindow(x, y));
        runFor(20);
    };
    const auto shows = [&](const char* name) { return ui.item(name)->isVisible(); };
    const auto textOf = [&](const char* name) { return ui.item(name)->property("text").toString(); };
    const auto priceAt = [&](double y, double low) { return low + (1.9 - 2 * y / chart->height()) * 200 / 1.8; };
    hover(250, 411);
    ASSERT_TRUE(shows("crosshairPrice"));
    EXPECT_NEAR(textOf("crosshairPrice").remove(',').toDouble(), priceAt(411, 21400), 0.005);
    EXPECT_EQ(ui.item("crosshairHorizontal")->y(), 411);
    EXPECT_EQ(ui.item("crosshairVertical")->x(), 250);
    const auto bar = static_cast<int>(std::round(100 + 250 / chart->width() * 200));  // the first one is at 09:30
    EXPECT_EQ(textOf("crosshairTime"), "Jun 10  " + QTime(9, 30).addSecs(bar * 60).toString("HH:mm"));
    ASSERT_TRUE(ui.source.pointer) << "what a linked pane shows";
    EXPECT_NEAR(ui.source.pointer->price, priceAt(411, 21400), 1e-6);
    EXPECT_NEAR(ui.source.pointer->time, 1781098200 + (100.5 + 250 / chart->width() * 200) * 60, 1e-3);

    chart->renderer().mirrorPrice(21300, 21500);  // the camera moves under a resting pointer
    ASSERT_TRUE(ui.settle());
    EXPECT_NEAR(textOf("crosshairPrice").remove(',').toDouble(), priceAt(411, 21300), 0.005);

    // a tag hides whole labels: every other one is in full view
    const auto hides = [&](std::string tag, const char* place, const char* size, const QList<qreal>& labels) {
        const auto reach = [&](const std::string& name) {
            const QQuickItem& item = *ui.item(name.c_str());
            const double from = item.property(place).toDouble();
            return std::pair(from, from + item.property(size).toDouble());
        };
        const auto [from, to] = reach(tag);
        const auto [first, last] = reach(tag + "Ground");
        int hidden = 0;
        for (qsizetype i = 0; i < labels.size(); i += 2) {
            if (labels[i] >= to || labels[i + 1] <= from) continue;
            EXPECT_TRUE(first <= labels[i] && labels[i + 1] <= last) << tag;
            ++hidden;
        }
        return hidden;
    };
    int prices = 0, times = 0, aside = 0;
    const CrosshairState& cross = *chart->crosshair();
    for (const bool trades : {false, true}) {  // the last price alone, then the tags of the account's lines beside it
        const QList<qreal> before = cross.priceBoxes();
        ui.source.simRoot = trades ? "NQ" : "";
        ui.showBars();
        ASSERT_TRUE(runUntil([&] { return (cross.priceBoxes() != before) == trades; })) << "with the pointer at rest";
        const double first = cross.priceBoxes().front(), last = cross.priceBoxes().back();
        for (int i = 0; i < 30; ++i) {
            hover(200 + 8 * i, i < 9 ? 300 + 6 * i : first - 24 + (last - first + 48) * (i - 9) / 20);
            const QQuickItem& tag = *ui.item("crosshairPrice");
            const QList<qreal>& taken = cross.priceBoxes();
            for (qsizetype k = 0; k < taken.size(); k += 2)
                EXPECT_TRUE(tag.y() >= taken[k + 1] || tag.y() + tag.height() <= taken[k]) << i << " at " << k;
            aside += std::abs(tag.y() + tag.height() / 2 - cross.y()) > 1 ? 1 : 0;
            prices += hides("crosshairPrice", "y", "height", cross.priceLabels());
            times += hides("crosshairTime", "x", "width", cross.timeLabels());
        }
        EXPECT_TRUE(prices > 0 && times > 0 && aside > 2 && aside < 50) << aside;
    }

    hover(chart->width() - 10, 300);
    EXPECT_FALSE(shows("crosshairPrice")) << "over the price axis";
    EXPECT_FALSE(ui.source.pointer);
    hover(250, 411);
    EXPECT_TRUE(ui.source.pointer);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(ui.window, &leave);
    EXPECT_FALSE(shows("crosshairVertical") || ui.source.pointer) << "outside of the window";

    // the linked pane's
    const auto show = [&](double index, double price) {
        ui.source.camera().showPeerCrosshair(ChartSpot{1781098200 + (index + 0.5) * 60, price});
        runFor(20);
    };
    EXPECT_FALSE(shows("peerCrosshairVertical") || shows("peerCrosshairHorizontal"));
    const auto drawn = chart->framesDrawn();
    show(160, 21350);
    EXPECT_EQ(ui.item("peerCrosshairVertical")->x(), std::round(chart->width() * 60 / 200));
    EXPECT_EQ(textOf("peerCrosshairPrice"), "21,350.00");
    EXPECT_EQ(textOf("peerCrosshairTime"), "Jun 10  12:10");
    show(160, 25000);
    EXPECT_TRUE(shows("peerCrosshairVertical") && !shows("peerCrosshairPrice")) << "out of view in one direction";
    show(20, 21350);
    EXPECT_TRUE(shows("peerCrosshairHorizontal") && !shows("peerCrosshairTime"));
    EXPECT_EQ(chart->framesDrawn(), drawn) << "it costs the chart no frame";
    chart->renderer().mirrorView(0, 200);
    ASSERT_TRUE(ui.settle());
    EXPECT_TRUE(shows("peerCrosshairTime")) << "the camera moves";
    EXPECT_FALSE(shows("crosshairVertical"));
    ui.source.camera().showPeerCrosshair(std::nullopt);
    EXPECT_FALSE(shows("peerCrosshairVertical") || shows("peerCrosshairHorizontal"));
}

// The line's texts and the strike's light move with the pointer alone.
TEST_F(ChartItemInput, TheLineOfValuesFollowsThePointer) {
    const auto* line = ui.item("hud");
    EXPECT_FALSE(line->isVisible()) << "a source that shows none";
    ui.source.hud = true;
    ui.source.strikes = {
        {.strike = 2144, .callOI = 11}, {.strike = 2150, .callOI = 22}, {.strike = 2156, .callOI = 33}};
    ui.showBars();
    ASSERT_TRUE(ui.settle());
    const auto text = [&](qsizetype at) {
        const auto values = at < 5 ? chart->hud()->ofBar() : chart->hud()->ofOptions();
        return values[at < 5 ? at : at - 5]->property("value").toString();
    };
    const auto price = [](double value) { return QLocale::c().toString(value, 'f', 2); };
    EXPECT_EQ(text(3).remove(','), price(ui.bars().back().close));
    EXPECT_EQ(text(5), "–");
    EXPECT_FALSE(ui.item("litStrike")->isVisible());
    const auto drawn = chart->framesDrawn();
    const double step = chart->width() / 200;
    for (const auto& [bar, strike] : {std::pair(120, 2), {121, 1}, {40, 0}}) {
        const double at = 21440 + 60 * strike + 20;
        const double y = chart->height() * (1 - ((at - 21400) * 1.8 / 200 - 0.9)) / 2;
        runFor(20);
        QTest::mouseMove(ui.window, inWindow(step * bar, y));
        runFor(20);
        EXPECT_EQ(text(3).remove(','), price(ui.bars()[static_cast<std::size_t>(100 + bar)].close)) << bar;
        EXPECT_EQ(text(5), QString::number(11 * (strike + 1)));
        const QQuickItem& lit = *ui.item("litStrike");
        if (strike == 1) {
            EXPECT_NEAR(lit.y() + lit.height() / 2, chart->height() / 2, 0.01);
        }
        EXPECT_TRUE(lit.isVisible());
    }
    EXPECT_EQ(chart->framesDrawn(), drawn) << "it costs the chart no frame";

    // it is one line where there is room, more where there is less, and keeps within the plot; the chart's texts make
    // room for it and for the clock
    const auto& texts = dynamic_cast<ChartView&>(ui.source.camera()).pills();
    const auto isFree = [&](const QQuickItem& item) {
        const QRectF at = item.mapRectToItem(chart, item.boundingRect());
        return std::ranges::any_of(texts.boxes(), [&](const PointRect& box) {
            return box.y == at.y() && box.height == at.height() && box.x <= at.x() && box.right() >= at.right() &&
                   box.right() <= chart->width();
        });
    };
    const auto lines = [&](int width) {
        ui.window->resize(width, 644);
        EXPECT_TRUE(ui.settle());
        EXPECT_LE(line->x() + line->width(), chart->width() - 74);
        EXPECT_GE(line->y(), 0);
        for (const QQuickItem* part : line->childItems().first()->childItems())
            EXPECT_TRUE(!part->isVisible() || part->height() < 18 || isFree(*part)) << width;
        return std::lround(line->height()) / 18;
    };
    EXPECT_EQ(lines(901), 1);
    EXPECT_EQ(lines(899), 2);
    EXPECT_GT(lines(330), 3);

    // the countdown stands at the last price, and the crosshair's tag on neither
    ui.source.look.countdown = true;
    ui.view.clocks.set("4:59", "NY 10:00", "practice");
    ui.showBars();
    lines(720);
    EXPECT_TRUE(isFree(*ui.item("nyClock")));
    startOver();
    const double last = ui.bars().back().close;
    chart->renderer().mirrorPrice(last - 100, last + 100);
    ASSERT_TRUE(ui.settle());
    const QQuickItem &pill = *ui.item("countdown"), &tag = *ui.item("crosshairPrice");
    EXPECT_TRUE(pill.isVisible());
    EXPECT_EQ(pill.width(), 38);
    EXPECT_NEAR(pill.y(), chart->height() / 2 + 11, 2);
    int beside = 0;
    for (double y = chart->height() / 2 - 30; y < chart->height() / 2 + 50; y += 8) {
        runFor(20);
        QTest::mouseMove(ui.window, inWindow(300, y));
        runFor(20);
        EXPECT_TRUE(tag.y() >= pill.y() + pill.height() || tag.y() + tag.height() <= pill.y() - 18) << y;
        beside += tag.y() > pill.y() ? 1 : 0;
    }
    EXPECT_TRUE(beside > 1 && beside < 9) << beside;
    const QQuickItem& clock = *ui.item("nyClock");
    const double width = clock.width();
    ui.view.clocks.set("", "NY 11:11", "practice");
    EXPECT_EQ(clock.width(), width);
    EXPECT_FALSE(pill.isVisible());
    ui.source.hud = false;
    ui.view.clocks.set("", "", "");
    ui.showBars();
    EXPECT_TRUE(ui.settle() && texts.boxes().empty()) << "nothing is there to make room for";
}

TEST_F(ChartItemInput, ThePositionsResultChangesWithoutAFrame) {
    ui.source.simRoot = "NQ";
    ui.showBars();
    ASSERT_TRUE(ui.settle());
    const auto frames = chart->framesDrawn();
    const QQuickItem& pill = *ui.item("entryPill");
    for (const auto& [result, text, gain] : {std::tuple{132.0, "+130.00", true}, {-43.0, "-45.00", false}}) {
        ui.account.openResult = result;
        EXPECT_TRUE(runUntil([&, text = text] { return pill.property("text") == QLatin1String(text); })) << text;
        EXPECT_EQ(chart->entryPill()->gain(), gain);
    }
    EXPECT_TRUE(pill.isVisible());
    EXPECT_EQ(chart->framesDrawn(), frames);
    ui.window->hide();
    EXPECT_TRUE(runUntil([&] {
        const int before = ui.account.reads;
        runFor(300);
        return ui.account.reads == before;
    })) << "nobody sees it";
    ui.account.openResult = 20;
    ui.window->show();
    EXPECT_TRUE(runUntil([&] { return pill.property("text") == QLatin1String("+20.00"); }));
    ui.account.openResult = 40;
    EXPECT_TRUE(runUntil([&] { return pill.property("text") == QLatin1String("+40.00"); }));
    ui.account.shown.position.reset();
    ui.view.chart.tellAccountChanged();
    EXPECT_TRUE(runUntil([&] { return !pill.isVisible(); }));
}

TEST_F(ChartItemInput, AMenuEndsWithItsChart) {
    ui.source.simRoot = "NQ";
    ui.showBars();
    ASSERT_TRUE(ui.settle());
    ui.openMenu(inWindow(300, 200));
    ASSERT_TRUE(runUntil([&] { return ui.menuShown(); }));
    ui.source.openChart(syntheticBars(900));
    chart->chooseOrder(0);  // before any frame, and though the other chart trades the same root
    EXPECT_TRUE(ui.account.done.empty());
    EXPECT_TRUE(runUntil([&] { return !ui.menuShown(); }));
    EXPECT_TRUE(chart->orderMenu().isEmpty());
}

TEST_F(ChartItemInput, TakingThePointerAwayEndsADrag) {
    const int& ended = ui.source.dragsEnded;
    QTest::mousePress(ui.window, Qt::LeftButton, {}, inWindow(300, 100));
    for (const double y : {150, 180}) QTest::mouseMove(ui.window, inWindow(300, y));
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
