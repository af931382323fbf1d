// Keeps the two panes of a window in step: camera and crosshair.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "base/WeakTask.h"
#include "chart/CameraPort.h"

namespace vmr {

class AppModel;

/// Two panes and whether they are in step. Main thread.
///
/// One pane leads: the one that a hand moved last, and after a change of symbol or timeframe the one that stayed. The
/// other one shows what the leader shows, as far as its own bars and width allow, from the same frame on. So nothing
/// comes back: what the follower publishes is either what it was given, or what its own bars did to it, and then the
/// leader's view is applied once more.
///
/// Panes of the same symbol show the same times, whatever their timeframes, and the same prices. With two symbols the
/// distance from the newest bar is the same, and each last price stays at the same height on a scale of its own.
class DualLink {
 public:
    // What moves the other pane: less than a pixel in most views does not.
    static constexpr double timeTolerance = 0.01;        ///< bars
    static constexpr double priceTolerance = 0.01;       ///< points ...
    static constexpr double priceShareTolerance = 5e-4;  ///< ... and at most this share of the range
    static constexpr double fracTolerance = 0.001;       ///< share of the height

    /// `main` must outlive it.
    explicit DualLink(MainLoop& main) : main_(main) {}
    ~DualLink() { unlink(); }
    DualLink(const DualLink&) = delete;
    DualLink& operator=(const DualLink&) = delete;

    /// Links these instead of the panes before, out of step. A pane that shuts down unlinks both.
    void link(AppModel& primary, AppModel& secondary);
    void unlink();
    /// Null while none are linked.
    AppModel* primary() const { return panes_[0].model; }
    AppModel* secondary() const { return panes_[1].model; }
    /// The other pane; null for one that is not linked.
    AppModel* peer(const AppModel& of) const;

    bool syncOn() const { return syncOn_; }
    /// Whether the panes show different symbols.
    bool crossSymbol() const;
    /// `syncOn`, the panes or one of their charts is another.
    Signal<> changed;

    /// Nothing where no panes are linked. Turned on, the other pane takes the view of `from`, the one in which it was
    /// asked for, null for the primary one.
    void toggleSync(AppModel* from = nullptr);
    /// Pins the last price in both panes while they are in step and show different symbols, and else in none. A change
    /// of chart does this by itself.
    void refreshSyncMode();

    /// Where the other pane's pointer is, while the panes are in step and show the same symbol.
    std::optional<ChartSpot> crosshair(const AppModel& of) const;
    /// How often the other pane's view was applied to this one; one that changes nothing does not count.
    std::uint64_t updates(const AppModel& of) const;

 private:
    struct Pane {
        AppModel* model = nullptr;
        bool joins = false;       ///< its chart is new and takes the other's view
        std::uint64_t chart = 0;  ///< the number of the chart whose bars came last
        std::uint64_t updates = 0;
        std::vector<Connection> links;
    };
    struct Reach {
        double first = 0, count = 0;
    };

    std::optional<std::size_t> indexOf(const AppModel& of) const;
    std::size_t follower() const { return 1 - leader_; }
    void watch(std::size_t pane);
    void moved(std::size_t pane);
    void chartChanged(std::size_t pane);
    void barsChanged(std::size_t pane);
    void join(std::size_t pane);
    void noteHands();
    void settleSoon();
    void settle();
    enum class Edge : unsigned char { leaders, own };  ///< which live edge a follower that rides one keeps to
    void mirror(Edge edge = Edge::leaders);
    bool mirrorTime(const ChartCamera& from, const ChartCamera& to, Edge edge);
    bool mirrorPrice(const Camera& from, const Camera& to);
    bool mirrorFrac(const Camera& from, const Camera& to);
    Reach reachOf(const ChartCamera& from, const ChartCamera& to) const;
    void showCrosshairs();

    MainLoop& main_;
    std::array<Pane, 2> panes_;
    bool syncOn_ = false;
    std::size_t leader_ = 0;
    double ledSince_ = 0;  ///< monotonic; an older move of a hand does not count
    bool settlePosted_ = false;
    WeakTask whileThere_;
};

}  // namespace vmr
