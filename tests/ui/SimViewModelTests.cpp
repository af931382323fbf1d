// The rows of lists, and what the simulator's panel makes anew and when.
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>
#include <numeric>
#include <random>

#include "base/Preferences.h"
#include "tests/sim/SimScript.h"
#include "ui/panels/settings/SettingsViewModel.h"
#include "ui/panels/sim/EquityPlot.h"
#include "ui/panels/sim/SimViewModel.h"
#include "ui/platform/HeldKeys.h"
#include "ui/platform/UiSetup.h"
#include "ui/widgets/PanelFrames.h"
#include "workspace/EquityArt.h"

namespace vmr::test {
namespace {

/// Follows a model by its notices alone, as a view does.
struct Follower {
    explicit Follower(RowsModel& from)
        : model(from), strict(&from, QAbstractItemModelTester::FailureReportingMode::Fatal) {
        using M = QAbstractItemModel;
        const auto read = [this](int at) { return model.rows()[static_cast<std::size_t>(at)]; };
        QObject::connect(&model, &M::rowsInserted, [this, read](const QModelIndex&, int first, int last) {
            for (int i = first; i <= last; ++i, ++notices) rows.insert(rows.begin() + i, read(i));
        });
        QObject::connect(&model, &M::rowsRemoved, [this](const QModelIndex&, int first, int last) {
            rows.erase(rows.begin() + first, rows.begin() + last + 1);
            ++notices;
        });
        QObject::connect(&model, &M::rowsMoved, [this](const QModelIndex&, int old, int, const QModelIndex&, int to) {
            std::rotate(rows.begin() + to, rows.begin() + old, rows.begin() + old + 1);
            ++notices;
        });
        QObject::connect(&model, &M::dataChanged, [this, read](const QModelIndex& first, const QModelIndex& last) {
            for (int i = first.row(); i <= last.row(); ++i, ++notices) rows[static_cast<std::size_t>(i)] = read(i);
        });
        QObject::connect(&model, &M::modelReset, [this] { notices += 1000; });
    }
    RowsModel& model;
    QAbstractItemModelTester strict;
    RowsModel::Rows rows;
    int notices = 0;
};

TEST(RowsModel, AViewThatFollowsTheNoticesShowsTheRows) {
    RowsModel model;
    Follower view(model);
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        std::vector<int> keys(12);
        std::iota(keys.begin(), keys.end(), 0);
        std::shuffle(keys.begin(), keys.end(), random);
        RowsModel::Rows rows;
        for (std::size_t i = 0; i < random() % 12; ++i)
            rows.push_back({{"key", QString::number(keys[i])}, {"value", static_cast<int>(random() % 2)}});
        model.setRows(rows);
        ASSERT_EQ(model.rows(), rows);
        ASSERT_EQ(view.rows, rows) << "round " << round;
        view.notices = 0;
        model.setRows(rows);
        ASSERT_EQ(view.notices, 0) << "the same rows again";
    }
}

class SimPanel : public testing::Test {
 protected:
    SimPanel() {
        view.bind(&desk, &time, &main);
        const auto counts = [this](auto notice) { QObject::connect(&view, notice, [this] { ++others; }); };
        counts(&SimViewModel::ticketChanged);
        counts(&SimViewModel::cardsChanged);
        counts(&SimViewModel::performanceChanged);
        QObject::connect(&view, &SimViewModel::accountChanged, [this] { ++account; });
        QObject::connect(&view, &SimViewModel::startedOver, [this] { ++startedOver; });
        script.run("open 1 NQM6; quote 100 100.25; trade 100");
    }
    /// What has been told since the last call: rows of positions, of the other lists, and all else.
    struct News {
        int positions = 0, rows = 0, account = 0, others = 0;
        bool operator==(const News&) const = default;
    };
    News news() {
        News out{std::exchange(positions.notices, 0), 0, std::exchange(account, 0), std::exchange(others, 0)};
        for (Follower& one : lists) out.rows += std::exchange(one.notices, 0);
        return out;
    }

