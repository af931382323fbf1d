// What is shown of each strike at the chart's edges, kept from frame to frame, and the rows that it moves to.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "chart/Camera.h"
#include "gpu/PlotArea.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr {

inline constexpr double pixelSettle = 0.5;  ///< points; a distance at or under this snaps

/// A bar as shown: width and row in points, and its metric.
struct BarDisp {
    double w = 0, py = 0, net = 0;
};

/// A wave's point as shown, in points from the view's top left.
struct WaveDisp {
    double x = 0, py = 0;
};

/// Takes a quantity out of a row.
using StrikeMetric = double (*)(const StrikeRow&);

/// The view in points, and how far this frame eases.
struct EdgeStage {
    double viewW = 0, viewH = 0;
    bool snapLerps = false;
    double alphaX = 1, alphaY = 1;
    double pixelRatio = 1;

    double axisX() const { return PlotArea{viewW, viewH}.right(); }
    /// The widest bar and the widest swing of a wave.
    double maxW() const { return Camera::maxBarW(viewW); }
    float clipX(double x) const { return static_cast<float>(x * (2.0 / viewW) - 1.0); }
    float clipY(double y) const { return static_cast<float>(1.0 - y * (2.0 / viewH)); }
};

/// A row that has a place on the screen.
struct PlacedRow {
    double strike = 0;
    double py = 0;  ///< points from the top
    const StrikeRow* row = nullptr;
};

/// Rows by ascending strike, each strike once: the last row of it stands. One without a place is left out. `yScale` and
/// `yOffset` take a price to clip space, `ratio` a strike to a price.
void placeRows(std::span<const StrikeRow> rows, double ratio, double yScale, double yOffset, double viewH,
               std::vector<PlacedRow>& placed);

/// Greatest |metric|; what is not a number does not count.
double greatest(std::span<const StrikeRow> rows, StrikeMetric metric);

/// Whether a greatest value can scale others.
bool scales(double maxAbs);

/// Moves `value` back to `alpha` of the way from `from` to itself. False, with `value` left alone, when that is near.
bool ease(double& value, double from, double alpha);

/// Display records by strike, flat and sorted. No allocation once its memory has grown.
template <class Disp>
class StrikeMap {
 public:
    struct Entry {
        double strike = 0;
        Disp disp;
    };

    std::size_t size() const { return entries_.size(); }
    void clear() { entries_.clear(); }

    const Disp* find(double strike) const {
        const auto found = std::lower_bound(entries_.begin(), entries_.end(), strike,
                                            [](const Entry& entry, double s) { return entry.strike < s; });
        return found != entries_.end() && found->strike == strike ? &found->disp : nullptr;
    }

    /// One pass over the rows and over what was there. `seen(row, old, next)` fills `next`, with `old` null for a new
    /// strike; when it returns false the row counts as absent. `unseen(disp)` changes a record whose strike is absent
    /// and tells whether it stays.
    template <class Seen, class Unseen>
    void merge(std::span<const PlacedRow> rows, Seen&& seen, Unseen&& unseen) {
        next_.clear();
        auto old = entries_.begin();
        const auto leave = [&](Entry& entry) {
            if (unseen(entry.disp)) next_.push_back(entry);
        };
        for (const PlacedRow& row : rows) {
            for (; old != entries_.end() && old->strike < row.strike; ++old) leave(*old);
            const bool known = old != entries_.end() && old->strike == row.strike;
            Disp next;
            if (!seen(row, known ? &old->disp : nullptr, next)) continue;
            next_.push_back({row.strike, next});
            if (known) ++old;
        }
        for (; old != entries_.end(); ++old) leave(*old);
        std::swap(entries_, next_);
    }

    /// The records from the top of the view down; valid until the map is used again.
    std::span<const Entry> byRow() {
        next_.assign(entries_.rbegin(), entries_.rend());
        const auto above = [](const Entry& a, const Entry& b) {
            return a.disp.py < b.disp.py || (a.disp.py == b.disp.py && a.strike > b.strike);
        };
        if (!std::is_sorted(next_.begin(), next_.end(), above)) std::sort(next_.begin(), next_.end(), above);
        return next_;
    }

 private:
    std::vector<Entry> entries_, next_;
};

/// All that the edge layers show.
struct EdgeDisplays {
    StrikeMap<BarDisp> gexDisp, dexDisp, secDisp;
    StrikeMap<WaveDisp> hfCallDisp, hfPutDisp, oiCallDisp, oiPutDisp;
};

}  // namespace vmr
