// One pane's place at the paper account: its ticket, and what the controls of the simulator's panel do.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/Preferences.h"
#include "base/Signal.h"
#include "model/PaneWork.h"
#include "sim/SimTicket.h"

namespace vmr {

/// The panel shows what this and SimPanelFacts.h tell, and passes gestures on; the shell does the same without a panel.
/// What cannot be done is answered with the reason, which is also the `notice` for a while. Main thread.
class SimDesk {
 public:
    /// Whether unusual orders ask for a second press: one preference of the process, on unless it is "0".
    static constexpr const char* confirmKey = "vmr.sim.confirmUnusual";
    static constexpr double secondPressWithin = 3;  ///< real seconds
    static constexpr double readWithin = 0.4;       ///< a press sooner than that is the same double click
    static constexpr double noticeFor = 5;

    /// All outlive it. `root` gives that of the pane's chart.
    SimDesk(SimEngine& engine, Preferences& preferences, const PaneWork& work,
            std::function<const std::string&()> root);
    SimDesk(const SimDesk&) = delete;
    SimDesk& operator=(const SimDesk&) = delete;

    // What the panel shows --------------------------------------------------------------------------------------------
    /// The parts of the panel; `ticket` is also the heading, the question and the notice.
    enum class Part : std::uint8_t { ticket, account, positions, orders, performance, history, fills };
    /// Grows whenever a part may show something else; prices change no part. A view that keeps the number rebuilds only
    /// what moved on.
    std::uint64_t revision(Part part) const { return revisions_[static_cast<std::size_t>(part)]; }
    Signal<> changed;  ///< some revision has grown
    /// Grows when the account is replaced as a whole: nothing of it follows from what was shown before.
    std::uint64_t replacements() const { return replacements_; }
    /// To be called once a second while the panel shows: finds out what only the clock changes (`marketClosed`,
    /// `warning`, the day).
    void look();

    const SimEngine& engine() const { return engine_; }
    const std::string& root() const { return root_(); }
    std::string title() const;      ///< "Trade Simulator — NQ"
    std::string emptyText() const;  ///< all that the panel shows on a chart without a root; else empty
    bool marketClosed() const { return !engine_.marketOpen(); }
    /// In amber over the ticket, and its buttons are outlined: "Price is 212 s old"; empty where the price is fresh.
    std::string warning() const;
    /// Why nothing should be traded here: another process has the account.
    std::optional<std::string> readOnly() const;

    // The ticket ------------------------------------------------------------------------------------------------------
    const sim::SimTicket& ticket() const { return ticket_; }
    /// Values are brought into range. Edited fields lose their mark, and a question is taken back.
    void setTicket(sim::SimTicket changed);
    /// The panel opens or closes: the ticket and "Today" live no longer than that. While it is open, the chart's menu
    /// orders by its ticket.
    void setOpen(bool open);
    struct PriceField {
        std::string read;    ///< the price as it would be sent, "5,000.25"; empty without one
        bool wrong = false;  ///< marked: no price above 0
    };
    PriceField field(sim::OrderType type) const;
    void stepPrice(sim::OrderType type, int steps);

    /// A button of the ticket. An unusual order asks, and is entered when the same button is pressed again in time for
    /// the same order.
    std::optional<std::string> press(sim::Side side, sim::OrderType type);
    struct Question {
        sim::OrderRequest request;
        std::string text;       ///< "Buy limit 24,600 is 0.6 % through the market: press again"
        bool readable = false;  ///< it has stood long enough to be answered
    };
    const std::optional<Question>& question() const { return question_; }
    const std::optional<std::string>& notice() const { return notice_; }

    bool confirmsUnusual() const { return confirmsUnusual(preferences_); }
    static bool confirmsUnusual(const Preferences& preferences) { return preferences.get(confirmKey) != "0"; }
    static void setConfirmsUnusual(Preferences& preferences, bool on) { preferences.set(confirmKey, on ? "1" : "0"); }

    // The cards -------------------------------------------------------------------------------------------------------
    std::optional<std::string> flatten(const std::string& sym);
    /// `kind` is "SL" or "TP".
    std::optional<std::string> protect(const std::string& sym, std::string_view kind);
    std::optional<std::string> cancel(const Uuid& id);
    void cancelAll();

    bool perfToday() const { return perfToday_; }
    void setPerfToday(bool today);

 private:
    void raise(Part part) { ++revisions_[static_cast<std::size_t>(part)]; }
    void accountChanged(SimEngine::Field field);
    std::optional<std::string> say(std::optional<std::string> problem);
    void resetTicket();
    void syncTicket();
    void ask(const sim::OrderRequest& request, const std::string& text);

    SimEngine& engine_;
    Preferences& preferences_;
    const PaneWork& work_;
    const std::function<const std::string&()> root_;
    sim::SimTicket ticket_;
    std::array<bool, 2> pressedWithout_{};  // the limit and the stop field had no price when a button needed it
    std::optional<Question> question_;
    std::optional<std::string> notice_;
    int questions_ = 0, notices_ = 0;  // which one a timer ends
    bool perfToday_ = false, open_ = false;
    struct Seen {
        std::string root;
        bool closed = false;
        std::string warning;
        std::int64_t day = 0;
        bool operator==(const Seen&) const = default;
    };
    Seen seen_;
    std::array<std::uint64_t, 7> revisions_{};
    std::uint64_t replacements_ = 0;
    Connection account_;
};

/// What is asked before the account starts anew with `balance`: "Start again with 50,000.00? Lost for good: 1 open
/// position, 12 trades, 24 fills."
std::string simResetQuestion(const SimEngine& engine, double balance);

}  // namespace vmr
