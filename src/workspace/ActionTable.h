// Everything that a key, a button, a menu row or a typed word does: one row each.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vmr {

class AppModel;
class ShellWindows;
class WindowPanes;

/// What only the window on the screen can do; `WindowPanes::perform` asks it to.
enum class WindowDeed { symbolMenu, otherPane, fullScreen, picture, actionList, chartKey, keySheet, about, beep, quit };

/// Where an action does something, and so whom its key is for: the pane that the pointer is over, the window that has
/// the keyboard, or the program, whose keys work everywhere, as long as they type nothing.
enum class ActionPlace { pane, window, program };

/// Headings of the lists, in order.
enum class ActionGroup { layers, chart, panels, window, settings };
std::string_view groupTitle(ActionGroup group);

/// What an action works on.
struct ActionContext {
    AppModel* pane = nullptr;         ///< null where none is open
    WindowPanes* window = nullptr;    ///< that shows the pane, or was asked; null without a display
    ShellWindows* windows = nullptr;  ///< null without a display
};

struct ActionAnswer {
    bool taken = true;     ///< false: there was nothing to do, and the key is free for others
    std::string text{};    ///< how it stands now, such as "On"; or why nothing was done
    bool refused = false;  ///< it was asked for, and cannot be had
};

/// A row.
struct Action {
    std::string id;     ///< as the shell takes it; that of a setting which it flips is the setting's name
    std::string title;  ///< in lists, and over the toast
    std::string key;    ///< by default, as `parseChord` gives it; empty for none
    ActionPlace place = ActionPlace::pane;
    ActionGroup group = ActionGroup::layers;
    std::function<ActionAnswer(const ActionContext&)> run{};
    std::function<bool(const ActionContext&)> isOn{};             ///< empty for what is neither on nor off
    std::function<std::string(const ActionContext&)> obstacle{};  ///< why it cannot be done now; empty: it can
    bool fixed = false;                                           ///< its key is not the user's to change
};

/// All rows, by group: first those with a toast or key of their own, then one for each other setting that is on or off.
std::span<const Action> actionTable();
/// Null for an unknown one.
const Action* findAction(std::string_view id);

/// Does it in `at`; where something is in the way, says what.
ActionAnswer runAction(const Action& action, const ActionContext& at);

/// A key that is no action's and cannot be given to one: a chart's, a panel's or a list's own.
struct FixedKey {
    std::string_view keys;   ///< as `parseChord` gives them, with blanks between
    std::string_view label;  ///< for the list of keys
    std::string_view title;
};
std::span<const FixedKey> fixedKeys();

/// Whether the 3D view is part of this build.
bool gex3DViewBuilt();

}  // namespace vmr
