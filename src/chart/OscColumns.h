// Of a line whose points lie closer than they can be told apart, those that are seen.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>

#include "market/Records.h"

namespace vmr {

/// Where several points of a line share a column of the picture, passes on the highest and the lowest of them alone, in
/// their order, since the others would lie under these. Compares values; only what it passes on needs a place.
template <class Pass>
class OscColumns {
 public:
    /// `first` is the bar at the left edge, `barsAColumn` more than one. Calls `pass(bar, value, begins)`.
    OscColumns(double first, double barsAColumn, Pass pass)
        : first_(first), barsAColumn_(barsAColumn), pass_(std::move(pass)) {}

    /// Finite values of bars that follow each other; `begins` where they begin a line.
    void add(std::size_t bar, std::span<const OscPt> points, bool begins) {
        for (std::size_t i = 0; i < points.size(); begins = false) {
            const auto at = static_cast<double>(bar + i);
            if (begins || at >= end_) {
                flush();
                begins_ = begins;
                lowest_ = highest_ = {at, points[i].v};
                if (at >= endOf(++column_) || begins) column_ = std::floor((at - first_) / barsAColumn_);
                end_ = endOf(column_);
            }
            const std::size_t rest = points.size() - i;
            const std::size_t count = std::min(rest, barsUpTo(end_ - at));
            addToColumn(at, points.subspan(i, count));
            i += count;
        }
    }
    /// After the last point.
    void flush() {
        if (std::exchange(end_, nothing) == nothing) return;
        const bool falls = highest_.bar < lowest_.bar;
        const Point &one = falls ? highest_ : lowest_, &other = falls ? lowest_ : highest_;
        pass_(one.bar, one.value, begins_);
        if (one.bar != other.bar) pass_(other.bar, other.value, false);
    }

 private:
    struct Point {
        double bar = 0, value = 0;
    };
    static constexpr double nothing = -std::numeric_limits<double>::infinity();

    double endOf(double column) const { return first_ + (column + 1) * barsAColumn_; }
    /// The bars that begin within so many; at least one, whatever was rounded. Rounded up by hand: without a call.
    static std::size_t barsUpTo(double width) {
        const auto whole = static_cast<std::int64_t>(std::min(width, 1e9));
        return static_cast<std::size_t>(std::max<std::int64_t>(whole + (static_cast<double>(whole) < width), 1));
    }

    void addToColumn(double bar, std::span<const OscPt> points) {
        double low = lowest_.value, high = highest_.value;
        std::size_t lowAt = points.size(), highAt = points.size();
        for (std::size_t i = 0; i < points.size(); ++i) {
            const double value = points[i].v;  // chosen without jumps, which nobody could foresee
            lowAt = value < low ? i : lowAt;
            low = value < low ? value : low;
            highAt = value > high ? i : highAt;
            high = value > high ? value : high;
        }
        if (lowAt < points.size()) lowest_ = {bar + static_cast<double>(lowAt), low};
        if (highAt < points.size()) highest_ = {bar + static_cast<double>(highAt), high};
    }

    double first_, barsAColumn_;
    Pass pass_;
    double column_ = 0;     ///< counted from the left edge
    double end_ = nothing;  ///< where the column ends, in bars
    Point lowest_, highest_;
    bool begins_ = false;
};

}  // namespace vmr
