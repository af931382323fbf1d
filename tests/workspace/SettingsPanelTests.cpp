// The settings panel without a toolkit: its columns, what is typed, what editing changes and when it is stored, and the
// file to take along.
#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>

#include "base/FileReplace.h"
#include "base/Json.h"
#include "store/ConfigIO.h"
#include "support/pane/TestPane.h"
#include "workspace/ActionTable.h"
#include "workspace/SettingsEditor.h"
#include "workspace/SettingsLayout.h"
#include "workspace/SettingsTransfer.h"
#include "workspace/WorkspaceStore.h"

namespace vmr::test {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

TEST(SettingsPanel, PacksItsSectionsIntoColumns) {
    using Counts = std::vector<std::size_t>;
    const std::pair<Counts, std::vector<double>> cases[] = {{{10}, {NAN, -5, 0, 320, 599.9}},
                                                            {{5, 5}, {600, 620, 899}},
                                                            {{4, 3, 3}, {900, 1199.9}},
                                                            {{3, 2, 2, 3}, {1200, 1240, 9000}}};
    for (const auto& [counts, widths] : cases)
        for (const double width : widths) {
            Counts found;
            int next = 0;
            for (const auto& column : pack(width)) {
                found.push_back(column.size());
                for (const SettingSection section : column) EXPECT_EQ(static_cast<int>(section), next++) << width;
            }
            EXPECT_EQ(found, counts) << width;
        }
}

// The rows' names, sections apart by "|" and columns by "||".
std::string layout(double width, std::string_view search) {
    std::string out;
    for (const auto& column : settingsColumns(width, search)) {
        out += out.empty() ? "" : " ||";
        bool first = true;
        for (const SettingsBlock& block : column) {
            if (!std::exchange(first, false)) out += " |";
            for (const SettingsRow* row : block.rows) out += (out.empty() ? "" : " ") + std::string(row->id);
        }
    }
    return out;
}

TEST(SettingsPanel, SearchesLabelsAndHeadings) {
    std::set<std::string_view> names;
    for (const SettingsRow& row : settingsRows())
        for (const Setting* one : row.parts) EXPECT_TRUE(names.insert(one->name).second) << one->name;
    EXPECT_EQ(names.size(), 60u) << "the scales by symbol are set by the scale's row; one is a preference";
    for (const SettingsRow& row : settingsRows())
        EXPECT_EQ(findAction(actionOf(row)) != nullptr, !actionOf(row).empty()) << row.id;
    EXPECT_EQ(actionOf(*findSettingsRow("levelsEnabled")), "lines");
    const std::pair<const char*, const char*> cases[] = {
        {"vix LINE", "vixEnabled || oscVix"},
        {"  hf dom\t", "hfBubbles hfCallColor hfTriangleOpacity"},
        {"ema", "ema1Enabled ema2Enabled"},
        {"reset", "resetAccount | reset"},
        {"nothing", ""},
    };
    for (const auto& [search, rows] : cases) EXPECT_EQ(layout(620, search), rows) << search;
}

TEST(SettingsPanel, ReadsWhatIsTyped) {
    // of each setting what it reads, with how it is shown then, and what it refuses
    const struct {
        const char* name;
        std::vector<std::tuple<const char*, double, const char*>> read;
        std::vector<const char*> refused;
    } cases[] = {
        {"oiOpacity",
         {{" 7 % ", 7, "7 %"}, {"0", 0, "0 %"}, {"62.5%", 62.5, "62.5 %"}},
         {"100.1", "-1", "", "nan", "5 5"}},
        {"lineOpacity", {}, {"19"}},
        {"ema2Period", {{"400", 400, "400"}}, {"401", "0", "9.5"}},
        {"vixSmooth", {{"60", 60, "60"}}, {}},
        {"hfScale", {{"0.01", 0.01, "0.01"}, {"1000", 1000, "1000"}}, {"0.009"}},
        {"sessionStart",
         {{"18:00", 1800, "18:00"}, {"0930", 930, "09:30"}, {"0:05", 5, "00:05"}, {"930", 930, "09:30"}},
         {"24:00", "1260", "9", "9:3", "-930"}},
        {"simBalance", {{"10000000", 1e7, "10000000"}}, {"999"}},
        {"simCommission", {{"0", 0, "0"}}, {"50.01"}},
    };
    for (const auto& [name, read, refused] : cases) {
        const Setting& setting = *findSetting(name);
        for (const auto& [text, value, shown] : read) {
            EXPECT_EQ(typedSetting(setting, text), value) << name << " " << text;
            EXPECT_EQ(settingText(setting, value), shown) << name;
        }
        for (const char* text : refused) EXPECT_EQ(typedSetting(setting, text), std::nullopt) << name << " " << text;
    }
    const Setting& scale = *findSetting("hfScale");
    EXPECT_EQ(steppedNumber(scale, 9.9, 1), 10);
    EXPECT_EQ(steppedNumber(scale, 10, 1), 11);
    EXPECT_EQ(steppedNumber(scale, 10, -1), 9.9);
    EXPECT_EQ(steppedNumber(scale, 0.0101, -3), 0.01);
    EXPECT_EQ(steppedNumber(scale, 995, 10), 1000);
    EXPECT_EQ(offeredNumber(scale, 0.1234), 0.12);
    EXPECT_EQ(steppedNumber(*findSetting("vixScale"), 0.08, -10), 0.01);
    EXPECT_EQ(offeredNumber(*findSetting("vixScale"), 0.2949), 0.29);
}

class SettingsEditing : public PaneFixture {
 protected:
    SettingsEditing() {
        openSymbol("ES");
        editor = std::make_unique<SettingsEditor>(*model);
    }
    std::string stored() { return ConfigIO::load(preferences).toJson(); }
    double number(const char* name) { return std::get<double>(editor->value(*findSetting(name))); }

