// Tells the backend which chart a pane shows.
#pragma once

#include <functional>
#include <string>

#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "services/cloud/FirebaseRESTAuth.h"

namespace vmr {

/// One for each pane, while it is signed in. It needs no answer, and no failure is reported to anybody. Main thread.
class PresenceReporter {
 public:
    static constexpr double period = 60;  ///< seconds between two heartbeats
    static constexpr const char* single = "mac";
    static constexpr const char* dual = "mac-dual";  ///< of both panes, while their window shows two

    /// Empty where there is nothing to name.
    using Word = std::function<std::string()>;

    /// `auth` and `main` outlive it. `tabId` is the pane's, unique among all that the account has open.
    PresenceReporter(FirebaseRESTAuth& auth, MainLoop& main, std::string tabId, Word currentSymbol, Word currentSource);
    ~PresenceReporter() { stop(); }
    PresenceReporter(const PresenceReporter&) = delete;
    PresenceReporter& operator=(const PresenceReporter&) = delete;

    /// "online" now and a "heartbeat" each `period`; nothing when it runs already, or where no server takes reports.
    void start();
    /// "offline", also while the process ends. Nothing unless it runs. A sign-out stops it by itself.
    void stop();
    /// `action` is "online", "heartbeat" or "offline"; the last one says "unknown" for symbol and source.
    void send(const std::string& action);

    bool started() const { return started_; }
    const std::string& tabId() const { return tabId_; }
    void setTabId(std::string id) { tabId_ = std::move(id); }
    const std::string& pageKind() const { return pageKind_; }
    /// A changed kind is reported at once if it runs.
    void setPageKind(const std::string& kind);

 private:
    FirebaseRESTAuth& auth_;
    MainLoop& main_;
    std::string tabId_, pageKind_ = single;
    Word currentSymbol_, currentSource_;
    bool started_ = false;
    SerialQueue::TimerId timer_ = SerialQueue::noTimer;
    Connection sessionEnds_;
};

}  // namespace vmr
