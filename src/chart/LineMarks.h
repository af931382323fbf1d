// The lines of the paper account on one chart: what is drawn of them, and what a press hits.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Uuid.h"
#include "chart/AxisScale.h"
#include "chart/ChartTrading.h"
#include "chart/LabelLayout.h"
#include "gpu/PointRect.h"
#include "market/Records.h"

namespace vmr {

/// The order or planned leg whose line is dragged.
struct DraggedLine {
    Uuid id;
    std::string_view leg;  ///< "SL" or "TP"; empty for an order
};

/// One line. Places in points from the view's top left; a rectangle without a width is none.
struct LineMark {
    enum class Kind : unsigned char { leg, order, position };

    Kind kind = Kind::leg;
    Uuid id;                  ///< the order's; of a planned leg its entry order's; none of a position
    std::string_view leg;     ///< "SL" or "TP", of planned legs
    bool good = true;         ///< in the colour of gains and buys, else in that of losses and sells
    double price = 0, y = 0;  ///< `y` is NaN without a price range
    std::string label;
    AxisScale::Label tagText;
    bool drawn = false;    ///< it lies within the plot
    bool dragged = false;  ///< and its label tells where it has come to
    PointRect badge;       ///< with the label; where there is room for it
    PointRect result;      ///< of a position: the part of its badge in which its open result is written
    PointRect closeMark;   ///< the end of the badge
    PointRect tag;         ///< on the price axis; lines of one price share that of the highest

    /// Planned legs cannot be closed, positions cannot be dragged.
    bool closable() const { return kind != Kind::leg; }
    bool draggable() const { return kind != Kind::position; }
};

/// The lines of one frame in their order: planned legs lowest, then orders, the position, and what is dragged on top;
/// of two of a kind the newer one lies higher. Badges whose lines are close stand side by side, the highest one's
/// nearest to the axis. All is drawn in this order, and a press hits what lies highest, so that drawing and hitting
/// cannot disagree. Building a list again allocates nothing once it has grown. Main thread.
class LineMarks {
 public:
    LineMarks() = default;
    LineMarks(const LineMarks&) = delete;
    LineMarks& operator=(const LineMarks&) = delete;

    static constexpr double hitTolerance = 6;  ///< points above and below a line
    static constexpr double badgeHeight = 18;  ///< points; that of close marks and tags as well
    static constexpr double closeMarkWidth = 18;

    /// Where badges end, for a view `width` points wide, is 2 points right of this: before the strike bars.
    static double closeMarkEdge(double width);

    /// What they are made for.
    struct View {
        const ChartTrading* trading = nullptr;
        std::string_view root;
        Viewport viewport{};
        double width = 0, height = 0;  ///< points
        bool operator==(const View&) const = default;
    };
    /// The account's lines as they are now, seen by this camera. The tags on the price axis leave `axisTaken` free.
    void build(const View& view, const std::optional<DraggedLine>& dragged = {}, const PointRect& axisTaken = {});
    void clear();
    /// Whether they were built for just this; the account may have changed since.
    bool builtFor(const View& view) const;

    /// Lowest first.
    std::span<const LineMark> list() const { return {marks_.data(), count_}; }
    /// Whose prices the account had; empty where that was not known.
    const std::string& contract() const { return lines_.contract; }
    double tickValue() const { return lines_.tickValue; }

    struct Hit {
        const LineMark* mark = nullptr;  ///< null: the press hits no line
        bool closes = false;             ///< on its close mark; else on a line that can be dragged
    };
    /// Badges, tags and lines are hit where they are drawn, lines within the plot at their tolerance. Badges hide the
    /// lines that lie under them. Of a position only its close mark is hit.
    Hit hit(double x, double y) const;

 private:
    LineMark& add(LineMark::Kind kind, const Uuid& id, double price, bool good);
    void addLeg(const ProjectedLeg& leg);
    void addPosition(const PositionLine& position);
    void raise(const DraggedLine& dragged);
    void placeBadges();
    void placeTags(const PointRect& taken);

    std::vector<LineMark> marks_;  // the first `count_`; the others keep their memory
    std::size_t count_ = 0;
    TradingLines lines_;
    LabelLayout tags_;
    std::vector<std::size_t> tagged_;  // the marks of `tags_`
    View view_;                        // its root is `root_`; without an account nothing was built
    std::string root_;
};

}  // namespace vmr
