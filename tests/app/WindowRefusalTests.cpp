// The whole client in a window: an order that the account refuses is answered over the chart.
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickWindow>

#include "tests/app/WindowScript.h"
#include "ui/chart/ChartItem.h"

namespace vmr {
namespace {

TEST(WindowRefusal, TheReasonStandsInAToast) {
    test::WindowRun window("2026-06-10T10:00:30");
    ASSERT_FALSE(window.start->failure()) << *window.start->failure();
    const auto item = [](const char* name) {
        return QGuiApplication::topLevelWindows().value(0)->findChild<QQuickItem*>(QLatin1String(name));
    };
    const auto chart = [&] { return qobject_cast<ChartItem*>(item("chart")); };
    // there is a menu once the chart has drawn bars
    const auto menuOpens = [&] {
        QMouseEvent press(QEvent::MouseButtonPress, {300, 300}, {300, 300}, Qt::RightButton, Qt::RightButton, {});
        QCoreApplication::sendEvent(chart(), &press);
        return !chart()->orderMenu().isEmpty();
    };
    window.step([&] { return window.streaming() && chart() && menuOpens(); },
                [&] {
                    window.program->sim().ticketQty = 0;
                    for (int row = 0; row < chart()->orderMenu().size(); ++row) chart()->chooseOrder(row);
                });
    window.step([&] { return item("toast")->property("title") == "Simulator"; },
                [&] {
                    EXPECT_EQ(item("toast")->property("detail"), "the quantity must be at least 1");
                    EXPECT_TRUE(window.program->sim().orders().empty());
                });
    EXPECT_EQ(window.run(30, [] {}), 0u);
}

}  // namespace
}  // namespace vmr