    TestTime time;
    TestQueue main{time};
    SessionTime session;
    SimEngine engine{{.clock = time, .session = session, .ids = UuidSource(1), .localDay = [](double at) {
                          return static_cast<std::int64_t>(at / 86400);
                      }}};
    SimScript script{time, engine};
    MemoryPreferences preferences;
    PaneWork work{main};
    std::string root = "NQ";
    SimDesk desk{engine, preferences, work, [this]() -> const std::string& { return root; }};
    SimViewModel view;
    Follower positions{view.positions};
    Follower lists[5]{Follower(view.orders), Follower(view.metrics), Follower(view.days), Follower(view.history),
                      Follower(view.fills)};
    int others = 0, account = 0, startedOver = 0;
};

TEST_F(SimPanel, OnlyWhatChangedIsMadeAnewAndNothingWhileItIsHidden) {
    view.press(true, 0);
    script.run("trade 100.5");
    time.advance(5);
    EXPECT_EQ(news(), News()) << "hidden";

    view.setShown(true);
    EXPECT_EQ(view.positions.rows().at(0)["pnl"], "+5.00");
    EXPECT_EQ(view.orders.count(), 2);
    EXPECT_EQ(view.metrics.count(), 12);
    news();
    time.advance(3);
    EXPECT_EQ(news(), News()) << "prices stand";

    for (int i = 0; i < 50; ++i) engine.onTrade("NQ", 101 + 0.25 * i);
    EXPECT_EQ(news(), News()) << "prices tell nobody";
    time.advance(1);
    EXPECT_EQ(news(), (News{.positions = 1, .account = 1}));
    EXPECT_EQ(view.equity(), engine.balance() + engine.totalUnrealized());

    view.press(true, 2);
    EXPECT_EQ(view.notice(), "A stop order needs a price above 0");
    desk.setTicket({.qty = 2, .limitText = "99"});
    view.press(true, 1);
    time.runUntilIdle();
    EXPECT_EQ(view.orders.count(), 3);
    EXPECT_EQ(news().rows, 1) << "the new order alone";

    view.flatten("NQ");
    time.runUntilIdle();
    EXPECT_EQ(view.positions.count(), 0);
    EXPECT_EQ(view.history.count(), 1);
    EXPECT_EQ(startedOver, 1) << "when it was shown";
    for (const int balance : {2000, 1000}) {  // the second one finds no fill that it could take away
        engine.resetAccount(balance);
        time.runUntilIdle();
        EXPECT_EQ(std::exchange(startedOver, 1), 2);
        EXPECT_EQ(view.balance(), balance);
    }
    EXPECT_EQ(view.history.count() + view.fills.count() + view.orders.count(), 0);
    for (const auto& [does, jumps] : {std::pair("buy 1", 1), {"open 1 NQU6", 2}, {"trade 110", 3}, {"trade 120", 3}}) {
        script.run(does);  // with a price of the other contract comes what the position is worth
        time.advance(1);
        EXPECT_EQ(startedOver, jumps) << does;
    }

    view.setShown(false);
    news();
    view.press(true, 0);
    time.advance(5);
    EXPECT_EQ(news(), News()) << "hidden again";
    view.bind(nullptr);
    view.press(true, 0);
    EXPECT_EQ(view.title(), "");
}

TEST_F(SimPanel, TheCurvesSpotFollowsTheCurveBelowARestingPointer) {
    view.setShown(true);
    EquityPlot plot;
    plot.setSize({100, 100});
    plot.setSim(&view);
    script.run("buy 1; sell 1; buy 1; sell 1");
    time.runUntilIdle();
    plot.point(0);
    const QPointF before = plot.spotPlace();
    const QString said = plot.spotText();
    QSignalSpy moves(&plot, &EquityPlot::spotChanged);
    script.run("buy 1; quote 120 120.25; sell 1");
    time.runUntilIdle();
    EXPECT_EQ(plot.spotText(), said) << "the same trade";
    EXPECT_NE(plot.spotPlace(), before);
    EXPECT_EQ(moves.count(), 1);
}

/// The panel in a window that nobody sees.
class ShownSimPanel : public SimPanel {
 protected:
    void load(const char* content) {
        registerQml(engine_);
        engine_.setInitialProperties({{"sim", QVariant::fromValue(&view)},
                                      {"frames", QVariant::fromValue(&frames)},
                                      {"settings", QVariant::fromValue(&settings)}});
        engine_.loadData(
            QByteArray("import QtQuick\nimport Velmora\nWindow { id: top; width: 600; height: 900; visible: true;"
                       "required property SimViewModel sim; required property PanelFrames frames;"
                       "required property SettingsViewModel settings;") +
            content + "}");
        ASSERT_FALSE(engine_.rootObjects().isEmpty());
        window = qobject_cast<QQuickWindow*>(engine_.rootObjects().first());
        window->requestActivate();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }
    static QQuickItem* within(QQuickItem* item, const QString& name) {
        if (item->objectName() == name && item->isVisible()) return item;
        for (QQuickItem* child : item->childItems())
            if (QQuickItem* found = within(child, name)) return found;
        return nullptr;
    }
    QQuickItem* item(const char* name) const { return within(window->contentItem(), name); }
    /// What has it afterwards.
    std::string focus(const char* name, const std::string& commands) {
        item(name)->forceActiveFocus(Qt::TabFocusReason);
        if (commands == "press")
            space();
        else
            script.run(commands);
        settle();
        const QQuickItem* now = window->activeFocusItem();
        return now && now->isVisible() ? now->objectName().toStdString() : "";
    }
    /// Down `at` a moment in ms, and up 40 ms later.
    void space(bool again = false, std::uint64_t at = 0) {
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, Qt::Key_Space, Qt::NoModifier, QString(), again);
            event.setTimestamp(at > 0 && type == QEvent::KeyRelease ? at + 40 : at);
            QCoreApplication::sendEvent(window, &event);
        }
    }
    void settle() {
        time.advance(1);
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    PanelFrames frames;
    SettingsViewModel settings;
    QQuickWindow* window = nullptr;

 private:
    QQmlApplicationEngine engine_;
};

