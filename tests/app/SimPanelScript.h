// The simulator's panel in the running program, as a test reaches it: real hands on its controls, and its account.
#pragma once

#include <gtest/gtest.h>

#include <QQuickItem>
#include <atomic>
#include <memory>
#include <string>

#include "tests/app/RealHands.h"
#include "tests/app/WindowScript.h"
#include "ui/chart/ChartItem.h"
#include "ui/panels/sim/SimViewModel.h"

namespace vmr::test {

class SimPanelScript {
 public:
    explicit SimPanelScript(WindowRun& of) : run(of), hands(*window()) {}

    static QQuickWindow* window() { return qobject_cast<QQuickWindow*>(QGuiApplication::topLevelWindows().value(0)); }
    SimEngine& sim() { return run.program->sim(); }
    /// The only one that is open; null without one.
    QQuickItem* panel() const {
        const QQuickItem* title = shownItem("panelTitle", window()->contentItem());
        return title ? title->parentItem() : nullptr;
    }
    /// What it shows comes from there.
    SimViewModel& view() const { return *panel()->property("sim").value<SimViewModel*>(); }
    /// Null where none is shown.
    QQuickItem* item(const std::string& name) const { return shownItem(QString::fromStdString(name), panel()); }
    QQuickItem* item(const std::string& name, const std::string& in) const {
        const QQuickItem* outer = item(in);
        return outer ? shownItem(QString::fromStdString(name), outer) : nullptr;
    }

    void click(const QQuickItem* at, double share = 0.5) {
        ASSERT_TRUE(at);
        scrollTo(*at);
        hands.click(at->mapToScene({at->width() * share, at->height() / 2}));
        settle();
    }
    /// By the wheel, beside the cards.
    void scrollTo(const QQuickItem& at) {
        const QQuickItem* const view = item("simView");
        if (!view->isAncestorOf(&at)) return;
        for (int i = 0; i < 40; ++i) {
            const QRectF place = at.mapRectToItem(view, at.boundingRect());
            const bool above = place.top() < 0;
            if (!above && place.bottom() <= view->height()) return;
            hands.wheel(view->mapToScene({4, view->height() / 2}), above);
            EXPECT_TRUE(soon([&] { return !view->property("moving").toBool(); }));
        }
        ADD_FAILURE() << "it cannot be scrolled to";
    }
    void key(const std::string& chord) {
        hands.key(chord);
        settle();
    }
    /// Until what was asked of the program is done and the window has been laid out and drawn with it.
    void settle() {
        const auto done = std::make_shared<std::atomic<bool>>(false);
        run.program->main().post([done] { *done = true; });
        EXPECT_TRUE(soon([&] { return done->load(); }));
        *done = false;
        const auto drawn = QObject::connect(
            window(), &QQuickWindow::afterSynchronizing, window(), [done] { *done = true; }, Qt::DirectConnection);
        window()->update();
        EXPECT_TRUE(soon([&] { return done->load(); }));
        QObject::disconnect(drawn);
    }
    template <class Condition>
    static bool soon(Condition condition) {
        return QTest::qWaitFor(condition, 15000);
    }

    WindowRun& run;
    RealHands hands;
};

}  // namespace vmr::test