    std::unique_ptr<SettingsEditor> editor;
};

TEST_F(SettingsEditing, StoresAGestureOnceAndLosesNothing) {
    const std::string before = stored();
    for (const char* end : {"its end", "the panel's end", "the pane's end"}) {
        editor->beginGesture();
        for (int opacity = 10; opacity < 90; ++opacity) editor->set("oiOpacity", double(opacity));
        EXPECT_EQ(model->config->oiOpacity, 89) << "at once";
        EXPECT_EQ(stored(), before) << end;
        if (end == std::string("its end"))
            editor->endGesture();
        else if (end == std::string("the panel's end"))
            editor->close();
        else
            editor = std::make_unique<SettingsEditor>(*model);
        EXPECT_EQ(ConfigIO::load(preferences), model->config.get()) << end;
        model->setConfig(GexConfig());
    }
    editor->set("oiOpacity", 3.4);
    EXPECT_EQ(ConfigIO::load(preferences).oiOpacity, 3) << "without a gesture at once, on a step";
}

TEST_F(SettingsEditing, TheScaleIsThatOfTheSymbolShown) {
    EXPECT_EQ(number("hfScale"), 0.5);
    editor->set("hfScale", 0.7);
    EXPECT_EQ(model->config->hfScaleBySymbol, (std::map<std::string, double>{{"ES", 0.7}}));
    EXPECT_EQ(model->config->hfScale, 0.7);
    model->switchSymbol("NQ");
    EXPECT_EQ(number("hfScale"), 5);
    EXPECT_TRUE(editor->type("hfScale", "12"));
    EXPECT_EQ(model->config->hfScaleBySymbol, (std::map<std::string, double>{{"ES", 0.7}, {"NQ", 12}}));
    editor->restoreDefaults("hfScale");
    EXPECT_EQ(number("hfScale"), 5);
    EXPECT_EQ(model->config->hfScaleBySymbol, (std::map<std::string, double>{{"ES", 0.7}}));
}

TEST_F(SettingsEditing, AnotherSourceIsShownAtOnce) {
    const std::string first = model->channels->levelsChannel;
    editor->set("gexSource", "INDEX");
    const std::string index = model->channels->levelsChannel;
    EXPECT_NE(index, first);
    const auto chart = model->chartNumber();
    editor->set("gexLabels", false);
    EXPECT_EQ(model->chartNumber(), chart) << "anything else opens nothing anew";
    resetSettings(*model);
    EXPECT_EQ(model->channels->levelsChannel, first);

    GexConfig odd = model->config;
    odd.hfCallColor = "ff7a00";
    odd.hfPutColor = "cyan";
    model->setConfig(odd);
    EXPECT_EQ(editor->text(*findSetting("hfCallColor")), "#ff7a00") << "as the chart reads it";
    EXPECT_EQ(editor->text(*findSetting("hfPutColor")), "#ffffff");
}

TEST_F(SettingsEditing, TakesNothingThatASettingCannotHold) {
    const GexConfig before = model->config;
    const std::pair<const char*, SettingValue> wrong[] = {
        {"unknown", true},      {"oiEnabled", 1.0},       {"oiOpacity", true},      {"candleTheme", "neon"},
        {"vixMode", 2.0},       {"ema1Color", "#12345"},  {"ema1Color", "white"},   {"initialCandles", "150"},
        {"initialCandles", ""}, {"hfScaleBySymbol", 1.0}, {"hfScaleBySymbol", "NQ"}};
    for (const auto& [name, value] : wrong) editor->set(name, value);
    EXPECT_FALSE(editor->type("sessionStart", "25:00") || editor->type("oiOpacity", "x"));
    EXPECT_EQ(model->config.get(), before);
    EXPECT_THAT(editor->invalid(), ElementsAre("oiOpacity", "sessionStart"));
    editor->set("oiOpacity", 5.0);
    editor->giveUp("sessionStart");
    EXPECT_TRUE(editor->invalid().empty());
    editor->type("oiOpacity", "x");
    editor->forgiveAll();
    EXPECT_TRUE(editor->invalid().empty());
    editor->set("initialCandles", "500");
    editor->set("hfPutColor", "#ABCDEF");
    editor->toEnd("ema1Period", true);
    EXPECT_TRUE(model->config->initialCandles == 500 && model->config->hfPutColor == "#abcdef" &&
                model->config->ema1Period == 400);
    editor->set("confirmUnusualOrders", false);
    EXPECT_EQ(editor->value(confirmUnusualSetting()), SettingValue(false));
    EXPECT_EQ(model->preferences().get("vmr.sim.confirmUnusual"), "0");
    editor->restoreDefaults("confirmUnusualOrders");
    EXPECT_EQ(editor->value(confirmUnusualSetting()), SettingValue(true));
    editor->restoreDefaults("ema1Enabled");
    EXPECT_EQ(model->config->ema1Period, 9) << "the whole row";
    preferences.set("gex-last-symbol", "ES");
    resetSettings(*model);
    EXPECT_EQ(model->config.get(), GexConfig());
    EXPECT_EQ(ConfigIO::load(preferences), GexConfig());
    EXPECT_EQ(preferences.get("gex-last-symbol"), std::nullopt);
}

class SettingsToTake : public PaneFixture {
 protected:
    SettingsToTake() { openSymbol("NQ"); }
    ~SettingsToTake() override { std::filesystem::remove_all(folder); }

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("velmora-settings-" + UuidSource().next().text());
    const std::string file = (folder / "mine.json").string();
    WorkspaceStore workspace{preferences, main};
    SettingsTransfer transfer{preferences, workspace};
};

TEST_F(SettingsToTake, WhatIsExportedComesBackWhole) {
    EXPECT_NE(transfer.exportTo(file, *model), std::nullopt) << "there is no such folder";
    std::filesystem::create_directory(folder);
    const WindowRecord window{{10, 20, 800, 600}, 0.25, {"NQ", 5, "BOTH"}, PaneState{"AAPL", 1, "ETF"}};
    workspace.replace({window});
    preferences.set("vmr.hotkeys", R"({"toggle-oi":"Ctrl+O"})");
    preferences.set("vmr.panel.config", R"({"x":1,"y":2,"w":640,"h":500})");
    preferences.set("vmr.panel.odd", R"({"x":1})");
    GexConfig odd;  // what older programs or a hand have left in the record
    odd.set("oiOpacity", "-40");
    odd.set("candleTheme", "\"neon\"");
    odd.set("ema1Color", "\"cyan\"");
    odd.set("sessionStart", "1875");
    odd.set("hfScaleBySymbol", R"({"NQ":2,"ES":5e5})");
    odd.set("vixEnabled", "false");
    model->setConfig(odd);
    ASSERT_EQ(transfer.exportTo(file, *model), std::nullopt);

    for (const std::string& key : preferences.keys("")) preferences.remove(key);
    model->setConfig(GexConfig());
    WorkspaceStore other(preferences, main);
    SettingsTransfer there(preferences, other);
    int told = 0;
    there.setHotkeys({}, [&] { ++told; });
    ASSERT_EQ(there.importFrom(file, *model), std::nullopt);
    GexConfig expected;
    expected.oiOpacity = 0;
    expected.ema1Color = "#ffffff";
    expected.hfScaleBySymbol = {{"ES", 1000}, {"NQ", 2}};
    expected.vixEnabled = false;
    EXPECT_EQ(model->config.get(), expected);
    EXPECT_EQ(ConfigIO::load(preferences), expected);
    EXPECT_EQ(preferences.get("vmr.hotkeys"), R"({"toggle-oi":"Ctrl+O"})");
    EXPECT_EQ(told, 1);
    EXPECT_EQ(preferences.keys("vmr.panel."), std::vector<std::string>{"vmr.panel.config"});
    EXPECT_EQ(parsePanel(*preferences.get("vmr.panel.config")), (StoredPanel{1, 2, 640, 500}));
    other.collectAndSave();
    other.saveAtEnd();
    EXPECT_THAT(WorkspaceStore(preferences, main).records(), ElementsAre(window)) << "what stands does not replace it";
    other.startOver();
    EXPECT_EQ(other.claimNext(), window);
}

TEST_F(SettingsToTake, ABadFileChangesNothingAndNamesItsField) {
    std::filesystem::create_directory(folder);
    ASSERT_EQ(transfer.exportTo(file, *model), std::nullopt);
    const std::string good = *readFile(file);
    const auto with = [&good](const std::string& from, const std::string& to) {
        std::string text = good;
        const auto at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        return at == std::string::npos ? text : text.replace(at, from.size(), to);
    };
    const auto added = [&](const std::string& member) { return with("{\n", "{\n" + member + ","); };
    const auto workspaceOf = [&](const std::string& text) {
        return with(R"("workspace": [])", "\"workspace\": " + text);
    };
    const std::string pane = R"({"symbol":"NQ","timeframe":1,"gexSource":"ETF"})";
    const std::string frame = R"("frame":[0,0,8,8])";
    const std::pair<std::string, const char*> cases[] = {
        {"", "the file is no JSON"},
        {"[]", "velmoraSettings: "},
        {R"({"settings":{}})", "velmoraSettings: "},
        {with(R"("velmoraSettings": 1)", R"("velmoraSettings": 2)"), "velmoraSettings: "},
        {added(R"("more":1)"), "more: is unknown"},
        {added(R"("settings":{})"), "settings: comes twice"},
        {with(R"("oiOpacity": 40.0)", R"("oiOpacity": 101)"), "settings.oiOpacity: "},
        {with(R"("oiOpacity": 40.0)", R"("oiOpacity": 1e999)"), "settings.oiOpacity: "},
        {with(R"("oiOpacity": 40.0,)", ""), "settings.oiOpacity: is missing"},
        {with(R"("oiEnabled": false)", R"("oiEnabled": 0)"), "settings.oiEnabled: "},
        {with(R"("vixSmooth": 5)", R"("vixSmooth": 5.5)"), "settings.vixSmooth: "},
        {with(R"("sessionStart": 1800)", R"("sessionStart": 1860)"), "settings.sessionStart: "},
        {with(R"("candleTheme": "mono")", R"("candleTheme": "neon")"), "settings.candleTheme: "},
        {with("#26a69a", "26a69a"), "settings.gexPosColor: "},
        {with(R"("hfScaleBySymbol": {})", R"("hfScaleBySymbol": {"NQ":1,"ES":0})"), "settings.hfScaleBySymbol.ES: "},
        {with(R"("lineRates")", R"("lineRatez")"), "settings.lineRatez: is unknown"},
        {with(R"("hotkeys": {})", R"("hotkeys": {"a":"X","b":7})"), "hotkeys.b: "},
        {with(R"("hotkeys": {})", R"("hotkeys": {"a":"taken"})"), "hotkeys.a: is taken"},
        {workspaceOf("{}"), "workspace: "},
        {workspaceOf("[{" + frame + ",\"primary\":" + pane + "},{\"frame\":[1,2],\"primary\":" + pane + "}]"),
         "workspace[1].frame: "},
        {workspaceOf("[{" + frame + "}]"), "workspace[0].primary: "},
        {workspaceOf("[{" + frame + R"(,"primary":{"symbol":"NQ","timeframe":0,"gexSource":"ETF"}}])"),
         "workspace[0].primary.timeframe: "},
        {with(R"("panels": {})", R"("panels": {"config":{"x":1,"y":2,"w":0,"h":4}})"), "panels.config.w: "},
        {with(R"("panels": {})", R"("panels": {"config":{"x":1,"y":2,"w":3}})"), "panels.config.h: is missing"},
    };
    transfer.setHotkeys(
        [](const HotkeyTexts& keys) {
            return keys.contains("a") && keys.at("a") == "taken" ? std::optional<std::string>("a: is taken")
                                                                 : std::nullopt;
        },
        [] { ADD_FAILURE() << "nothing was taken"; });
    model->setConfig(GexConfig());
    const auto before = preferences.values();
    for (const auto& [text, problem] : cases) {
        std::ofstream(file) << text;
        EXPECT_THAT(transfer.importFrom(file, *model).value_or(""), StartsWith(problem)) << text.substr(0, 60);
        EXPECT_EQ(preferences.values(), before) << problem;
        EXPECT_EQ(model->config.get(), GexConfig()) << problem;
    }
    EXPECT_THAT(transfer.importFrom((folder / "none").string(), *model).value_or(""), StartsWith("there is no file"));
    std::ofstream(file) << good;
    transfer.setHotkeys({}, {});
    EXPECT_EQ(transfer.importFrom(file, *model), std::nullopt);
}

}  // namespace
}  // namespace vmr::test