TEST_F(ShownSimPanel, TheKeyboardStaysWhereItsControlHasGone) {
    load(
        "PanelSpace { anchors.fill: parent; SimPanel { sim: top.sim; frames: top.frames;"
        "Component.onCompleted: open = true } }");
    const double openHours = time.now();
    const struct {
        const char *before, *control, *happens, *then;
    } cases[] = {
        {"buy 1 sl=4 tp=8", "simFlat", "press", "panelTitle"},
        {"buy 1", "simAddSl", "press", "simAddTp"},
        {"buy 1 sl=4", "simAddTp", "press", "simFlat"},
        {"buy 1 sl=4 tp=8", "simCancelAll", "press", "panelTitle"},
        {"buy 1 limit=90; buy 1 limit=91", "simCancel", "press", "simCancel"},
        {"root ES; open 2 ESM6; quote 50 50; buy 1; root NQ; buy 1", "simFlat", "press", "simFlat"},
        {"buy 1", "simFlat", "buy 1", "simFlat"},
        {"", "simQty", "closed", "panelTitle"},
        {"buy 1; sell 1", "simAll fills", "reset 5", "panelTitle"},
    };
    for (const auto& one : cases) {
        time.setNow(openHours);
        script.run(std::string("reset 1000; ") + one.before);
        settle();
        EXPECT_EQ(focus(one.control, one.happens), one.then) << one.control << " " << one.before;
    }
    script.run("buy 1");
    settle();
    item("simFlat")->forceActiveFocus();
    EXPECT_EQ(focus("panelClose", "sell 1"), "panelClose") << "by a person's own wish, while the other one goes";
}

