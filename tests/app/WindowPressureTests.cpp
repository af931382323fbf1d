// The panel of HF pressure in the running program: beside the chart and over it, its windows of time, its plots and
// what they cost the chart, the pointer's tag, and where there is little room.
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <cmath>
#include <nlohmann/json.hpp>

#include "base/FileReplace.h"
#include "tests/app/WindowScript.h"
#include "ui/chart/ChartItem.h"
#include "ui/panels/pressure/HfPressureItem.h"

namespace vmr {
namespace {

using nlohmann::json;

class PressureScript {
 public:
    explicit PressureScript(test::WindowRun& run) : run_(run) {}

    AppModel& pane() { return run_.pane(); }
    QQuickWindow* window() const { return qobject_cast<QQuickWindow*>(QGuiApplication::topLevelWindows().value(0)); }
    /// Null while there is none.
    template <class Item = QQuickItem>
    Item* item(const std::string& name) const {
        return qobject_cast<Item*>(find(QString::fromStdString(name), window()->contentItem()));
    }
    ChartItem& chart() const { return *item<ChartItem>("chart"); }
    HfPressureItem& plots() const { return *item<HfPressureItem>("pressurePlots"); }
    QRectF place(const std::string& name) const {
        const QQuickItem* at = item(name);
        return at ? at->mapRectToScene(at->boundingRect()) : QRectF();
    }
    void resize(int width, int height) {
        window()->setMinimumSize(QSize(1, 1));
        window()->resize(width, height);
        settle();
    }
    static void settle() { QTest::qWait(400); }
    void key(Qt::Key code) {
        QTest::keyClick(window(), code);
        settle();
    }
    void click(const std::string& name) {
        const QPoint at = place(name).center().toPoint();
        QTest::mouseMove(window(), at);
        QTest::mouseClick(window(), Qt::LeftButton, {}, at);
        settle();
    }
    void set(bool on) {
        GexConfig config = pane().config;
        config.hfPressure = on;
        pane().setConfig(config);
        settle();
    }
    json state() {
        const std::string file = (run_.start->paths().config / "state.json").string();
        EXPECT_EQ(run_.program->writeState(file), std::nullopt);
        return json::parse(readFile(file).value_or(""))["panes"][0]["hfPressure"];
    }
    /// Adds the samples of `seconds` up to now, in place of those there are; the band ends with `top`.
    void sample(int seconds, double top = 604, double call = 2e7, double put = -3e7) {
        const double now = pane().clock().now();
        pane().hfp.samples.clear();
        for (int i = seconds - 1; i >= 0; --i) {
            HfpSample one{now - i, call + 1e6 * std::sin(i / 9.0) * (call != 0), put, {}, {}};
            for (double strike = top - 4; strike <= top; ++strike) {
                one.band.push_back(strike);
                one.atm.push_back({strike, call / 10 + strike * 1e3 * (call != 0), put / 10});
            }
            pane().hfp.samples.push_back(one);
        }
        pane().hfp.changed();
        QTest::qWait(1300);  // for the next second, and for the boxes
    }

 private:
    // items of a list have no other parent
    static QQuickItem* find(const QString& name, const QQuickItem* in) {
        for (QQuickItem* child : in->childItems()) {
            if (child->objectName() == name) return child;
            if (QQuickItem* deeper = find(name, child)) return deeper;
        }
        return nullptr;
    }

