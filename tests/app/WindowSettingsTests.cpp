// The settings panel in the running program: every setting changed by the pointer and by keys, what the chart and the
// file make of it, and how the panel lies in its window.
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QPainter>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

#include "base/FileReplace.h"
#include "store/SettingTable.h"
#include "tests/app/WindowScript.h"
#include "ui/platform/WindowPicture.h"
#include "workspace/SettingsEditor.h"
#include "workspace/SettingsLayout.h"

namespace vmr {
namespace {

using nlohmann::json;

// All others have a look in the chart of a market that stands still, on both sides of the panel.
const std::set<std::string_view> unseen{"hfScale", "simEnabled", "simBalance", "simCommission"};
constexpr int toolbarHeight = 44;

class SettingsScript {
 public:
    explicit SettingsScript(test::WindowRun& run) : run_(run) {}

    AppModel& pane() { return run_.pane(); }
    QQuickWindow* window() const { return qobject_cast<QQuickWindow*>(QGuiApplication::topLevelWindows().value(0)); }
    /// The item of that name that is shown, below `in` where that is given.
    QQuickItem* item(const std::string& name, const QQuickItem* in = nullptr) const {
        QQuickItem* found = test::shownItem(QString::fromStdString(name), in ? in : window()->contentItem());
        EXPECT_TRUE(found) << name;
        return found;
    }
    static std::string nameOf(const QQuickItem* item) { return item ? item->objectName().toStdString() : ""; }
    QQuickItem* control(const Setting& setting) const {
        const bool field = setting.control == SettingControl::field;
        return item((field ? "field " : "control ") + std::string(setting.name));
    }
    std::string focus() const { return nameOf(window()->activeFocusItem()); }
    QQuickItem* panel() const { return item("configPanel"); }

    void open(int width, int height, double left, double panelWidth) {
        window()->setMinimumSize(QSize(1, 1));
        window()->resize(width, height);
        pane().panels.configPanelOpen = true;
        QTest::qWait(150);
        QMetaObject::invokeMethod(panel(), "moveTo", Q_ARG(QVariant, left), Q_ARG(QVariant, 8));
        QMetaObject::invokeMethod(panel(), "resizeTo", Q_ARG(QVariant, panelWidth), Q_ARG(QVariant, height));
        QTest::qWait(50);
    }

    /// Scrolls the panel there.
    void reveal(QQuickItem* control) {
        QMetaObject::invokeMethod(item("settingsView"), "reveal", Q_ARG(QVariant, QVariant::fromValue(control)));
    }
    static QPoint at(const QQuickItem* item, double x = 0.5, double y = 0.5) {
        return item->mapToScene({item->width() * x, item->height() * y}).toPoint();
    }
    void click(const QQuickItem* item, double x = 0.5) {
        QTest::mouseMove(window(), at(item, x));
        QTest::mouseClick(window(), Qt::LeftButton, {}, at(item, x));
        QTest::qWait(1);
    }
    void drag(const QQuickItem* item, double from, double to, int moves = 8) {
        QTest::mousePress(window(), Qt::LeftButton, {}, at(item, from));
        for (int i = 1; i <= moves; ++i) {
            QTest::mouseMove(window(), at(item, from + (to - from) * i / moves));
            QTest::qWait(16);
        }
        QTest::mouseRelease(window(), Qt::LeftButton, {}, at(item, to));
    }
    void key(Qt::Key code, Qt::KeyboardModifiers with = {}) {
        QTest::keyClick(window(), code, with);
        QTest::qWait(1);
    }
    void type(const char* text) {
        for (; *text; ++text) QTest::keyClick(window(), *text);
        QTest::qWait(1);
    }

    /// The settings and the panel in the state document as of now.
    json state() {
        const std::string file = (run_.start->paths().config / "state.json").string();
        EXPECT_EQ(run_.program->writeState(file), std::nullopt);
        return json::parse(readFile(file).value_or(""))["panes"][0];
    }
    /// The settings that stand there otherwise than in `before`.
    std::set<std::string> changesFrom(const GexConfig& before) {
        const json now = state()["config"], then = json::parse(before.toJson());
        std::set<std::string> out;
        for (const auto& [name, value] : now.items())
            if (then[name] != value) out.insert(name);
        return out;
    }
    /// Differs when the preferences have been written since.
    std::filesystem::file_time_type writes() const {
        return std::filesystem::last_write_time(run_.start->paths().config / "preferences.json");
    }
    /// The chart on both sides of the panel.
    QImage chart() {
        QTest::qWait(30);
        QImage picture = windowPicture(*window());
        QPainter painter(&picture);
        painter.fillRect(panel()->mapRectToScene(panel()->boundingRect()).toAlignedRect(), Qt::black);
        painter.fillRect(0, 0, picture.width(), toolbarHeight, Qt::black);  // its icons tell of some settings
        return picture;
    }

