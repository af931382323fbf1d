// The login form and the toolbar: nothing cut off, nothing on top of another, keys that work.
#include <gtest/gtest.h>

#include <QTest>
#include <string>
#include <vector>

#include "ui/UiWindow.h"

namespace vmr::test {
namespace {

std::string nameOf(const QQuickItem* item) {
    return std::string(item->metaObject()->className()) + " " + item->objectName().toStdString() + " \"" +
           item->property("text").toString().toStdString() + "\"";
}

QRectF sceneRect(const QQuickItem* item) { return item->mapRectToScene(QRectF(0, 0, item->width(), item->height())); }

void collect(QQuickItem* item, std::vector<QQuickItem*>& out) {
    if (!item->isVisible() || item->opacity() == 0) return;
    if (item->width() > 0 && item->height() > 0) out.push_back(item);
    for (auto* child : item->childItems()) collect(child, out);
}

// Texts are where they say: inside the window and inside their own parent, whole, and not over each other.
void expectTidy(UiWindow& ui) {
    std::vector<QQuickItem*> items;
    collect(ui.window->contentItem(), items);
    const QRectF whole(QPointF(), ui.window->size());
    std::vector<QQuickItem*> texts;
    for (auto* item : items) {
        EXPECT_TRUE(whole.adjusted(-0.5, -0.5, 0.5, 0.5).contains(sceneRect(item)))
            << nameOf(item) << " leaves the window";
        if (!item->inherits("QQuickText") || item->property("text").toString().isEmpty()) continue;
        texts.push_back(item);
        EXPECT_FALSE(item->property("truncated").toBool()) << nameOf(item) << " is cut off";
        EXPECT_LE(item->property("contentWidth").toDouble(), item->width() + 0.5) << nameOf(item);
        EXPECT_LE(item->property("contentHeight").toDouble(), item->height() + 0.5) << nameOf(item);
    }
    for (std::size_t i = 0; i < texts.size(); ++i) {
        for (std::size_t j = i + 1; j < texts.size(); ++j) {
            const QRectF shared = sceneRect(texts[i]).intersected(sceneRect(texts[j]));
            EXPECT_TRUE(shared.width() < 1 || shared.height() < 1) << nameOf(texts[i]) << " meets " << nameOf(texts[j]);
        }
    }
    EXPECT_GE(texts.size(), 2U);
}

TEST(Views, NothingIsCutOffOrOverlapsInASmallWindow) {
    PaneViewModel::Fields login, setup, error, busy, limited = UiWindow::entered(), away = UiWindow::entered();
    setup.setupProblem =
        "No data relay is configured. Set VMR_RELAY_URL to its address, or start Velmora with --practice.";
    error.signInHint = "Practice account: practice-trader@velmora.test\nPassword: practice";
    error.authError = "Auth error (400): TOO_MANY_ATTEMPTS_TRY_LATER, try again in a few minutes";
    busy.signingIn = true;
    limited.connLimited = true;
    limited.connected = false;
    away.connected = false;
    away.symbol = "GOOGL";
    away.timeframe = 60;
    away.status = "Disconnected (reconnecting…)";
    const std::vector<std::pair<const char*, PaneViewModel::Fields>> stages{
        {"login", login}, {"setup", setup},    {"error", error}, {"busy", busy}, {"entered", UiWindow::entered()},
        {"away", away},   {"limited", limited}};
    for (const auto& [name, fields] : stages) {
        SCOPED_TRACE(name);
        UiWindow ui(QSize(800, 500), fields);
        ASSERT_NE(ui.window, nullptr);
        ASSERT_TRUE(ui.settle());
        expectTidy(ui);
    }
}

void type(QWindow& window, const char* text) {
    for (; *text; ++text) QTest::keyClick(&window, *text);
}

TEST(Views, SignInByKeyboardAlone) {
    UiWindow ui(QSize(1000, 580), {});
    ASSERT_NE(ui.window, nullptr);
    QStringList calls;
    PaneViewModel::Actions actions;
    actions.signIn = [&](const QString& email, const QString& password, bool remember) {
        calls.push_back(email + '|' + password + (remember ? "|remember" : ""));
    };
    ui.view.setActions(actions);
    ui.window->requestActivate();
    ASSERT_TRUE(runUntil([&] { return ui.window->activeFocusItem() != nullptr; }));

    const auto focused = [&](const char* name) { return ui.item(name)->hasActiveFocus(); };
    EXPECT_TRUE(focused("email"));
    QTest::keyClick(ui.window, Qt::Key_Return);
    type(*ui.window, "ann@example.com");
    QTest::keyClick(ui.window, Qt::Key_Return);
    EXPECT_TRUE(calls.empty()) << "nothing is sent without an address or a password";
    EXPECT_TRUE(focused("password"));
    type(*ui.window, "s3 cret");
    QTest::keyClick(ui.window, Qt::Key_Tab);
    EXPECT_TRUE(focused("remember"));
    QTest::keyClick(ui.window, Qt::Key_Space);
    QTest::keyClick(ui.window, Qt::Key_Backtab);
    EXPECT_TRUE(focused("password"));
    QTest::keyClick(ui.window, Qt::Key_Return);
    EXPECT_EQ(calls, QStringList{"ann@example.com|s3 cret"});

    auto fields = ui.view.fields();
    fields.signingIn = true;
    ui.view.setFields(fields);
    EXPECT_EQ(ui.item("submit")->property("text").toString(), "Connecting…");
    QTest::keyClick(ui.window, Qt::Key_Return);
    EXPECT_EQ(calls.size(), 1);

    fields.signingIn = false;
    fields.authError = "Auth error (400): INVALID_PASSWORD";
    ui.view.setFields(fields);
    EXPECT_EQ(ui.item("error")->property("text").toString(), fields.authError);
    EXPECT_TRUE(focused("password")) << "ready for another try";
    QTest::keyClick(ui.window, Qt::Key_Enter);
    EXPECT_EQ(calls.size(), 2);
}

TEST(Views, ToolbarMenusChoose) {
    UiWindow ui(QSize(800, 500), UiWindow::entered());
    ASSERT_NE(ui.window, nullptr);
    QStringList symbols;
    std::vector<int> frames;
    bool out = false;
    PaneViewModel::Actions actions;
    actions.switchSymbol = [&](const QString& symbol) { symbols.push_back(symbol); };
    actions.setTimeframe = [&](int minutes) { frames.push_back(minutes); };
    actions.signOut = [&] { out = true; };
    ui.view.setActions(actions);
    ASSERT_TRUE(ui.settle());
    const auto click = [&](const char* name) {
        auto* item = ui.item(name);
        QTest::mouseClick(ui.window, Qt::LeftButton, {}, sceneRect(item).center().toPoint());
        ui.settle();
    };

    click("symbolChoice");
    std::vector<QQuickItem*> items;
    collect(ui.window->contentItem(), items);
    int rows = 0;
    for (auto* item : items) {
        if (item->property("heading").isValid()) ++rows;
        if (item->inherits("QQuickPopupItem")) {
            EXPECT_TRUE(QRectF(QPointF(), ui.window->size()).contains(sceneRect(item))) << "the menu leaves the window";
        }
    }
    EXPECT_EQ(rows, 15) << "six futures and seven stocks below their headings";
    for (int i = 0; i < 6; ++i) QTest::keyClick(ui.window, Qt::Key_Down);  // past the heading of the stocks
    QTest::keyClick(ui.window, Qt::Key_Return);
    EXPECT_EQ(symbols, QStringList{"AAPL"});

    click("timeframeChoice");
    for (int i = 0; i < 9; ++i) QTest::keyClick(ui.window, Qt::Key_Down);  // stays on the last one
    QTest::keyClick(ui.window, Qt::Key_Return);
    EXPECT_EQ(frames, std::vector<int>{60});
    click("signOut");
    EXPECT_TRUE(out);
}

}  // namespace
}  // namespace vmr::test
