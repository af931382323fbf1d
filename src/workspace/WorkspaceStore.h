// Remembers the windows between runs: where each stood, what its panes showed, how it was split.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Preferences.h"
#include "base/SerialQueue.h"
#include "base/Uuid.h"
#include "store/WorkspaceRecord.h"

namespace vmr {

class AppModel;

/// What the store has to know of a pane.
struct PaneFacts {
    bool isSignedIn = false;
    std::string chartChannel;
    PaneState state;  ///< its symbol may be empty
};
PaneFacts paneFacts(const AppModel& pane);

/// One window, as its shell hands it to the store.
struct WorkspaceWindowBox {
    Uuid id;
    // Each gives nothing when what it asks for is not there, or is gone.
    std::function<std::optional<PaneFacts>()> primary, dual;
    std::function<std::optional<std::array<double, 4>>()> frame;  ///< as in `WindowRecord`
    double split = 0.5;
    std::optional<WindowRecord> rec{};  ///< what the window claimed
    bool claimed = false;
};

/// Looks at all windows every 3 s and stores what it sees when that has changed. One for the process. Main thread.
class WorkspaceStore {
 public:
    static constexpr double period = 3;  ///< seconds between two looks
    static constexpr const char* key = "vmr-workspace-v1";

    /// Reads the windows of the last run; none where there are none, or where they do not decode. Preferences and loop
    /// outlive it.
    WorkspaceStore(Preferences& preferences, MainLoop& main);
    ~WorkspaceStore();
    WorkspaceStore(const WorkspaceStore&) = delete;
    WorkspaceStore& operator=(const WorkspaceStore&) = delete;

    /// The next window of the last run that no window has claimed yet.
    std::optional<WindowRecord> claimNext();
    /// The one that `claimNext` would give.
    std::optional<WindowRecord> nextRecord() const;
    /// Once in a process: whether the windows that are left to claim have still to be opened.
    bool takeSpawn();
    /// What is there now is to be claimed again, as at the start of a process: by the next session.
    void startOver();

    /// The window is there; a box of the same identity goes. The first one starts the looks.
    void registerBox(std::shared_ptr<WorkspaceWindowBox> box);
    /// The window has closed.
    void remove(const Uuid& id);

    /// Looks at the windows that are signed in and show a chart of a known instrument, or are still to show the one
    /// that they claimed, left-most first, and stores them if anything has changed. With none such, the last picture
    /// stays: signing out does not wipe the workspace.
    void collectAndSave();
    /// At the end of the process.
    void saveAtEnd();
    /// These are the windows to remember, whatever stands on the screen: until the next session, or for the next run.
    void replace(std::vector<WindowRecord> records);

    const std::vector<WindowRecord>& records() const { return records_; }  ///< of the last run or session
    const std::vector<WindowRecord>& current() const { return current_; }  ///< the latest picture

 private:
    static std::optional<WindowRecord> recordOf(const WorkspaceWindowBox& box);
    void persist();

    Preferences& preferences_;
    MainLoop& main_;
    std::vector<WindowRecord> records_, current_;
    std::size_t claimIdx_ = 0;
    bool didSpawn_ = false;
    bool replaced_ = false;  // what stands on the screen is not to be remembered
    std::vector<std::shared_ptr<WorkspaceWindowBox>> boxes_;
    std::optional<std::string> lastWritten_;
    SerialQueue::TimerId timer_ = SerialQueue::noTimer;
};

}  // namespace vmr
