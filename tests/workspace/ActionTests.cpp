// Actions, their keys, and whom a key is for.
#include <set>

#include "tests/workspace/LivePanes.h"
#include "workspace/ActionSearch.h"
#include "workspace/HotkeyRouter.h"
#include "workspace/KeyChord.h"

namespace vmr::test {
namespace {

TEST(KeyChord, HasOneTextForEachKey) {
    for (const char* same : {"G", "$", "é", "+"}) EXPECT_EQ(parseChord(same), same);
    const std::pair<const char*, const char*> chords[] = {
        {"g", "G"},           {"shift+$", "$"}, {"ctrl+,", "Ctrl+,"},       {"Shift+CTRL+s", "Ctrl+Shift+S"},
        {"ctrl++", "Ctrl++"}, {"f11", "F11"},   {"shift+tab", "Shift+Tab"}, {"control+pageup", "Ctrl+PageUp"}};
    for (const auto& [typed, text] : chords) EXPECT_EQ(parseChord(typed), text) << typed;
    for (const char* none : {"F25", "F0", "ctrl+", "", " ", "gg", "hyper+g", "\x01"})
        EXPECT_EQ(parseChord(none), std::nullopt) << none;
    EXPECT_EQ(chordLabel("Ctrl+Shift+S", true), "⌘⇧S");
    EXPECT_EQ(chordLabel("Escape", false), "Esc");
}

TEST(ActionTable, NamesEveryActionAndKeyOnce) {
    std::set<std::string> ids, titles, keys;
    for (const Action& action : actionTable()) {
        EXPECT_TRUE(ids.insert(action.id).second) << action.id;
        EXPECT_TRUE(titles.insert(action.title).second) << action.title;
        if (action.key.empty()) continue;
        EXPECT_TRUE(keys.insert(action.key).second) << action.key;
        EXPECT_EQ(parseChord(action.key), action.key);
        EXPECT_EQ(HotkeyRouter::reserved(action.key).empty(), !action.fixed) << action.id;
    }
}

TEST(HotkeyRouter, GivesKeysAwayAndRemembersThem) {
    MemoryPreferences kept;
    HotkeyRouter keys(&kept);
    int notices = 0;
    const auto heard = keys.changed.connect([&] { ++notices; });
    EXPECT_EQ(keys.actionFor("G")->id, "gexBubbles");
    EXPECT_EQ(keys.actionFor(""), nullptr);
    for (const auto& [id, key, problem] :
         {std::tuple("gexBubbles", "home", "Home is taken: Back to the live edge; the first view of 3D"),
          {"gexBubbles", "escape", "Esc is taken: Close what is open"},
          {"close", "q", "Close what is open keeps its key"},
          {"gexBubbles", "qq", "qq is no key"},
          {"nothing", "q", "there is no action nothing"},
          {"gexBubbles", "d", ""},  // of the DEX bars
          {"reload", "ctrl+r", ""},
          {"vwapEnabled", "", ""}})
        EXPECT_EQ(keys.assign(id, key).value_or(""), problem) << id << " " << key;
    EXPECT_EQ(notices, 3);
    for (HotkeyRouter* router : {&keys, std::make_unique<HotkeyRouter>(&kept).release()}) {
        EXPECT_EQ(router->actionFor("D")->id, "gexBubbles");
        EXPECT_EQ(router->actionFor("G"), nullptr);
        EXPECT_EQ(router->keyOf("dexEnabled"), "");
        EXPECT_EQ(router->actionFor("Ctrl+R")->id, "reload");
        EXPECT_EQ(router->keyOf("vwapEnabled"), "");
        EXPECT_FALSE(router->isDefault("dexEnabled"));
        if (router != &keys) delete router;
    }
    keys.reset("dexEnabled");
    EXPECT_EQ(keys.actionFor("D")->id, "dexEnabled");
    EXPECT_EQ(keys.keyOf("gexBubbles"), "") << "nobody has two keys, and nothing is swapped behind one's back";
    keys.resetAll();
    EXPECT_EQ(keys.actionFor("G")->id, "gexBubbles");
    EXPECT_FALSE(kept.get(HotkeyRouter::preferenceKey));

    // what is kept may be anybody's
    for (const auto& [text, problem] :
         {std::pair(R"({"reload":"r","unknown":"u"})", "unknown: there is no such action"),
          {R"({"reload":"g"})", "reload: another action has the key G"},
          {R"({"reload":5})", "reload: no key for an action"},
          {R"({"close":"q"})", "close: no key for an action"},
          {R"({"reload":"Left"})", "reload: no key for an action"},
          {"[1]", "it is no list of keys"}}) {
        EXPECT_EQ(HotkeyRouter::problemOf(text).value_or(""), problem) << text;
        kept.set(HotkeyRouter::preferenceKey, text);
        keys.load();
        EXPECT_EQ(keys.actionFor("G")->id, "gexBubbles") << text;
        EXPECT_EQ(keys.actionFor("Left"), nullptr) << text;
        EXPECT_EQ(keys.keyOf("reload"), std::string(text).find("\"r\"") != std::string::npos ? "R" : "") << text;
    }
    kept.set(HotkeyRouter::preferenceKey, R"({"gexBubbles":"D","vwapEnabled":"G"})");
    keys.load();
    EXPECT_EQ(keys.keyOf("dexEnabled") + keys.keyOf("vwapEnabled") + keys.keyOf("gexBubbles"), "DVG")
        << "no key is two actions'";
    for (const char* typed : {"N", "$", "Tab", "Shift+Tab"}) EXPECT_FALSE(isCommandKey(typed)) << typed;
    for (const char* chord : {"F2", "Shift+F11", "Ctrl+Q", "Alt+X"}) EXPECT_TRUE(isCommandKey(chord)) << chord;
}

TEST(HotkeyRouter, SendsAKeyToThePaneThatTheHandIsOn) {
    HotkeyRouter keys;
    EXPECT_EQ(keys.paneFor(1, 1), 1) << "a pane alone gets every key";
    EXPECT_EQ(keys.paneFor(1, 2), 0) << "over neither";
    keys.pointerOver(2);
    EXPECT_EQ(keys.paneFor(1, 2), 2);
    keys.pointerLeft(1);
    EXPECT_EQ(keys.paneFor(1, 2), 2) << "it had gone from 1 to 2";
    keys.focusMovedByKey();
    EXPECT_EQ(keys.paneFor(1, 2), 1);
    keys.pointerMoved();
    EXPECT_EQ(keys.paneFor(1, 2), 2);
    keys.pointerLeft(2);
    EXPECT_EQ(keys.paneFor(1, 2), 0);
}

TEST(ActionSearch, PutsTheBestRowFirst) {
    const std::vector<std::string> rows{"GEX Bars",           "DEX Bars", "GEX Dominance",
                                        "Keyboard shortcuts", "NQ NQU6",  "Zoom"};
    const std::vector<std::size_t> all{0, 1, 2, 3, 4, 5};
    const std::pair<const char*, std::vector<std::size_t>> searches[] = {
        {"", all},    {"  ", all}, {"gex", {0, 2}}, {"bars d", {1}},
        {"DOM", {2}}, {"nq", {4}}, {"board", {3}},  {"bar", {0, 1}}};
    for (const auto& [typed, found] : searches) EXPECT_EQ(searchRows(typed, rows), found) << typed;
    for (const char* none : {"oa", "qq", "u6"}) EXPECT_TRUE(searchRows(none, rows).empty()) << none;
}

class Actions : public LivePanes {
 protected:
    Actions() { host->open(); }
    AppModel& pane() { return *host->active(); }
    ActionAnswer run(const char* id) { return runAction(*findAction(id), {&pane(), nullptr, nullptr}); }
    std::string toast() {
        const auto& shown = pane().notices.toast.get();
        return shown ? shown->title + ": " + shown->detail.value_or("") : "";
    }
};

TEST_F(Actions, FlipTheirSettingAndSayHowItStands) {
    for (const auto& [id, field, title] : {std::tuple("gexBubbles", &GexConfig::gexBubbles, "GEX Dominance"),
                                           {"hfBubbles", &GexConfig::hfBubbles, "HF Dominance"},
                                           {"dexEnabled", &GexConfig::dexEnabled, "DEX Bars"},
                                           {"hfLateralEnabled", &GexConfig::hfLateralEnabled, "HF Waveform"},
                                           {"gexEnabled", &GexConfig::gexEnabled, "GEX Bars"},
                                           {"hfEnabled", &GexConfig::hfEnabled, "HF Line"},
                                           {"vwapEnabled", &GexConfig::vwapEnabled, "VWAP"},
                                           {"vixEnabled", &GexConfig::vixEnabled, "VIX"},
                                           {"hfPressure", &GexConfig::hfPressure, "HF Pressure"},
                                           {"oiEnabled", &GexConfig::oiEnabled, "OI Waveform"},
                                           {"simEnabled", &GexConfig::simEnabled, "Simulator"},
                                           {"ema2Enabled", &GexConfig::ema2Enabled, "EMA 2"},
                                           {"oscVix", &GexConfig::oscVix, "Oscillator VIX Line"}})
        for (int turn = 0; turn < 2; ++turn) {
            GexConfig expected = pane().config;
            expected.*field = !(expected.*field);
            const std::string state = expected.*field ? "On" : "Off";
            EXPECT_EQ(run(id).text, state);
            EXPECT_EQ(pane().config.get(), expected) << id;
            EXPECT_EQ(toast(), title + (": " + state));
            EXPECT_EQ(findAction(id)->isOn({&pane()}), expected.*field);
        }
    GexConfig mixed = pane().config;
    mixed.wallsEnabled = false;  // the levels decide
    pane().setConfig(mixed);
    EXPECT_EQ(run("lines").text, "Off");
    EXPECT_FALSE(pane().config->levelsEnabled || pane().config->wallsEnabled || pane().config->sessionEnabled);
    for (const char* source : {"Index", "ETF + Index", "ETF"}) {
        EXPECT_EQ(run("gexSource").text, source);
        EXPECT_EQ(toast(), std::string("GEX Source: ") + source);
    }
    EXPECT_EQ(run("timeframe15").text, "15m");
    EXPECT_EQ(pane().bars.timeframe, 15);
}

TEST_F(Actions, CloseOneThingAfterTheOther) {
    PanelsOpen& panels = pane().panels;
    pane().setGex3DActive(true);
    for (const char* id : {"account", "templates", "settings"}) EXPECT_EQ(run(id).text, "On");
    EXPECT_EQ(toast(), "Templates: On");
    std::string order;
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(run("close").taken);
        order += pane().surface.gex3DActive() ? '3'
                 : panels.configPanelOpen     ? 'c'
                 : panels.templatesPanelOpen  ? 't'
                 : panels.accountPanelOpen    ? 'a'
                                              : '-';
    }
    EXPECT_EQ(order, "cta-");
    GexConfig config = pane().config;
    config.hfPressure = true;
    pane().setConfig(config);
    for (const bool overlay : {false, true}) {
        panels.pressure = PressureShown{overlay, {}, {}};
        EXPECT_EQ(run("close").taken, overlay) << "beside the chart it is nothing that is open over it";
        EXPECT_EQ(pane().config->hfPressure, !overlay);
    }
    panels.pressure.reset();
    EXPECT_FALSE(run("close").taken);
    EXPECT_EQ(run("fullScreen").text, "there is no window");
}

}  // namespace
}  // namespace vmr::test
