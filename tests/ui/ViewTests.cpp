// The shell's views: banners, panels, the menu and the form, by pointer and by keys.
#include <gtest/gtest.h>

#include <QQmlComponent>
#include <QSignalSpy>
#include <QTest>
#include <QTime>

#include "services/cloud/Announcements.h"
#include "services/cloud/UpdateChecker.h"
#include "support/pane/FakeHttpClient.h"
#include "support/time/TestTime.h"
#include "ui/UiWindow.h"
#include "ui/gpu/FrameItem.h"
#include "ui/shell/ShellViewModel.h"

namespace vmr::test {
namespace {

TEST(Views, BannersComeAndAreDismissedByKeyboard) {
    UiWindow ui(QSize(720, 480), UiWindow::entered(), syntheticBars(200));
    ASSERT_NE(ui.window, nullptr);
    TestTime time;
    TestQueue main(time);
    FakeHttpClient http(main);
    MemoryPreferences preferences;
    FirebaseRESTAuth auth({}, http, preferences, time);
    Announcements announcements(auth, preferences, main);
    UpdateChecker updates(http, "https://d.test", 1, main);
    QStringList opened;
    ui.service.follow(announcements, updates, [&opened](const QString& url) { opened << url; });
    const auto shown = [&ui](const char* name) { return ui.item(name)->isVisible(); };
    const auto button = [&ui](const char* banner, const char* name) {
        return ui.item(banner)->findChild<QQuickItem*>(QLatin1String(name));
    };
    const auto press = [&](const char* banner, const char* name, Qt::Key key) {
        button(banner, name)->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(ui.window, key);
    };
    EXPECT_FALSE(shown("alertBanner") || shown("maintenanceBanner") || shown("updateBanner"));

    announcements.announcement = Announcements::Alert{"n1", "Title", std::string(400, 'm')};
    announcements.maintenance = "Soon";
    updates.available = UpdateChecker::Info{"9.9", 9, "http://d.test/get", ""};
    ui.settle();
    EXPECT_TRUE(shown("alertBanner") && shown("maintenanceBanner") && shown("updateBanner"));
    EXPECT_FALSE(button("updateBanner", "bannerAction")->isVisible()) << "no address but https: is opened";
    EXPECT_GE(ui.item("alertBanner")->y(), ui.item("maintenanceBanner")->y() + ui.item("maintenanceBanner")->height());
    updates.available = UpdateChecker::Info{"9.9", 9, "https://d.test/get", ""};
    press("updateBanner", "bannerAction", Qt::Key_Space);
    EXPECT_EQ(opened, QStringList{"https://d.test/get"});

    press("alertBanner", "bannerClose", Qt::Key_Return);
    press("maintenanceBanner", "bannerClose", Qt::Key_Space);
    press("updateBanner", "bannerClose", Qt::Key_Enter);
    EXPECT_FALSE(shown("alertBanner") || shown("maintenanceBanner") || shown("updateBanner"));
    EXPECT_EQ(preferences.get("dismissed_alert_n1"), "true");
    announcements.maintenance = "Now";
    EXPECT_TRUE(shown("maintenanceBanner")) << "another text";
    updates.available = UpdateChecker::Info{"9.9", 10, "https://d.test/get", ""};
    EXPECT_FALSE(shown("updateBanner")) << "the same text";
}

TEST(Views, TheTemplatesPanelTellsWhatHappenedAheadOfAnyHint) {
    UiWindow ui(QSize(300, 480), UiWindow::entered(), syntheticBars(200));
    ASSERT_NE(ui.window, nullptr);
    ui.view.panels.setTemplatesPanelOpen(true);
    ASSERT_TRUE(runUntil([&] { return ui.item("templateStatus") != nullptr; }));
    const TemplatesViewModel::State empty{.pair = "NQ_QQQ", .known = true};
    const auto with = [](TemplatesViewModel::State state, const char* status, bool failed) {
        state.status = status;
        state.failed = failed;
        return state;
    };
    TemplatesViewModel::State asking{.pair = "NQ_QQQ", .loading = true}, saving = with(empty, "No room", true);
    saving.busy = true;
    const char* const hint = "Save keeps this chart's settings and view.";
    const struct {
        TemplatesViewModel::State state;
        const char* shown;
        bool sign;
    } cases[] = {{{}, "Open a chart to keep templates of it.", false},
                 {asking, "Loading…", false},
                 {with(asking, "Saved to slot 2 (now preferred).", false), "Saved to slot 2 (now preferred).", false},
                 {empty, hint, false},
                 {with(empty, "No room", true), "No room", true},
                 {saving, "Saving…", false},
                 {with(empty, "Applied slot 1.", false), "Applied slot 1.", false},
                 {with({.pair = "NQ_QQQ"}, "No room", true), "No room", true}};
    const auto* status = ui.item("templateStatus");
    for (const auto& [state, shown, sign] : cases) {
        ui.view.templates.set(state);
        EXPECT_EQ(status->property("text").toString(), shown);
        EXPECT_EQ(ui.item("templateSign")->isVisible(), sign) << shown;
    }
    ASSERT_TRUE(ui.item("templatesAgain")->isVisible());
    ui.settle();
    EXPECT_LE(status->y() + status->height(), ui.item("templatesAgain")->y()) << "a narrow panel has it above";
    EXPECT_EQ(status->x() + status->width(), status->parentItem()->width());
}

TEST(Views, TheMenuHasWhatTheProgramCanDo) {
    UiWindow ui(QSize(720, 480), UiWindow::entered(), syntheticBars(200));
    EXPECT_EQ(ui.item("menuButton"), nullptr) << "without a shell";
    ShellViewModel shell;
    QStringList done;
    bool room = false;
    ui.window->setProperty("shell", QVariant::fromValue(&shell));
    ASSERT_TRUE(runUntil([&] { return ui.item("menuButton") != nullptr; }));
    const auto* menu = ui.item("menuButton")->findChild<QObject*>("appMenu");
    const auto rows = [&] {
        QStringList values;
        for (const QVariant& row : menu->property("shownRows").toList())
            if (row.toMap().contains("value")) values << row.toMap()["value"].toString();
        return values.join(' ');
    };
    EXPECT_EQ(rows(), "showChartKey showKeys showAbout quit");
    shell.setHooks({[&] { return done << "window", room; },
                    [&](const ShellViewModel::Tell& tell) { tell("T", "text"); }, [&] { done << "quit"; },
                    [&] { done << "leave"; }});
    EXPECT_EQ(rows(), "newWindow showChartKey showKeys checkForUpdates showAbout leavePractice quit");

    const auto choose = [&](int down) {
        ui.item("menuButton")->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(ui.window, Qt::Key_Return);
        EXPECT_TRUE(runUntil([&] { return menu->property("opened").toBool(); }));
        for (int i = 0; i < down; ++i) QTest::keyClick(ui.window, Qt::Key_Down);
        QTest::keyClick(ui.window, Qt::Key_Return);
        EXPECT_TRUE(runUntil([&] { return !menu->property("visible").toBool(); }));
    };
    const auto sheetOpens = [&](const char* name) {
        const auto* sheet = ui.window->findChild<QObject*>(QLatin1String(name));
        const bool opened = runUntil([&] { return sheet->property("opened").toBool(); }, 2000);
        QTest::keyClick(ui.window, Qt::Key_Escape);
        return opened && runUntil([&] { return !sheet->property("visible").toBool(); }, 2000) &&
               shell.sheet() == ShellViewModel::Sheet::none;
    };
    const auto keyboardIsBack = [&] { return ui.item("menuButton")->hasActiveFocus(); };
    choose(1);
    choose(6);
    choose(7);
    EXPECT_EQ(done, (QStringList{"window", "leave", "quit"}));
    for (const auto& [down, sheet] :
         {std::pair(2, "keysSheet"), {3, "keysSheet"}, {4, "messageSheet"}, {5, "aboutSheet"}, {5, "aboutSheet"}}) {
        choose(down);
        EXPECT_TRUE(sheetOpens(sheet)) << sheet;
        EXPECT_TRUE(runUntil(keyboardIsBack, 2000)) << "after " << sheet;
    }
    EXPECT_EQ(shell.messageTitle() + shell.messageText(), "Ttext");
    ui.window->setProperty("shell", QVariant::fromValue<ShellViewModel*>(nullptr));
}

TEST(Views, TheKeyToTheChartDrawsItsSamplesOnlyWhileItIsLookedAt) {
    UiWindow ui(QSize(720, 480), UiWindow::entered(), syntheticBars(200));
    ShellViewModel shell;
    ui.window->setProperty("shell", QVariant::fromValue(&shell));
    ASSERT_TRUE(runUntil([&] { return ui.item("menuButton") != nullptr; }));
    const auto samples = [&] { return ui.window->findChild<FrameItem*>("markSamples"); };
    EXPECT_EQ(samples(), nullptr);
    shell.showChartKey();
    ASSERT_TRUE(runUntil([&] { return samples() && samples()->framesDrawn() > 0; }));
    ASSERT_TRUE(ui.settle());
    const auto drawn = samples()->framesDrawn();
    EXPECT_LE(drawn, 2U) << "another one where a glyph is new";
    runFor(300);
    EXPECT_EQ(samples()->framesDrawn(), drawn);
    QTest::keyClick(ui.window, Qt::Key_PageDown);
    EXPECT_TRUE(runUntil([&] { return samples()->framesDrawn() > drawn; }));
    QTest::keyClick(ui.window, Qt::Key_Right);
    EXPECT_EQ(shell.keyTab(), ShellViewModel::KeyTab::keys);
    EXPECT_TRUE(runUntil([&] { return samples() == nullptr; }));
    QTest::keyClick(ui.window, Qt::Key_Left);
    EXPECT_TRUE(runUntil([&] { return samples() && samples()->framesDrawn() > 0; }));
    QTest::keyClick(ui.window, Qt::Key_Escape);
    EXPECT_TRUE(runUntil([&] { return samples() == nullptr; }));
    EXPECT_EQ(shell.sheet(), ShellViewModel::Sheet::none);
    ui.window->setProperty("shell", QVariant::fromValue<ShellViewModel*>(nullptr));
}

TEST(Views, ANumberGlidesWithTheFramesAndRests) {
    UiWindow ui(QSize(400, 300), UiWindow::entered());
    QQmlEngine& engine = *qmlEngine(ui.item("chartPane"));
    QQmlComponent component(&engine);
    component.setData("import Velmora\nTweenNumber { target: 10; format: value => value.toFixed(1) }", {});
    const std::unique_ptr<QObject> made(component.create());
    auto* number = qobject_cast<QQuickItem*>(made.get());
    ASSERT_NE(number, nullptr) << component.errorString().toStdString();
    const auto text = [&] { return number->property("text").toString(); };
    number->setParentItem(ui.window->contentItem());
    EXPECT_EQ(text(), "10.0") << "the first at once";
    const double width = number->implicitWidth();
    EXPECT_GT(width, 20);
    number->setProperty("target", 20);
    EXPECT_EQ(text(), "10.0");
    ASSERT_TRUE(runUntil([&] { return text() == "20.0"; }));
    EXPECT_TRUE(ui.settle()) << "at rest no frame is drawn";
    EXPECT_EQ(number->implicitWidth(), width) << "a 1 is as wide as a 2";
    number->setProperty("coarse", true);
    const QSignalSpy texts(number, SIGNAL(textChanged()));
    for (const double near : {20.04, 21.5, 20.0}) number->setProperty("target", near);
    EXPECT_TRUE(ui.settle());
    EXPECT_EQ(texts.count(), 2) << "one of the same text, two near ones at once";
    number->setProperty("target", 40);
    ASSERT_TRUE(runUntil([&] { return text() == "40.0"; }));
    EXPECT_GT(texts.count(), 4) << "it glides";
    EXPECT_TRUE(ui.settle());
    number->setProperty("target", 20);
    number->setVisible(false);
    number->setProperty("target", 30);
    EXPECT_EQ(text(), "30.0");
}

TEST(Views, PressureTellsOfWhatReadsOtherwise) {
    const double nan = std::nan("");
    struct Case {
        double call, put, strikeCall, strikePut;
        int readouts;
        QStringList news;  // of the strike
    };
    const std::vector<Case> cases = {
        {2'000'000, -2'000'000, 5000, -400, 1, {}},         {2'000'900, -2'000'100, 5400, -400.2, 0, {}},
        {2'000'900, -2'000'100, 5700, -400.4, 0, {"call"}},  // by small steps that add up
        {2'000'900, -2'000'100, 5700, nan, 0, {"put"}},     {2'900'000, -2'000'100, 7000, 3, 1, {"call", "put"}},
    };
    HfPressureViewModel model;
    HfpSample one;
    HfPressure::Samples samples;
    model.setSource([&](HfPressure::Samples& out) { out = samples; });
    const QSignalSpy readouts(&model, &HfPressureViewModel::readoutsChanged),
        told(model.ladder(), &QAbstractItemModel::dataChanged);
    int expected = 0;
    for (const Case& c : cases) {
        const auto i = static_cast<std::size_t>(&c - cases.data());
        const auto heard = told.count();
        one = {static_cast<double>(i), c.call, c.put, {{600, c.strikeCall, c.strikePut}}, {600}};
        samples = {&one};
        model.samplesMoved();
        model.set({.open = true, .count = i + 1, .last = one.t});
        expected += c.readouts;
        EXPECT_EQ(readouts.count(), expected) << i;
        EXPECT_EQ(told.count() - heard, c.news.isEmpty() ? 0 : 1) << i;
        if (c.news.isEmpty() || told.count() == heard) continue;
        QStringList names;
        for (const int role : told.last()[2].value<QList<int>>()) names << QString(model.ladder()->roleNames()[role]);
        EXPECT_EQ(names, c.news) << i;
    }
    EXPECT_EQ(model.call(), 2'900'000);
}

TEST(Views, SignInByKeyboardAlone) {
    UiWindow ui(QSize(1000, 580), {});
    ASSERT_NE(ui.window, nullptr);
    QStringList calls;
    SessionViewModel::Actions actions;
    actions.signIn = [&](const QString& email, const QString& password, bool remember) {
        calls.push_back(email + '|' + password + (remember ? "|remember" : ""));
    };
    actions.cancelSignIn = [&] { calls.push_back("cancel"); };
    ui.view.session.setActions(actions);
    ASSERT_TRUE(runUntil([&] { return ui.window->activeFocusItem() != nullptr; }));
    const auto type = [&](const char* text) {
        for (; *text; ++text) QTest::keyClick(ui.window, *text);
    };
    const auto press = [&](Qt::Key key) { QTest::keyClick(ui.window, key); };
    type("ann@example.com");
    press(Qt::Key_Return);
    EXPECT_TRUE(calls.empty()) << "nothing is sent without a password";
    EXPECT_TRUE(ui.item("password")->hasActiveFocus());
    type("s3 cret");
    const auto* field = ui.item("password")->property("field").value<QQuickItem*>();
    const auto hidden = [&] { return field->property("displayText").toString() != "s3 cret"; };
    EXPECT_TRUE(hidden());
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    EXPECT_FALSE(hidden()) << "shown on demand";
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_EQ(calls, QStringList{"ann@example.com|s3 cret"}) << "not to be remembered";

    auto fields = ui.view.session.state();
    const auto set = [&](bool signingIn, const char* error) {
        fields.signingIn = signingIn;
        fields.authError = error;
        ui.view.session.set(fields);
    };
    set(true, "");
    press(Qt::Key_Return);
    EXPECT_EQ(calls.size(), 1) << "nor is it given up by the key that began it";
    press(Qt::Key_Escape);
    EXPECT_EQ(calls.takeLast(), "cancel");
    set(false, "");
    EXPECT_TRUE(ui.item("password")->hasActiveFocus());
    press(Qt::Key_Escape);
    set(true, "");
    ui.item("cancel")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Enter);
    EXPECT_EQ(calls.takeLast(), "cancel");
    EXPECT_EQ(calls.size(), 1);
    set(false, "Auth error (400): INVALID_PASSWORD");
    EXPECT_EQ(ui.item("error")->property("text").toString(), fields.authError);
    press(Qt::Key_Enter);
    EXPECT_EQ(calls.size(), 2) << "ready for another try";

