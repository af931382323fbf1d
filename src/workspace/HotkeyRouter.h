// Which key does what, as the user has it, and whom a key is for.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "base/Preferences.h"
#include "base/Signal.h"
#include "workspace/ActionTable.h"

namespace vmr {

/// One for the process. Keys are texts as `parseChord` gives them. Main thread.
class HotkeyRouter {
 public:
    /// Holds the keys that differ from the table's: a JSON object of action ids and keys, "" for none.
    static constexpr const char* preferenceKey = "vmr.hotkeys";

    /// Reads what is kept, which `preferences` has until the router goes; null for none. A row that names no action or
    /// no key, or a key that another row has, counts for nothing.
    explicit HotkeyRouter(Preferences* preferences = nullptr);
    HotkeyRouter(const HotkeyRouter&) = delete;
    HotkeyRouter& operator=(const HotkeyRouter&) = delete;

    /// The action's present key; empty for none, and for an unknown id.
    std::string keyOf(std::string_view id) const;
    /// Whose key it is; null for nobody's.
    const Action* actionFor(std::string_view chord) const;
    /// Why the key can be nobody's, such as that it moves the chart; empty where it can.
    static std::string reserved(std::string_view chord);

    /// Gives the action a key, empty for none, and remembers it. Another action that had it has none from then on.
    /// Nothing on success; else what is in the way, and nothing changes.
    std::optional<std::string> assign(std::string_view id, std::string_view chord);
    /// Back to the table's key, which another action that has it loses.
    void reset(std::string_view id);
    void resetAll();
    bool isDefault(std::string_view id) const;

    /// What is wrong with a stored text of the preference, and nothing where it can be taken.
    static std::optional<std::string> problemOf(std::string_view text);
    /// Reads the preference again, which somebody else has changed.
    void load();

    /// Some key is another one.
    Signal<> changed;

    // Whom a key is for
    // ------------------------------------------------------------------------------------------------
    /// The pane that the pointer is over, by its number; 0 for none.
    void pointerOver(int pane);
    /// The pane is not under the pointer any more, or is gone; does nothing where another one is.
    void pointerLeft(int pane);
    void pointerMoved() { byKeyboard_ = false; }
    /// The keyboard's focus was moved by a key: until the pointer moves again, it tells the pane.
    void focusMovedByKey() { byKeyboard_ = true; }
    /// The pane that a key pressed in the window of `focused` is for, of `paneCount` panes on the screen; 0 for none.
    /// A pane alone gets every key. Of several the one under the pointer gets it, or, where the hand is on the
    /// keyboard, the one that has the focus.
    int paneFor(int focused, std::size_t paneCount) const;

 private:
    void keep();
    void set(std::string_view id, std::string chord);

    Preferences* preferences_;
    std::map<std::string, std::string, std::less<>> changedKeys_;  // by action
    int hovered_ = 0;
    bool byKeyboard_ = false;
};

}  // namespace vmr
