// The panes of the process: each a model with a connection and a relay thread of its own.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/AsioLoop.h"
#include "base/Signal.h"
#include "base/WeakTask.h"
#include "model/AppModel.h"
#include "services/feed/RelayClient.h"

namespace vmr {

/// Opens and closes panes. Main thread. All panes share the process's one session: a pane that is opened while it
/// stands connects at once, and signing in or out in one pane is followed by the others. When market time is set back,
/// every pane opens its chart anew, since what it shows only goes forward.
class PaneHost {
 public:
    static constexpr std::size_t maxLive = 4;  ///< the service lets one account have only so many connections

    static constexpr const char* noRoomText = "at most 4 panes can be open";  ///< why `open` gives none
    static_assert(maxLive == 4);

    /// Makes a pane's client on the pane's own relay queue.
    using Connect = std::function<std::unique_ptr<RelayClient>(AsioLoop& queue)>;

    /// `surroundings` are every pane's; `makeRelay` in it is replaced. All of it, and the main loop, outlive the host.
    PaneHost(PaneSurroundings surroundings, Connect connect);
    /// Closes all panes; what their sockets still have to say gets `AsioThread::patience` in all.
    ~PaneHost();
    PaneHost(const PaneHost&) = delete;
    PaneHost& operator=(const PaneHost&) = delete;

    /// Opens a pane, which is to show `restore`, and gives its number; nothing where `maxLive` are open. The first one
    /// becomes the active one. Numbers count up from 1 and are never given again, so that nobody takes a later pane for
    /// an earlier one.
    std::optional<int> open(std::optional<PaneState> restore = std::nullopt);
    /// The same however many are open: it is the service then that refuses the pane, in the pane.
    int openBeyondLimit(std::optional<PaneState> restore);
    /// Whether `open` would give one.
    bool hasRoom() const { return panes_.size() < maxLive; }

    /// Closes a pane: no callback of it comes afterwards; its socket says good-bye and its thread ends in the
    /// background, within `longestEnd` seconds where the network does not answer. If it was the active one, the first
    /// that is left becomes that. Nothing on success, else what is in the way.
    std::optional<std::string> close(int number);
    static constexpr double longestEnd = 2;

    /// Marks the pane as shown: it cannot be closed until it is shown no more.
    void setShown(int number, bool shown);

    /// The open panes' numbers, in the order in which they were opened.
    std::vector<int> numbers() const;
    /// Their models, in the same order.
    std::vector<const AppModel*> models() const;
    std::size_t size() const { return panes_.size(); }
    /// A pane has come or gone.
    Signal<> sizeChanged;

    /// Null for a number that no open pane has.
    AppModel* find(int number);

    /// The pane that commands are for; 0 and null where none is open.
    int activeNumber() const { return active_; }
    AppModel* active() { return find(active_); }
    /// An unknown number is ignored.
    void setActive(int number);

    /// Relay threads of closed panes that have not ended yet.
    std::size_t endingThreads() const { return ending_.size(); }

 private:
    struct Pane {
        int number = 0;
        bool shown = false;
        std::unique_ptr<AsioThread> thread;  // outlives the model, whose client works on it
        std::unique_ptr<AppModel> model;
        Connection signedIn;
    };
    struct EndingThread {
        std::unique_ptr<AsioThread> thread;
        int looks = 0;
    };
    std::list<Pane>::iterator at(int number);
    void followSession(int number, bool signedIn);
    void endThread(std::unique_ptr<AsioThread> thread);
    void clearEndedThreads();

    const PaneSurroundings surroundings_;
    const Connect connect_;
    std::list<Pane> panes_;
    int lastNumber_ = 0;
    int active_ = 0;
    ClockWatch steered_;
    std::list<EndingThread> ending_;
    SerialQueue::TimerId endingTimer_ = SerialQueue::noTimer;
    WeakTask whileThere_;
};

}  // namespace vmr