TEST_F(ShownSimPanel, AHeldKeyTogglesOnce) {
    load(
        "CheckField { objectName: \"box\"; text: \"box\" }"
        "SettingToggle { settings: top.settings; part: ({ name: \"switch\", title: \"switch\" }) }");
    for (const char* name : {"box", "control switch"}) {
        const QSignalSpy toggled(item(name), SIGNAL(toggled()));
        focus(name, "press");
        for (int i = 0; i < 3; ++i) space(true);
        EXPECT_EQ(toggled.count(), 1) << name;
    }
    item("box")->forceActiveFocus();

    // as X11 tells of it, before Qt has seen the press that follows a release
    const HeldKeys heldKeys(*qGuiApp);
    for (const std::uint64_t at : {1000, 2000}) {
        for (std::uint64_t i = 0; i < 4; ++i) space(false, at + 40 * i);
        EXPECT_EQ(item("box")->property("checked").toBool(), at == 2000);
    }
}

TEST_F(ShownSimPanel, TheSettingsAskBeforeTheAccountStartsAnew) {
    int resets = 0;
    SettingsViewModel::Actions actions;
    actions.resetAccount = [&] { ++resets; };
    actions.accountQuestion = [this] { return simResetQuestion(engine, 25000); };
    settings.setActions(std::move(actions));
    load(
        "SettingAction { width: 280; settings: top.settings; action: \"resetAccount\"; title: \"Reset Account\";"
        "onCarriedOut: settings.resetAccount() }");
    QSignalSpy entered(item("action resetAccount"), SIGNAL(entered()));
    script.run("buy 1; buy 1 limit=90");
    EXPECT_EQ(focus("press", "press"), "stay");
    EXPECT_TRUE(QTest::qWaitFor([&] { return entered.count() == 2; })) << "higher, it comes into view anew";
    EXPECT_EQ(item("question")->property("text").toString().toStdString(),
              "Start again with 25,000.00? Lost for good: 1 open position, 1 working order, 1 fill.");
    EXPECT_GE(item("action resetAccount")->implicitHeight(), item("stay")->mapToScene({0, 28}).y());
    EXPECT_EQ(resets, 0);
    focus("yes", "press");
    EXPECT_EQ(resets, 1);
}

TEST(EquityArt, TheCurveAndItsDrawdownLieWhereThePlotSays) {
    // up to 2, down to -1, up to 3: the new high is reached three quarters of the way
    const std::vector<SimCurvePoint> curve{{.result = 0}, {.result = 2}, {.result = -1, .drawdown = 3}, {.result = 3}};
    std::vector<ArtVertex> out;
    makeEquityArt(simCurvePlot(curve), 300, 100, {10, 20, 30}, {200, 100, 0}, out);
    double lowest = 0, shadeLeft = 300, shadeRight = 0, shadeTop = 100, shadeBottom = 0;
    for (const ArtVertex& one : out) {
        EXPECT_LE(one.red, one.opacity) << "multiplied";
        lowest = std::max(lowest, static_cast<double>(one.y));
        if (one.red <= one.blue || one.opacity == 255) continue;
        shadeLeft = std::min<double>(shadeLeft, one.x);
        shadeRight = std::max<double>(shadeRight, one.x);
        shadeTop = std::min<double>(shadeTop, one.y);
        shadeBottom = std::max<double>(shadeBottom, one.y);
    }
    EXPECT_NEAR(shadeLeft, 100, 1e-4);
    EXPECT_NEAR(shadeRight, 275, 1e-4);
    EXPECT_NEAR(shadeTop, 25, 1e-4);
    EXPECT_NEAR(shadeBottom, 100, 1e-4);
    EXPECT_NEAR(lowest, 101.5, 2.5);
    EXPECT_EQ(out.back().blue, 0) << "feathered at its edge";
    makeEquityArt(simCurvePlot({curve[0]}), 300, 100, {}, {}, out);
    EXPECT_TRUE(out.empty());
}

}  // namespace
}  // namespace vmr::test