 private:
    test::WindowRun& run_;
};

const char* typedFor(const Setting& setting) {
    if (setting.unit == SettingUnit::time) return "9:30";
    return setting.name == "simBalance" ? "1234.5" : "1.5";
}

// Each gives another value than the setting's.
void changeByPointer(SettingsScript& script, const Setting& setting, QQuickItem* control) {
    switch (setting.control) {
        case SettingControl::toggle:
            return script.click(control);
        case SettingControl::slider:
        case SettingControl::logSlider:
            return script.drag(script.item("track", control), 0.5, 0.7);
        case SettingControl::stepper:
            return script.click(script.item("more", control));
        case SettingControl::menu: {
            const std::string other(setting.choices[setting.name == "initialCandles" ? 5 : 0].value);
            const bool first = control->property("selection").toString().toStdString() == other;
            script.click(control);
            QTest::qWait(20);
            const std::string row = "row " + std::string(first ? setting.choices[1].value : other);
            return script.click(script.item(row));
        }
        case SettingControl::color:
            script.click(control);
            QTest::qWait(20);
            script.click(script.item("swatch #b388ff"));
            return script.key(Qt::Key_Escape);
        case SettingControl::field:
        case SettingControl::none:
            break;
    }
    script.click(control);  // types over what stands there
    script.key(Qt::Key_A, Qt::ControlModifier);
    script.type(typedFor(setting));
    script.key(Qt::Key_Return);
}

// Two keys at the most, or a text.
void changeByKeys(SettingsScript& script, const Setting& setting) {
    switch (setting.control) {
        case SettingControl::toggle:
            return script.key(Qt::Key_Space);
        case SettingControl::slider:
        case SettingControl::logSlider:
            return script.key(Qt::Key_Left, Qt::ShiftModifier);
        case SettingControl::stepper:
            return script.key(Qt::Key_Up);
        case SettingControl::menu:
            for (const auto code : {Qt::Key_Return, Qt::Key_Down, Qt::Key_Return}) script.key(code);
            return QTest::qWait(20);
        case SettingControl::color:
            for (const auto code : {Qt::Key_Return, Qt::Key_Left, Qt::Key_Down, Qt::Key_Escape}) script.key(code);
            return QTest::qWait(20);
        case SettingControl::field:
        case SettingControl::none:
            break;
    }
    script.type(typedFor(setting));
    script.key(Qt::Key_Return);
}

std::set<std::string> changedWith(const std::string& name) {
    if (name == "hfScale") return {name, "hfScaleBySymbol"};
    return {name};
}

GexConfig everythingOn() {
    GexConfig all;
    for (const Setting& one : settingTable())
        if (const auto* field = std::get_if<bool GexConfig::*>(&one.field)) all.** field = true;
    all.vixScale = 0.65;  // so that the line runs within the picture
    return all;
}

void pointAtEveryField(SettingsScript& script) {
    script.open(1960, 1000, 1000, 620);  // between the bars and the strikes at the edge
    const GexConfig all = everythingOn();
    QImage before;
    bool anew = true;  // the chart starts over, at another place
    for (const Setting& one : settingTable()) {
        if (one.control == SettingControl::none) continue;
        const std::string name(one.name);
        setSettings(script.pane(), all, AppModel::Saving::now);
        if (anew) {
            QTest::qWait(700);
            before = script.chart();
        }
        script.reveal(script.control(one));
        changeByPointer(script, one, script.control(one));
        EXPECT_EQ(script.changesFrom(all), changedWith(name));
        EXPECT_NE(script.chart() != before, unseen.contains(one.name)) << name;
        anew = name == "initialCandles" || name == "gexSource" || name == "oscEnabled" || name == "oscHeight" ||
               one.effects & SettingEffect::vixChannel;
    }
}

// In the order of the table, and back at the search in the end.
void tabThroughEveryField(SettingsScript& script) {
    script.pane().setConfig(GexConfig());
    script.click(script.item("settingsSearch"));
    script.key(Qt::Key_Tab);  // the keys
    for (const Setting& one : settingTable()) {
        if (one.control == SettingControl::none) continue;
        const std::string name(one.name);
        script.key(Qt::Key_Tab);
        ASSERT_EQ(script.focus(), script.nameOf(script.control(one)));
        const GexConfig before = script.pane().config;
        changeByKeys(script, one);
        EXPECT_EQ(script.changesFrom(before), changedWith(name));
        ASSERT_EQ(script.focus(), script.nameOf(script.control(one))) << "it stays where it was";
    }
}

void fitIntoEveryWidth(SettingsScript& script) {
    for (const auto& [width, height, panelWidth, columns] :
         {std::tuple(360, 700, 320.0, 1u), {720, 480, 620.0, 2u}, {1000, 700, 920.0, 3u}, {1280, 700, 1240.0, 4u}}) {
        script.open(width, height, 8, panelWidth);
        EXPECT_EQ(script.panel()->width(), panelWidth);
        EXPECT_EQ(script.state()["settingsPanel"]["columns"].size(), columns);
        for (const Setting& one : settingTable()) {
            if (one.control == SettingControl::none) continue;
            const QQuickItem* control = script.control(one);
            const QQuickItem* row = control->parentItem()->parentItem()->parentItem();
            const QQuickItem* label = script.item("label", row);
            const QRectF placed = row->mapRectFromItem(control, {{}, control->size()});
            EXPECT_FALSE(label->property("truncated").toBool()) << one.name << " " << panelWidth;
            EXPECT_TRUE(placed.left() >= label->x() + label->width() && placed.right() <= row->width())
                << one.name << " " << panelWidth << ": " << placed.left() << " to " << placed.right() << " of "
                << row->width();
        }
    }
}

json rowsShown(SettingsScript& script) {
    json out = json::array();
    const json panel = script.state()["settingsPanel"];
    for (const json& column : panel["columns"])
        for (const json& section : column) out.insert(out.end(), section["rows"].begin(), section["rows"].end());
    return out;
}

void typeSearchAndReset(SettingsScript& script) {
    script.open(1280, 900, 8, 1240);
    script.pane().setConfig(GexConfig());
    script.click(script.item("field sessionStart"));
    script.key(Qt::Key_A, Qt::ControlModifier);
    script.type("25:00");
    script.key(Qt::Key_Return);
    EXPECT_EQ(script.state()["settingsPanel"]["invalid"], json({"sessionStart"}));
    EXPECT_EQ(script.pane().config.get(), GexConfig());
    script.key(Qt::Key_Escape);
    EXPECT_EQ(script.state()["settingsPanel"]["invalid"], json::array());
    EXPECT_TRUE(script.panel()->isVisible()) << "the first Escape is the field's";

    script.click(script.item("settingsSearch"));
    script.type("dom op");
    EXPECT_EQ(rowsShown(script), json({"hfTriangleOpacity", "gexBubbleOpacity"}));
    script.drag(script.item("track", script.item("control hfTriangleOpacity")), 0.9, 0.3);
    EXPECT_NE(script.pane().config->hfTriangleOpacity, 100);
    const QQuickItem* label = script.item("label", script.item("setting hfTriangleOpacity"));
    QTest::mouseDClick(script.window(), Qt::LeftButton, {}, SettingsScript::at(label, 0.2));
    EXPECT_EQ(script.pane().config->hfTriangleOpacity, 100);
    script.click(script.item("settingsSearch"));
    script.key(Qt::Key_Escape);
    EXPECT_EQ(rowsShown(script).size(), settingsRows().size());

    GexConfig other;
    other.vixSmooth = 60;
    script.pane().setConfig(other);
    const QQuickItem* reset = script.item("action reset");
    for (const char* answer : {"stay", "yes"}) {
        script.click(script.item("press", reset));
        EXPECT_EQ(script.pane().config.get(), other) << "it asks";
        script.click(script.item(answer, reset));
    }
    EXPECT_EQ(script.pane().config.get(), GexConfig());
}

// Opacities of the bars: nothing of the series depends on them.
void dragOnce(SettingsScript& script) {
    const auto files = [&] { return script.writes(); };
    QTest::qWait(700);
    const auto written = files();
    const auto series = script.pane().overlays.revision();
    script.drag(script.item("track", script.item("control gexOpacity")), 0.1, 0.9, 90);
    const auto during = files();
    QTest::qWait(700);
    EXPECT_EQ(during, written) << "nothing is written while it lasts";
    EXPECT_NE(files(), written);
    EXPECT_EQ(script.pane().overlays.revision(), series);
}

TEST(WindowSettings, EveryFieldIsChangedByThePointerAndByKeysAndKept) {
    test::WindowRun run("2026-06-10T10:00:30");
    ASSERT_FALSE(run.start->failure()) << *run.start->failure();
    SettingsScript script(run);
    bool busy = false;
    GexConfig left;
    run.step(
        [&] { return run.streaming() && !run.pane().bars.vixCandles.empty() && !run.pane().overlays.hfByMin.empty(); },
        [&] {
            busy = true;
            QTest::qWait(500);
            run.start->steering().pause();
            fitIntoEveryWidth(script);
            pointAtEveryField(script);
            typeSearchAndReset(script);
            dragOnce(script);
            tabThroughEveryField(script);
            left = run.pane().config;
            busy = false;
        });
    run.step([&] { return !busy; }, [] {});
    EXPECT_EQ(run.run(100, [] {}), 0u);
    const auto stored = json::parse(readFile(run.start->paths().config / "preferences.json").value_or(""));
    EXPECT_EQ(GexConfig::fromJson(stored["gex-config"].get<std::string>()), left);
    EXPECT_NE(left, GexConfig());
}

}  // namespace
}  // namespace vmr
