// The lines of the paper account on one chart: what is drawn of them, and what a press hits.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Uuid.h"
#include "chart/ChartTrading.h"
#include "gpu/PointRect.h"
#include "market/Records.h"

namespace vmr {

/// One line. Places in points from the view's top left.
struct LineMark {
    enum class Kind : unsigned char { leg, order, position };

    Kind kind = Kind::leg;
    Uuid id;                  ///< the order's; of a planned leg its entry order's; none of a position
    std::string_view leg;     ///< "SL" or "TP", of planned legs
    bool buy = true;          ///< a buying order, a long position
    double price = 0, y = 0;  ///< `y` is NaN without a price range
    std::string label;
    bool drawn = false;     ///< it lies within the plot
    bool labelled = false;  ///< there is room for the label and the close mark
    PointRect closeMark;    ///< holds nothing where there is none

    /// Planned legs cannot be closed, positions cannot be dragged.
    bool closable() const { return kind != Kind::leg; }
    bool draggable() const { return kind != Kind::position; }
};

/// The lines of one frame in their order: planned legs lowest, then orders, the position on top; of two of a kind the
/// one that was entered first lies higher. They are drawn in this order, and a press hits what lies highest, so that
/// drawing and hitting cannot disagree. Building a list again allocates nothing once it has grown. Main thread.
class LineMarks {
 public:
    static constexpr double hitTolerance = 6;      ///< points above and below a line
    static constexpr double closeMarkHeight = 16;  ///< points; that of the labels as well
    static constexpr double closeMarkWidth = 18;

    /// Where lines end and their close marks lie, for a view `width` points wide: the marks span from 16 left of it to
    /// 2 right of it.
    static double closeMarkEdge(double width);
    /// Whether a line at `y` has room for its label and close mark in a view `height` points high.
    static bool closeMarkShown(double y, double height);

    /// The account's lines of `root` as they are now, seen by this camera.
    void build(const ChartTrading& trading, const std::string& root, const Viewport& viewport, double width,
               double height);
    void clear();
    /// Whether they were built for just this; the account may have changed since.
    bool builtFor(const ChartTrading& trading, std::string_view root, const Viewport& viewport, double width,
                  double height) const;

    /// Lowest first.
    std::span<const LineMark> list() const { return {marks_.data(), count_}; }

    struct Hit {
        const LineMark* mark = nullptr;  ///< null: the press hits no line
        bool closes = false;             ///< on its close mark; else on a line that can be dragged
    };
    /// Lines and marks are hit where they are drawn: within the plot, and not on the axes. A close mark is hit at a
    /// line's tolerance, and hides the lines and marks that lie under it. A position's line is hit on its close mark
    /// alone.
    Hit hit(double x, double y) const;
    /// The highest line near a place that can be dragged; null when there is none.
    const LineMark* draggableAt(double x, double y) const;

 private:
    bool inPlot(double x, double y) const;
    LineMark& add(LineMark::Kind kind, const Uuid& id, double price, bool buy);

    std::vector<LineMark> marks_;  // the first `count_`; the others keep their memory
    std::size_t count_ = 0;
    TradingLines lines_;
    const ChartTrading* trading_ = nullptr;  // null: nothing was built
    std::string root_;
    Viewport viewport_;
    double width_ = 0, height_ = 0;
};

}  // namespace vmr
