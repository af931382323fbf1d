// Turns pointer, wheel, pinch and key events into camera moves and actions on the paper account.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "chart/ChartRenderer.h"
#include "chart/ChartTrading.h"
#include "chart/LineMarks.h"
#include "chart/PointerDrag.h"
#include "chart/PointerReports.h"
#include "gpu/PlotArea.h"
#include "market/SessionTime.h"

namespace vmr {

class Perf;

enum class ChartCursor : unsigned char { arrow, resizeUpDown, pointingHand };

/// An entry of the order menu.
struct OrderMenuItem {
    enum class Action : unsigned char { separator, note, setSL, setTP, order, cancelAll };  ///< a note does nothing
    Action action = Action::separator;
    std::string text;
    double price = 0;
    std::string_view side;  ///< "buy" or "sell", for orders
    std::string_view type;  ///< "limit" or "stop", for orders
};

/// The input rules of one chart, without a toolkit. Main thread. Nothing happens on prices that are not finite, such as
/// those of an empty chart or of one that no frame has shown. Events may come at any rate: camera steps of a drag and
/// pointer reports are made at most 120 times a second, drags of orders and the wheel with each event.
class ChartInput {
 public:
    static constexpr double pace = PointerReports::pace;  ///< seconds between steps
    static constexpr double hold = 0.18;  ///< seconds that frames go on after the last drag, wheel or pinch

    /// All must outlive it; `perf` may be null.
    ChartInput(ChartRenderer& renderer, SessionTime& session, const Clock& clock, MainLoop& main, Perf* perf);
    ~ChartInput();
    ChartInput(const ChartInput&) = delete;
    ChartInput& operator=(const ChartInput&) = delete;

    std::string simRoot;              ///< empty: no trading on this chart
    ChartTrading* trading = nullptr;  ///< null: none at all
    /// The account's lines in the last frame, which a press is meant for; null: no layer draws them. Where they belong
    /// to another camera, size or root than now, the lines are found anew from the account.
    const LineMarks* drawnMarks = nullptr;
    PointerReports pointer;                     ///< where the crosshair is
    std::function<void(ChartCursor)> onCursor;  ///< when it changes
    std::function<void()> onMarketClosedOrder;
    /// From true to false the host draws a frame at each refresh of the screen.
    std::function<void(bool)> onLiveRefresh;

    void setSize(double width, double height);

    void mouseMoved(ChartPoint at);
    void mouseExited();
    void mouseDown(ChartPoint at);
    /// The button is down on what shows the same time beside the chart: a drag moves time alone.
    void mouseDownOnTime(ChartPoint at);
    /// The last `mouseDown` was the second of a double click.
    void doubleClick();
    void mouseDragged(ChartPoint at);
    void mouseUp(ChartPoint at);
    /// Ends the drag of a line and brings it back to where it was. False when none is dragged.
    bool takeBack();
    /// Ends the drag of a line whose order is gone, by a fill or a person, or whose root has another contract's prices
    /// now; nothing of it is changed.
    void endLostDrag();
    /// What the button holds is no longer there: lets go, and what the pointer still does until the next press is
    /// nothing.
    void letGo();
    /// `precise`: deltas in points, of a device that scrolls in phases; else in lines.
    void scrollWheel(double dx, double dy, bool precise, bool shift);
    /// The same beside the chart: price stays what it is.
    void scrollTime(double dx, double dy, bool precise);
    void magnify(double magnification);
    // Keys: shares of the view, and its time zoom.
    void panBy(double shareOfWidth, double shareOfHeight);
    void panByPoints(double dy);  ///< of price; positive shows higher prices
    void zoomBy(double factor);
    void toLiveEdge();

    /// The menu of a right click; empty when there is to be none.
    std::vector<OrderMenuItem> orderMenu(ChartPoint at) const;
    void choose(const OrderMenuItem& item);

    bool liveRefresh() const { return liveRefresh_; }
    bool cursorOnRuler() const { return cursorOnRuler_; }
    /// The order or leg whose line is being dragged.
    bool draggingLine() const { return drag_.holdsLine(); }
    /// Likewise, once it has moved.
    std::optional<DraggedLine> draggedLine() const;
    /// The button is down and moves the chart or a line.
    bool dragging() const { return drag_.holds() != PointerDrag::Holds::nothing; }

    void beginLiveRefresh();
    void endLiveRefresh();

 private:
    PlotArea plot() const { return {width_, height_}; }
    double priceAt(double y) const;
    const LineMarks& marks();
    void close(const LineMark& mark);
    void dragLine(ChartPoint at);
    bool lineIsThere();
    void flushDrag(ChartPoint at);
    double barsFor(double dx) const;
    void wheel(double dx, double dy, bool precise, bool time, bool price);
    bool marketIsClosed() const;
    bool trades() const { return trading != nullptr && !simRoot.empty(); }

    ChartRenderer& renderer_;
    SessionTime& session_;
    const Clock& clock_;
    MainLoop& main_;
    Perf* perf_;
    double width_ = 0, height_ = 0;
    LineMarks freshMarks_;
    PointerDrag drag_;
    TradingLines account_;  // as it was looked at last
    std::string contract_;  // whose prices the dragged line's root had
    double lastDragApply_;
    bool liveRefresh_ = false;
    double liveReleaseAt_ = 0;
    SerialQueue::TimerId liveTimer_ = SerialQueue::noTimer;
    ChartCursor cursor_ = ChartCursor::arrow;
    bool cursorOnRuler_ = false;
};

}  // namespace vmr
