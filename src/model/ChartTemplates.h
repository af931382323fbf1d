// The saved templates of what a pane shows: the preferred one that applies itself, and what the panel shows and does.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/JsonMembers.h"
#include "base/Signal.h"
#include "base/WeakTask.h"
#include "chart/Camera.h"
#include "model/PaneWork.h"
#include "services/cloud/TemplatesService.h"

namespace vmr {

/// Templates belong to a pair of symbol and source. What is under way when the pane leaves the pair, or the person
/// signs out, is given up: its answer changes nothing here. Opening the same pair anew, as at a contract's roll, is no
/// leaving. Main thread.
class ChartTemplates {
 public:
    /// What it reads of the pane, and does to it.
    struct Pane {
        std::function<std::string()> symbolSource;  ///< empty without a chart
        std::function<bool()> isSignedIn;
        std::function<JsonMembers()> capture;
        std::function<void(const JsonMembers& saved, bool byHand)> apply;
        std::function<double()> barsShown;  ///< 0 without a chart
        std::function<double()> handAt;     ///< when a hand moved the camera last, as `CameraPort` tells
        std::function<int()> timeframe;     ///< minutes a bar
        std::function<void(const std::string& line)> log;
    };
    /// How something ended: nothing when well, else why not.
    using Done = std::function<void(const std::optional<std::string>& problem)>;

    /// `auth` and `work` must outlive it; `gate` may be null.
    ChartTemplates(FirebaseRESTAuth& auth, const PaneWork& work, Pane pane, NoticeGate* gate = nullptr);

    using List = TemplatesService::List;
    Observable<std::optional<List>> list;           ///< nothing while it is not known
    Observable<bool> busy;                          ///< a load or a save is under way
    Observable<bool> loading;                       ///< the list is asked for
    Observable<std::optional<std::string>> status;  ///< how the last thing ended, for the person
    Observable<bool> failed;                        ///< `status` tells a failure
    /// The pairs whose preferred template this pane has tried. Never cleared.
    const std::set<std::string>& preferredApplied() const { return preferredApplied_; }

    // What the panel does. `done` may be empty; what is given up ends with "The chart was left.", "Signed out." or "The
    // pane was closed.".
    /// Asks for the list; nothing without a chart. The latest of several counts.
    void refresh(Done done = {});
    /// Applies the slot's template. Nothing for a slot that is not there, or while busy.
    void load(const std::string& key);
    /// Saves the pane as it is in the slot, and asks for the list anew. Nothing while busy or without a chart.
    void save(const std::string& key, Done done = {});

    /// The panel came up or went: the list is asked for when it comes up, and when its pane shows another pair.
    void setShown(bool shown);
    /// The pane may show another pair now, or a person has signed in or out.
    void follow();
    /// Once for each pair that a signed-in pane opens.
    void autoApplyPreferred();
    /// The pane ends.
    void end();

    /// A view of this pair that waits for bars: with too few of them the chart would choose another one when they come.
    void keepView(const std::optional<ViewSetup>& view);
    /// That view; nothing once a hand has moved the camera or the timeframe has changed, which ends the waiting.
    std::optional<ViewSetup> waitingView();
    /// Takes it out, once the chart has `bars`.
    std::optional<ViewSetup> takeView(std::size_t bars);
    static constexpr std::size_t enoughBars = 10;

    /// "saved 6/10 14:05" in the machine's time zone; empty for a text that is no moment of ISO 8601.
    static std::string fmtDate(const std::string& text);
    /// The number by which a person knows a slot.
    static std::string digit(const std::string& key) { return key.empty() ? key : key.substr(key.size() - 1); }

 private:
    struct WaitingView {
        ViewSetup view;
        double handAt;  // as it was when the view began to wait, and so the next one
        int timeframe;
    };
    void leave(const char* why);
    void giveUp(const char* why);
    void ask();
    void say(const std::optional<std::string>& text, bool failure);
    void finishRefresh(const std::optional<std::string>& problem);

    FirebaseRESTAuth& auth_;
    const PaneWork& work_;
    const Pane pane_;
    std::set<std::string> preferredApplied_;
    std::string pair_;  // that all of this is about
    bool signedIn_ = false, shown_ = false;
    std::optional<WaitingView> waiting_;
    std::vector<Done> refreshed_;  // who waits for the list
    Done saved_;
    WeakTask ofStay_, ofRefresh_;  // answers of this pair and session, and of the latest refresh
};

}  // namespace vmr
