#include "workspace/ActionTable.h"

#include <algorithm>
#include <array>
#include <vector>

#include "model/AppModel.h"
#include "store/SettingTable.h"
#include "workspace/PaneHost.h"
#include "workspace/ShellWindows.h"

namespace vmr {

namespace {
using At = const ActionContext&;
using Flag = bool GexConfig::*;
using Panel = Observable<bool> PanelsOpen::*;
using G = GexConfig;
using P = ActionPlace;
using Group = ActionGroup;

const char* onOff(bool on) { return on ? "On" : "Off"; }

void toast(At at, const std::string& title, const std::string& detail) { at.pane->notices.flashToast(title, detail); }

// Settings ------------------------------------------------------------------------------------------------------------

// All get the opposite of the first.
ActionAnswer flip(At at, const std::string& title, std::span<const Flag> fields) {
    GexConfig changed = at.pane->config;
    const bool on = !(changed.*fields[0]);
    for (const Flag field : fields) changed.*field = on;
    at.pane->setConfig(changed);
    toast(at, title, onOff(on));
    return {true, onOff(on)};
}

Action flips(std::string id, std::string title, std::string key, std::vector<Flag> fields,
             Group group = Group::layers) {
    Action action{std::move(id), std::move(title), std::move(key), P::pane, group};
    action.run = [title = action.title, fields](At at) { return flip(at, title, fields); };
    action.isOn = [field = fields[0]](At at) { return at.pane->config.get().*field; };
    return action;
}

std::string sourceName(const std::string& value) {
    for (const SettingChoice& choice : findSetting("gexSource")->choices)
        if (choice.value == value) return std::string(choice.label);
    return value;
}

ActionAnswer cycleSource(At at) {
    at.pane->cycleGexSource();
    const std::string name = sourceName(at.pane->config->gexSource);
    toast(at, "GEX Source", name);
    return {true, name};
}

// A setting's name in a list where its section's heading does not stand above it.
std::string settingTitle(const Setting& setting) {
    const std::string section(sectionTitle(setting.section));
    if (setting.section == SettingSection::oscillator)
        return setting.name == "oscEnabled" ? section : section + " " + std::string(setting.label);
    return std::string(setting.label);
}

// Charts --------------------------------------------------------------------------------------------------------------

constexpr std::array timeframes{1, 2, 3, 5, 15, 30, 60};

Action showsTimeframe(int minutes, int key) {
    const std::string name = std::to_string(minutes) + "m";
    Action action{"timeframe" + std::to_string(minutes), "Timeframe " + name, std::to_string(key), P::pane,
                  Group::chart};
    action.run = [minutes, name](At at) {
        at.pane->setTimeframe(minutes);
        toast(at, "Timeframe", name);
        return ActionAnswer{true, name};
    };
    action.isOn = [minutes](At at) { return at.pane->bars.timeframe.get() == minutes; };
    return action;
}

ActionAnswer reload(At at) {
    if (!at.pane->channels->isOpen()) return {false, "no chart is open"};
    at.pane->reloadChart();
    toast(at, "Chart", "Reloaded");
    return {true, "Reloaded"};
}

// Panels --------------------------------------------------------------------------------------------------------------

Action opens(std::string id, std::string title, std::string key, Panel panel) {
    Action action{std::move(id), std::move(title), std::move(key), P::pane, Group::panels};
    action.run = [panel](At at) {
        Observable<bool>& open = at.pane->panels.*panel;
        open = !open.get();
        return ActionAnswer{true, onOff(open)};
    };
    action.isOn = [panel](At at) { return (at.pane->panels.*panel).get(); };
    return action;
}

Action with(Action action, const std::string& toastTitle) {
    action.run = [run = action.run, toastTitle](At at) {
        ActionAnswer answer = run(at);
        toast(at, toastTitle, answer.text);
        return answer;
    };
    return action;
}

Action until(std::function<std::string(At)> obstacle, Action action) {
    action.obstacle = std::move(obstacle);
    return action;
}

// The first thing that is open, in this order.
ActionAnswer closeFirst(At at) {
    if (at.pane->surface.gex3DActive()) {
        at.pane->setGex3DActive(false);
        return {true, "3D view closed"};
    }
    PanelsOpen& panels = at.pane->panels;
    for (Observable<bool>* open : {&panels.configPanelOpen, &panels.templatesPanelOpen, &panels.accountPanelOpen}) {
        if (!open->get()) continue;
        *open = false;
        return {true, "panel closed"};
    }
    if (panels.pressure && panels.pressure->overlay) {
        GexConfig changed = at.pane->config;
        changed.hfPressure = false;
        at.pane->setConfig(changed);
        return {true, "panel closed"};
    }
    return {false, "nothing is open"};
}

// Windows -------------------------------------------------------------------------------------------------------------

constexpr const char* noWindow = "there is no window";

bool inSecond(At at) { return at.window && at.pane == at.window->dual(); }

Action asks(std::string id, std::string title, std::string key, WindowDeed deed, P place = P::window) {
    Action action{std::move(id), std::move(title), std::move(key), place, Group::window};
    action.run = [deed](At at) -> ActionAnswer {
        if (!at.window->perform) return {false, noWindow};
        return {at.window->perform(deed, inSecond(at)), {}};
    };
    action.obstacle = [](At at) { return at.window ? std::string() : noWindow; };
    return action;
}

ActionAnswer toggleDual(At at) {
    if (!at.window->toggleDual()) return {true, PaneHost::noRoomText, true};
    return {true, onOff(at.window->dual() != nullptr)};
}

ActionAnswer toggleSync(At at) {
    at.window->toggleSync(inSecond(at));
    return {true, onOff(at.window->link().syncOn())};
}

ActionAnswer openWindow(At at) {
    if (const WindowPanes* window = at.windows->open(at.window))
        return {true, "window " + std::to_string(window->number())};
    if (at.window->perform) at.window->perform(WindowDeed::beep, false);
    return {true, PaneHost::noRoomText, true};
}

std::string needsWindow(At at) { return at.window ? std::string() : noWindow; }

std::string needsTwoPanes(At at) {
    if (!at.window) return noWindow;
    return at.window->dual() ? std::string() : "the window shows one pane";
}

// The table -----------------------------------------------------------------------------------------------------------

void addLayers(std::vector<Action>& out) {
    for (const auto& [key, title, id, field] : {std::tuple("G", "GEX Dominance", "gexBubbles", &G::gexBubbles),
                                                {"H", "HF Dominance", "hfBubbles", &G::hfBubbles},
                                                {"D", "DEX Bars", "dexEnabled", &G::dexEnabled},
                                                {"W", "HF Waveform", "hfLateralEnabled", &G::hfLateralEnabled},
                                                {"X", "GEX Bars", "gexEnabled", &G::gexEnabled},
                                                {"F", "HF Line", "hfEnabled", &G::hfEnabled},
                                                {"V", "VWAP", "vwapEnabled", &G::vwapEnabled},
                                                {"I", "VIX", "vixEnabled", &G::vixEnabled},
                                                {"P", "HF Pressure", "hfPressure", &G::hfPressure},
                                                {"O", "OI Waveform", "oiEnabled", &G::oiEnabled}})
        out.push_back(flips(id, title, key, {field}));
    out.push_back(flips("lines", "Lines", "L", {&G::levelsEnabled, &G::wallsEnabled, &G::sessionEnabled}));
    out.push_back({"gexSource", "GEX Source", "S", P::pane, Group::layers, cycleSource});
    out.push_back(flips("simEnabled", "Simulator", "$", {&G::simEnabled}));
}

void addCharts(std::vector<Action>& out) {
    for (std::size_t i = 0; i < timeframes.size(); ++i)
        out.push_back(showsTimeframe(timeframes[i], static_cast<int>(i) + 1));
    Action symbols = asks("symbol", "Symbol…", "/", WindowDeed::symbolMenu, P::pane);
    symbols.group = Group::chart;
    out.push_back(std::move(symbols));
    out.push_back({"reload", "Reload chart", "", P::pane, Group::chart, reload});
}

void addPanels(std::vector<Action>& out) {
    out.push_back(with(opens("templates", "Templates", "T", &PanelsOpen::templatesPanelOpen), "Templates"));
    out.push_back(opens("settings", "Settings", "Ctrl+,", &PanelsOpen::configPanelOpen));
    out.push_back(opens("account", "Account", "", &PanelsOpen::accountPanelOpen));
    out.push_back(until([](At) { return gex3DViewBuilt() ? "" : std::string("the 3D view is not part of this build"); },
                        {"gex3D", "3D view", "", P::pane, Group::panels,
                         [](At at) {
                             at.pane->setGex3DActive(!at.pane->surface.gex3DActive());
                             return ActionAnswer{true, onOff(at.pane->surface.gex3DActive())};
                         },
                         [](At at) { return at.pane->surface.gex3DActive(); }}));
    out.push_back(until([](At at) { return std::string(at.pane->config->simEnabled ? "" : "the simulator is off"); },
                        opens("simPanel", "Simulator panel", "", &PanelsOpen::simPanelOpen)));
    Action close{"close", "Close what is open", "Escape", P::pane, Group::panels, closeFirst};
    close.fixed = true;
    out.push_back(std::move(close));
}

void addWindows(std::vector<Action>& out) {
    out.push_back(asks("actions", "All actions and symbols…", "Ctrl+K", WindowDeed::actionList));
    out.push_back(asks("otherPane", "Other chart", "Ctrl+Tab", WindowDeed::otherPane));
    out.back().obstacle = needsTwoPanes;
    out.push_back(until(needsWindow, {"dual", "Two charts", "", P::window, Group::window, toggleDual,
                                      [](At at) { return at.window && at.window->dual(); }}));
    out.push_back(until(needsTwoPanes, {"sync", "Sync charts", "", P::window, Group::window, toggleSync,
                                        [](At at) { return at.window && at.window->link().syncOn(); }}));
    out.push_back(asks("fullScreen", "Full screen", "F11", WindowDeed::fullScreen));
    out.push_back(asks("picture", "Picture of the window…", "Ctrl+Shift+S", WindowDeed::picture));
    out.push_back(asks("chartKey", "Key to the chart", "?", WindowDeed::chartKey));
    out.push_back(asks("keys", "Keyboard shortcuts", "", WindowDeed::keySheet));
    out.push_back(asks("about", "About Velmora", "", WindowDeed::about));
    out.push_back(until(needsWindow, {"newWindow", "New Window", "Ctrl+N", P::program, Group::window, openWindow}));
    out.push_back(asks("quit", "Quit", "Ctrl+Q", WindowDeed::quit, P::program));
}

// Every other setting that is on or off.
void addSettings(std::vector<Action>& out) {
    for (const Setting& setting : settingTable()) {
        const auto* field = std::get_if<Flag>(&setting.field);
        const bool there =
            std::any_of(out.begin(), out.end(), [&](const Action& one) { return one.id == setting.name; });
        if (field && !there)
            out.push_back(flips(std::string(setting.name), settingTitle(setting), "", {*field}, Group::settings));
    }
}

std::vector<Action> makeTable() {
    std::vector<Action> out;
    addLayers(out);
    addCharts(out);
    addPanels(out);
    addWindows(out);
    addSettings(out);
    return out;
}

constexpr std::array fixed{
    FixedKey{"Left Right Up Down", "Arrow keys", "Move the chart; turn the 3D view; set the separator's height"},
    FixedKey{"+ = -", "+  −", "Zoom in and out"},
    FixedKey{"Home", "Home", "Back to the live edge; the first view of 3D"},
    FixedKey{"Tab Shift+Tab", "Tab", "To the next control"},
    FixedKey{"Return Space", "Enter, Space", "Press what has the keyboard"},
    FixedKey{"Alt+Left Alt+Right Alt+Up Alt+Down", "Alt+Arrow keys", "Move a panel"},
    FixedKey{"Alt+Shift+Left Alt+Shift+Right Alt+Shift+Up Alt+Shift+Down", "Alt+Shift+Arrow keys", "Resize a panel"},
};
}  // namespace

std::string_view groupTitle(ActionGroup group) {
    constexpr std::array<std::string_view, 5> titles{"Layers", "Chart", "Panels", "Window", "Settings"};
    return titles[static_cast<std::size_t>(group)];
}

std::span<const Action> actionTable() {
    static const std::vector<Action> table = makeTable();
    return table;
}

const Action* findAction(std::string_view id) {
    const auto table = actionTable();
    const auto found = std::find_if(table.begin(), table.end(), [id](const Action& one) { return one.id == id; });
    return found == table.end() ? nullptr : &*found;
}

ActionAnswer runAction(const Action& action, const ActionContext& at) {
    if (!at.pane) return {false, "no pane is open"};
    if (action.obstacle)
        if (std::string why = action.obstacle(at); !why.empty()) return {false, std::move(why)};
    return action.run(at);
}

std::span<const FixedKey> fixedKeys() { return fixed; }

bool gex3DViewBuilt() {
#ifdef VMR_WITH_3D
    return true;
#else
    return false;
#endif
}

}  // namespace vmr
