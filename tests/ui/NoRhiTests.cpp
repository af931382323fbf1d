// A window without graphics hardware or its stand-ins.
#include <gtest/gtest.h>

#include <QTest>
#include <QWheelEvent>

#include "ui/UiWindow.h"

namespace vmr::test {
namespace {

TEST(NoRhi, TheChartSaysWhyItIsNotThere) {
    UiWindow ui(QSize(900, 600), UiWindow::entered(), syntheticBars(40));
    ASSERT_NE(ui.window, nullptr);
    ASSERT_EQ(ui.window->rendererInterface()->graphicsApi(), QSGRendererInterface::Software);
    ASSERT_TRUE(runUntil([&] { return !ui.chartItem()->problem().isEmpty(); }));
    const auto* notice = ui.item("chartNotice");
    ASSERT_TRUE(notice && notice->isVisible());
    EXPECT_EQ(notice->property("text").toString(), ui.chartItem()->problem());
    EXPECT_TRUE(ui.settle());

    // nobody can aim at what is not there
    const ChartItem& chart = *ui.chartItem();
    const Camera before = ui.chartItem()->renderer().camera();
    const QPoint at = chart.mapToScene({300, 200}).toPoint(), to = at + QPoint(80, 40);
    QTest::mouseMove(ui.window, at);
    QTest::mousePress(ui.window, Qt::LeftButton, {}, at);
    QTest::mouseMove(ui.window, to);
    QTest::mouseRelease(ui.window, Qt::LeftButton, {}, to);
    QTest::keyClick(ui.window, Qt::Key_Minus);
    QWheelEvent wheel(at, ui.window->mapToGlobal(at), {}, {0, 120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(ui.window, &wheel);
    ui.openMenu(at);
    EXPECT_EQ(ui.chartItem()->renderer().camera().viewport(), before.viewport());
    EXPECT_EQ(ui.chartItem()->renderer().camera().autoY, before.autoY);
    EXPECT_FALSE(ui.menuShown());
    EXPECT_FALSE(ui.item("crosshairVertical")->isVisible());
}

}  // namespace
}  // namespace vmr::test
