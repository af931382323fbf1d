// A window without graphics hardware or its stand-ins.
#include <gtest/gtest.h>

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
}

}  // namespace
}  // namespace vmr::test
