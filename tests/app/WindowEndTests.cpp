// The whole client in a window: what the last window says before it goes.
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>

#include "tests/app/WindowScript.h"

namespace vmr {
namespace {

TEST(WindowEnd, TheLastWindowTellsOfWorkingOrdersAndEnterEnds) {
    test::WindowRun run("2026-06-10T10:00:30");
    ASSERT_FALSE(run.start->failure()) << *run.start->failure();
    const auto windows = [] { return QGuiApplication::topLevelWindows(); };
    const auto question = [&] { return windows().value(0)->findChild<QQuickItem*>(QStringLiteral("endQuestion")); };
    const auto key = [&](int code) {
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, code, {});
            QCoreApplication::sendEvent(windows().value(0), &event);
        }
    };
    run.step([&] { return run.streaming(); },
             [&] {
                 ASSERT_TRUE(run.program->sim().place("NQ", sim::Side::buy, sim::OrderType::limit, 1, 20000.0));
                 ASSERT_TRUE(run.program->windows().open());
             });
    run.step([&] { return windows().size() == 2; }, [&] { windows().back()->close(); });
    run.step([&] { return windows().size() == 1; },
             [&] {
                 EXPECT_FALSE(question()) << "the account lives on";
                 windows().front()->close();
             });
    run.step([&] { return question() != nullptr; },
             [&] {
                 EXPECT_TRUE(windows().front()->isVisible());
                 key(Qt::Key_Escape);
             });
    run.step([&] { return !question(); }, [&] { windows().front()->close(); });
    run.step([&] { return question() != nullptr; }, [&] { key(Qt::Key_Return); });
    run.step([] { return false; }, [] {});  // it has ended before
    EXPECT_EQ(run.run(30, [] {}), 0u);
}

}  // namespace
}  // namespace vmr
