// The windows of the process, without a toolkit: which panes each shows, and what comes back of the last run.
#pragma once

#include <array>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <vector>

#include "base/Preferences.h"
#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "base/Uuid.h"
#include "base/WeakTask.h"
#include "model/StateDocument.h"
#include "workspace/ActionTable.h"
#include "workspace/DualLink.h"
#include "workspace/PaneHost.h"
#include "workspace/WorkspaceStore.h"

namespace vmr {

class ShellWindows;

/// One window: its pane, perhaps a second one beside it, and where the divider between them stands. Main thread.
class WindowPanes {
 public:
    WindowPanes(ShellWindows& windows, int number, int primary);
    ~WindowPanes();
    WindowPanes(const WindowPanes&) = delete;
    WindowPanes& operator=(const WindowPanes&) = delete;

    /// Counts up from 1.
    int number() const { return number_; }
    AppModel& primary() const { return *primary_; }
    /// Null for a window with one pane.
    AppModel* dual() const { return dual_; }
    int primaryNumber() const { return primaryNumber_; }
    int dualNumber() const { return dualNumber_; }  ///< 0 for none
    bool entered() const { return primary_->session.isSignedIn; }

    /// Shows a second pane, or no longer. False where there is no room for one: then the window says so for a while.
    bool toggleDual();

    /// Keeps the two panes in step, or not.
    DualLink& link() { return link_; }
    /// Asked for in the second pane or in the first. Nothing with one pane.
    void toggleSync(bool fromSecond);

    /// The hand is in this pane: commands that name none are for it.
    void activate(bool second);

    /// Share of the width that the left pane has, above 0 and below 1.
    double split() const { return split_; }
    /// Others are ignored.
    void setSplit(double share);
    /// Remembers it for new windows, too: at the end of a drag.
    void keepSplit();

    /// The frame that the window had in the last run, the first time it is asked for; then nothing.
    std::optional<std::vector<double>> takeFrame();
    /// What it claimed of the last run.
    const std::optional<WindowRecord>& record() const { return box_->rec; }
    /// Tells where the window stands, as in `WindowRecord`; set by whoever shows it.
    std::function<std::optional<std::array<double, 4>>()> frame;
    /// The frame to remember, where that is another one; empty for where it stands.
    std::function<std::optional<std::array<double, 4>>()> frameToKeep;

    /// Does on the screen what only the window can, for its second pane or its first; tells whether it could. Set by
    /// whoever shows it.
    std::function<bool(WindowDeed deed, bool second)> perform;
    /// Whether a list or a sheet is open on it, which takes every key. Set by whoever shows it.
    std::function<bool()> keysHeld;
    /// What lies over it: "marks", "keys" or "gestures" of the key to the chart, another sheet, or "". Set by whoever
    /// shows it.
    std::function<std::string()> sheet;

    /// Its second pane came or goes, the divider moved, or the panes are in step or no longer.
    Signal<> changed;

    WindowFacts facts() const;

 private:
    friend class ShellWindows;
    void claim();
    void enteredChanged();
    void openDual(std::optional<PaneState> restore);
    void closeDual();

    ShellWindows& windows_;
    const int number_;
    int primaryNumber_, dualNumber_ = 0;
    AppModel* primary_;
    AppModel* dual_ = nullptr;
    double split_;
    bool frameTaken_ = false;
    bool showDue_ = false;  ///< the pane is still to show what is claimed
    bool dualDue_ = false;  ///< a second pane is claimed and has not been opened yet
    std::shared_ptr<WorkspaceWindowBox> box_ = std::make_shared<WorkspaceWindowBox>();
    DualLink link_;
    Connection entering_, linkChanged_;
    WeakTask whileThere_;
};

/// Opens and closes windows within the limit of panes, and brings those of the last run back. Main thread.
class ShellWindows {
 public:
    static constexpr const char* splitKey = "vmr.dual.split";

    /// All outlive it.
    ShellWindows(PaneHost& panes, WorkspaceStore& store, Preferences& preferences, MainLoop& main);
    ~ShellWindows();
    ShellWindows(const ShellWindows&) = delete;
    ShellWindows& operator=(const ShellWindows&) = delete;

    /// Shows a window that has just come, and lets go of one that goes, or of one of its panes, before they go.
    std::function<void(WindowPanes& window)> onOpened;
    std::function<void(WindowPanes& window)> onClosing;
    std::function<void(WindowPanes& window, AppModel& pane)> onPaneClosing;

    /// The first window, with the pane that is open already. With `hasFirstSymbol` that has been told what to show;
    /// else it shows what the record says. Once.
    WindowPanes& openFirst(bool hasFirstSymbol);
    /// Another window with a pane of its own; null where there is no room for one. Then the window in which it was
    /// asked for says so, null for that of the active pane.
    WindowPanes* open(WindowPanes* from = nullptr);
    /// Closes a window and its panes. The last one is not closed: the process ends with it.
    void close(int number);
    /// Ends the session from this window: it stays, with one pane, and the others close, as they do when the session
    /// ends by itself. What they showed is remembered and comes back with the next sign-in.
    void signOut(int number);

    WindowPanes* find(int number);
    /// The window that shows the pane; null for none.
    WindowPanes* showing(int pane);
    std::size_t size() const { return windows_.size(); }
    PaneHost& panes() { return panes_; }
    std::vector<WindowPanes*> all();
    std::vector<WindowFacts> facts() const;

 private:
    friend class WindowPanes;
    WindowPanes& add(int pane);
    void spawnRest();
    void sessionOver(WindowPanes& stays);

    PaneHost& panes_;
    WorkspaceStore& store_;
    Preferences& preferences_;
    MainLoop& main_;
    UuidSource ids_;
    int lastNumber_ = 0;
    std::list<std::unique_ptr<WindowPanes>> windows_;
    bool sessionStands_ = false;
};

}  // namespace vmr