    test::WindowRun& run_;
};

void openAndClose(PressureScript& script) {
    script.resize(1100, 700);
    const Viewport before = *script.pane().viewport();
    script.key(Qt::Key_P);
    ASSERT_TRUE(script.item("pressurePanel"));
    EXPECT_EQ(script.place("pressurePanel"), QRectF(800, 44, 300, 656));
    EXPECT_EQ(script.chart().width(), 800);
    EXPECT_EQ(script.state()["overlay"], false);
    EXPECT_EQ(script.pane().viewport()->count, before.count) << "as on a resize";
    script.key(Qt::Key_P);
    EXPECT_FALSE(script.item("pressurePanel"));
    EXPECT_EQ(script.chart().width(), 1100);
    EXPECT_NEAR(script.pane().viewport()->first, before.first, 1e-9);
    EXPECT_EQ(script.state()["overlay"], nullptr);
    const int shown = script.chart().pane()->pressure.revision();
    script.sample(3);
    EXPECT_EQ(script.chart().pane()->pressure.revision(), shown) << "closed, it looks at nothing";
    script.set(true);
    EXPECT_TRUE(script.item("pressurePanel"));
}

void drawNothingOfTheChart(PressureScript& script) {
    const auto chart = script.chart().framesDrawn();
    script.pane().hfp.open();
    PressureScript::settle();
    EXPECT_TRUE(script.item("pressureNotice")->isVisible());
    EXPECT_EQ(script.item("call")->property("text").toString(), "—");
    script.sample(290);
    EXPECT_FALSE(script.item("pressureNotice")->isVisible());
    EXPECT_EQ(script.state()["visible"], 290);
    EXPECT_GE(script.state()["strip"].size(), 3U);
    const auto plots = script.plots().framesDrawn();
    script.sample(291);
    EXPECT_EQ(script.plots().framesDrawn(), plots + 1);
    script.pane().hfp.changed();
    script.pane().config.changed();
    PressureScript::settle();
    EXPECT_EQ(script.plots().framesDrawn(), plots + 1) << "the same samples";
    EXPECT_EQ(script.chart().framesDrawn(), chart);
}

void chooseWindows(PressureScript& script) {
    script.click("window 1");
    EXPECT_EQ(script.pane().hfp.windowMin, 1);
    EXPECT_EQ(script.state()["visible"], 61);
    script.key(Qt::Key_Right);
    script.key(Qt::Key_Tab);
    script.key(Qt::Key_Space);
    EXPECT_EQ(script.pane().hfp.windowMin, 10);
    script.key(Qt::Key_Left);
    script.key(Qt::Key_Return);
    EXPECT_EQ(script.pane().hfp.windowMin, 5);
}

void pointAtThePlot(PressureScript& script) {
    const auto chart = script.chart().framesDrawn(), plots = script.plots().framesDrawn();
    const QRectF card = script.place("pressureChart");
    const double newest = card.right() - HfPressure::plotRight;
    const HfpSample& last = script.pane().hfp.samples.back();
    QTest::mouseMove(script.window(), QPoint(static_cast<int>(newest), static_cast<int>(card.center().y())));
    PressureScript::settle();
    const std::string told = script.state()["pointed"];
    EXPECT_EQ(told, std::string(HfPressure::timeText(last.t, 1).text()) + " " +
                        std::string(HfPressure::fmt(last.call).text()) + " -30.0M");
    EXPECT_TRUE(script.item("pressureTag")->isVisible());
    QTest::mouseMove(script.window(), QPoint(static_cast<int>(card.x()) + 10, static_cast<int>(card.center().y())));
    PressureScript::settle();
    EXPECT_LT(script.state()["pointed"].get<std::string>(), told) << "an earlier time";
    EXPECT_EQ(script.plots().framesDrawn(), plots);
    EXPECT_EQ(script.chart().framesDrawn(), chart);
    QTest::mouseMove(script.window(), QPoint(static_cast<int>(card.center().x()), static_cast<int>(card.y()) - 60));
    PressureScript::settle();
    EXPECT_EQ(script.state()["pointed"], "");
}

void moveTheMoney(PressureScript& script) {
    script.sample(60, 604);
    QQuickItem* const kept = script.item("strike 603");
    ASSERT_TRUE(kept);
    const double width = script.place("strike 604").x() - script.place("strike 603").x();
    const double before = script.place("strike 603").x();
    script.sample(61, 605);
    EXPECT_EQ(script.item("strike 603"), kept) << "the box stays, and moves";
    EXPECT_NEAR(script.place("strike 603").x(), before - width, 1e-6);
    EXPECT_NEAR(script.place("strike 605").x(), before + width, 1e-6);
    EXPECT_FALSE(script.item("strike 600"));
    EXPECT_EQ(script.state()["ladder"][2],
              json({{"strike", "603"}, {"call", "2.6M"}, {"put", "-3.0M"}, {"atm", true}}));
    EXPECT_TRUE(kept->property("atm").toBool());
}

void fitIntoLittleRoom(PressureScript& script) {
    script.resize(690, 480);
    EXPECT_EQ(script.chart().width(), 690);
    EXPECT_EQ(script.place("pressurePanel"), QRectF(390, 44, 300, 436));
    EXPECT_EQ(script.state()["overlay"], true);
    EXPECT_FALSE(script.item("pressureTitle")->property("truncated").toBool());
    EXPECT_LE(script.place("strike 603").bottom(), 480);
    const double at = script.pane().viewport()->first;
    QTest::mousePress(script.window(), Qt::LeftButton, {}, QPoint(500, 300));
    QTest::mouseMove(script.window(), QPoint(450, 300));
    QTest::mouseRelease(script.window(), Qt::LeftButton, {}, QPoint(450, 300));
    EXPECT_EQ(script.pane().viewport()->first, at) << "the chart below hears of nothing";
    script.resize(690, 300);
    const QQuickItem* view = script.item("pressureView");
    EXPECT_GT(view->property("contentHeight").toDouble(), view->height());
    EXPECT_GE(script.place("pressureChart").height(), 110);
    script.click("window 15");
    script.click("pressureClose");
    EXPECT_FALSE(script.pane().config->hfPressure);
    EXPECT_TRUE(script.chart().hasActiveFocus());
    script.key(Qt::Key_P);
    ASSERT_TRUE(script.item("pressurePanel"));
    EXPECT_TRUE(script.chart().hasActiveFocus()) << "as it is usually opened";
    script.key(Qt::Key_Escape);
    EXPECT_FALSE(script.pane().config->hfPressure);
    EXPECT_FALSE(script.item("pressurePanel"));
    EXPECT_TRUE(script.chart().hasActiveFocus());
}

TEST(WindowPressure, PanelBesideTheChartAndOverIt) {
    test::WindowRun run("2026-06-10T10:00:30");
    ASSERT_FALSE(run.start->failure()) << *run.start->failure();
    PressureScript script(run);
    bool busy = false;
    run.step([&] { return run.streaming() && !run.pane().bars.vixCandles.empty(); },
             [&] {
                 busy = true;
                 run.start->steering().pause();
                 QTest::qWait(1500);  // the last of the market's answers, and what eases
                 openAndClose(script);
                 drawNothingOfTheChart(script);
                 chooseWindows(script);
                 pointAtThePlot(script);
                 moveTheMoney(script);
                 fitIntoLittleRoom(script);
                 busy = false;
             });
    run.step([&] { return !busy; }, [] {});
    EXPECT_EQ(run.run(100, [] {}), 0U);
}

}  // namespace
}  // namespace vmr
