// What the cards of the simulator's panel show, as texts and numbers. No toolkit.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/SimTicket.h"

namespace vmr {

/// The account bar. Prices move them without a notice, as they do open results: read them once a second.
struct SimAccountFacts {
    double balance = 0, equity = 0, dayPnL = 0;
    std::size_t unpriced = 0;  ///< open positions that count for nothing, since their root has no price yet
    bool operator==(const SimAccountFacts&) const = default;
};
SimAccountFacts simAccountFacts(const SimEngine& engine);

struct SimPositionRow {
    std::string root;
    bool isLong = false;
    std::string size;      ///< "LONG 2"
    std::string contract;  ///< the position's, "NQM6", where the root follows another by now; else empty
    std::string average;   ///< "24,600.25"
    std::optional<std::string> addSl, addTp{};  ///< the buttons' texts; none: not shown
    std::string name() const { return contract.empty() ? root : root + " · " + contract; }
    bool operator==(const SimPositionRow&) const = default;
};
/// By root, without flat ones.
std::vector<SimPositionRow> simPositionRows(const SimEngine& engine, const sim::SimTicket& ticket);
/// The open result of a row, "+10.00", and whether it is a gain. Changes with prices.
struct SimPnl {
    std::string text;
    bool gain = true;
    bool operator==(const SimPnl&) const = default;
};
SimPnl simPnl(const SimEngine& engine, const std::string& root);

struct SimOrderRow {
    Uuid id;
    bool buys = false;
    std::string side;             ///< "BUY", "SELL"
    std::string qty, root, type;  ///< the type as "stopLimit"
    std::string price;            ///< empty without one
    std::string tag;              ///< "SL", "TP" or empty
    bool operator==(const SimOrderRow&) const = default;
};
std::vector<SimOrderRow> simOrderRows(const SimEngine& engine);

/// A finished trade on the equity curve.
struct SimCurvePoint {
    double result = 0;    ///< of all trades up to it, after fees
    double drawdown = 0;  ///< below the highest result before it, 0 or above
    double balance = 0;   ///< of the account behind it, without what is open
    sim::Date at = 0;
    bool operator==(const SimCurvePoint&) const = default;
};
struct SimMetric {
    std::string caption, value;
    bool operator==(const SimMetric&) const = default;
};
struct SimDay {
    std::int64_t day = 0;  ///< of the machine's calendar
    std::string name;      ///< "Nov 22"
    double pnl = 0;        ///< after fees
    std::string text;
    bool operator==(const SimDay&) const = default;
};
struct SimPerformance {
    std::vector<SimMetric> metrics;
    std::string exits;                 ///< "Exits: SL 2 · TP 1 · Manual 4 · Fees 15.00"
    std::vector<SimCurvePoint> curve;  ///< oldest first
    std::vector<SimDay> days;          ///< newest first, those with trades, at most 10; of all trades
    bool operator==(const SimPerformance&) const = default;
};
/// Of the trades that the account still has, or with `today` of those closed on the machine's calendar day.
SimPerformance simPerformance(const SimEngine& engine, bool today);

/// Where the curve lies in a plot of 1 by 1 whose y grows downward. Empty for fewer than 2 points.
struct SimCurvePlot {
    struct Point {
        double x = 0, y = 0;
        double peak = 0;  ///< the height of the drawdown's upper edge
        bool operator==(const Point&) const = default;
    };
    std::vector<Point> points;
    double base = 0;  ///< of the value 0
    bool gain = true;
};
SimCurvePlot simCurvePlot(const std::vector<SimCurvePoint>& curve);
/// The trade under a crosshair at `x`, 0 to 1: "Trade 3 · Nov 22 14:05 · 50,120.00". Nothing without a curve.
struct SimCurveSpot {
    std::size_t index = 0;
    std::string text;
};
std::optional<SimCurveSpot> simCurveSpot(const std::vector<SimCurvePoint>& curve, double x);

struct SimHistoryRow {
    Uuid id;
    std::string time, root;
    std::string side;  ///< "BUY" for a long
    std::string qty, prices, result;
    bool gain = true;
    bool operator==(const SimHistoryRow&) const = default;
};
struct SimFillRow {
    Uuid id;
    std::string time, side, qty, root, price, tag;
    bool buys = true;
    bool operator==(const SimFillRow&) const = default;
};
constexpr std::size_t simHistoryShown = 15, simFillsShown = 12;
/// The newest first.
std::vector<SimHistoryRow> simHistoryRows(const SimEngine& engine, std::size_t most = simHistoryShown);
std::vector<SimFillRow> simFillRows(const SimEngine& engine, std::size_t most = simFillsShown);

// Headings: "POSITIONS (2)", "HISTORY (40) · 55% win".
std::string simPositionsHeading(const SimEngine& engine);
std::string simOrdersHeading(const SimEngine& engine);
std::string simHistoryHeading(const SimEngine& engine);

}  // namespace vmr