    const auto capsLock = [&] { return ui.item("capsLock")->isVisible(); };
    EXPECT_FALSE(capsLock());
    QTest::sendKeyEvent(QTest::Click, ui.window, Qt::Key_A, QString("A"), Qt::NoModifier);
    EXPECT_TRUE(capsLock());
    QTest::sendKeyEvent(QTest::Click, ui.window, Qt::Key_A, QString("A"), Qt::ShiftModifier);
    EXPECT_FALSE(capsLock());
    QTest::sendKeyEvent(QTest::Click, ui.window, Qt::Key_A, QString("a"), Qt::ShiftModifier);
    QTest::sendKeyEvent(QTest::Click, ui.window, Qt::Key_1, QString("1"), Qt::NoModifier);
    EXPECT_TRUE(capsLock()) << "a digit tells nothing";
}

TEST(Views, TheFormStartsFromTheLastAddressAndOffersPracticeWhereThereIsOne) {
    SessionViewModel::Actions actions;
    actions.lastEmail = [] { return QString("last@example.com"); };
    int started = 0;
    UiWindow ui(QSize(1000, 580), UiWindow::entered());
    ui.view.session.setActions(actions);
    ui.view.session.set({.setupProblem = "no relay"});
    ASSERT_TRUE(runUntil([&] { return ui.item("loginView") != nullptr; }));
    EXPECT_EQ(ui.item("email")->property("text"), "last@example.com");
    EXPECT_FALSE(ui.item("practice")->isVisible());
    ui.view.session.setOnPractice([&] { ++started; });
    EXPECT_TRUE(ui.item("practice")->isVisible());
    EXPECT_TRUE(runUntil([&] { return ui.item("practice")->hasActiveFocus(); }, 2000)) << "nothing else can be done";
    QTest::keyClick(ui.window, Qt::Key_Return);
    EXPECT_EQ(started, 1) << "though nobody can sign in";
    ui.view.session.set({});
    EXPECT_TRUE(runUntil([&] { return ui.item("password")->hasActiveFocus(); })) << "where something is missing";
}

TEST(Views, ARefusedConfigurationIsShownInBothStages) {
    UiWindow ui(QSize(1000, 580), {.setupProblem = "The relay's address is refused."});
    for (const bool entered : {false, true}) {
        auto fields = ui.view.session.state();
        fields.entered = entered;
        ui.view.session.set(fields);
        const char* const stage = entered ? "paneArea" : "loginView";
        ASSERT_TRUE(runUntil([&] { return ui.item(stage) != nullptr; }));
        const auto* notice = ui.item(stage)->findChild<QQuickItem*>("setupNotice");
        ASSERT_NE(notice, nullptr) << stage;
        EXPECT_TRUE(notice->isVisible()) << stage;
        EXPECT_EQ(notice->property("text").toString(), fields.setupProblem) << stage;
    }
}

}  // namespace
}  // namespace vmr::test
