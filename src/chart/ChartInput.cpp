#include "chart/ChartInput.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "chart/AxisScale.h"
#include "perf/Perf.h"

namespace vmr {

namespace {
constexpr double never = -std::numeric_limits<double>::infinity();
}

ChartInput::ChartInput(ChartRenderer& renderer, SessionTime& session, const Clock& clock, MainLoop& main, Perf* perf)
    : pointer(clock, main),
      renderer_(renderer),
      session_(session),
      clock_(clock),
      main_(main),
      perf_(perf),
      lastDragApply_(never) {}

ChartInput::~ChartInput() { main_.cancel(liveTimer_); }

void ChartInput::setSize(double width, double height) {
    width_ = width;
    height_ = height;
}

double ChartInput::priceAt(double y) const {
    if (!renderer_.showsBars()) return std::numeric_limits<double>::quiet_NaN();
    return AxisScale::priceAtY(renderer_.camera().viewport(), y, height_);
}

const LineMarks& ChartInput::marks() {
    freshMarks_.clear();
    if (!trades() || !renderer_.showsBars()) return freshMarks_;
    const LineMarks::View view{trading, simRoot, renderer_.camera().viewport(), width_, height_};
    if (drawnMarks && drawnMarks->builtFor(view)) return *drawnMarks;
    freshMarks_.build(view);
    return freshMarks_;
}

void ChartInput::mouseMoved(ChartPoint at) {
    const LineMarks::Hit hit = marks().hit(at.x, at.y);
    cursorOnRuler_ = plot().onPriceAxis(at.x) || (hit.mark && hit.mark->draggable());
    const bool fixed = hit.mark && !trading->changeable();  // a press would do nothing
    const ChartCursor cursor = fixed            ? ChartCursor::arrow
                               : hit.closes     ? ChartCursor::pointingHand
                               : cursorOnRuler_ ? ChartCursor::resizeUpDown
                                                : ChartCursor::arrow;
    if (std::exchange(cursor_, cursor) != cursor && onCursor) onCursor(cursor);
    pointer.moved(at);
}

void ChartInput::mouseExited() { pointer.left(); }

void ChartInput::mouseDown(ChartPoint at) {
    drag_.release();
    const LineMarks& lines = marks();
    const LineMarks::Hit hit = lines.hit(at.x, at.y);
    if (hit.closes) return close(*hit.mark);  // and moving the pointer then drags nothing
    if (!hit.mark) return drag_.take(at);
    if (!trading->mayChange()) return;
    drag_.take(*hit.mark, at);
    contract_ = lines.contract();
}

void ChartInput::mouseDownOnTime(ChartPoint at) {
    drag_.release();
    drag_.takeTime(at);
}

void ChartInput::close(const LineMark& mark) {
    if (mark.kind == LineMark::Kind::position) return trading->flatten(simRoot);
    const Uuid id = mark.id;  // what the account does next may build the marks anew
    trading->cancel(id);
}

void ChartInput::doubleClick() {
    if (drag_.holds() == PointerDrag::Holds::chart) renderer_.setAutoY(true);  // it took no line and closed none
}

void ChartInput::mouseDragged(ChartPoint at) {
    const bool begins = !drag_.begun();
    if (!drag_.moved(at)) return;
    if (drag_.holdsLine()) {
        if (begins) pointer.left();  // the badge and the tag tell where the line is
        return dragLine(at);
    }
    beginLiveRefresh();
    const double now = clock_.monotonic();
    if (now - lastDragApply_ < pace) return;
    lastDragApply_ = now;
    flushDrag(at);
}

// The account moves with the pointer, so that no tick finds the line elsewhere and every chart of the root shows it.
void ChartInput::dragLine(ChartPoint at) {
    endLostDrag();
    const double price = priceAt(at.y - drag_.beside());
    if (!drag_.holdsLine() || !std::isfinite(price)) return;
    const DraggedLine line = drag_.line();  // what the account does next may end the drag
    if (line.leg.empty())
        trading->modify(line.id, price);
    else
        trading->modifyProjectedLeg(line.id, line.leg, price);
    renderer_.redraw();
}

bool ChartInput::lineIsThere() {
    if (!trades()) return false;
    trading->lines(simRoot, account_);
    const DraggedLine& line = drag_.line();
    if (account_.contract != contract_) return false;
    if (line.leg.empty())
        return std::ranges::any_of(account_.orders, [&](const OrderLine& order) { return order.id == line.id; });
    return std::ranges::any_of(account_.legs,
                               [&](const ProjectedLeg& leg) { return leg.id == line.id && leg.leg == line.leg; });
}

void ChartInput::endLostDrag() {
    if (!drag_.holdsLine() || lineIsThere()) return;
    drag_.release();
    renderer_.redraw();
}

bool ChartInput::takeBack() {
    endLostDrag();
    if (!drag_.holdsLine()) return false;
    const PointerDrag drag = std::exchange(drag_, {});
    if (drag.begun()) trading->putBack(drag.line().id, drag.line().leg, drag.price());
    renderer_.redraw();
    return true;
}

std::optional<DraggedLine> ChartInput::draggedLine() const {
    return drag_.holdsLine() && drag_.begun() ? std::optional(drag_.line()) : std::nullopt;
}

double ChartInput::barsFor(double dx) const {
    return -(dx * (renderer_.camera().visibleCount / std::max(width_, 1.0)));
}

void ChartInput::flushDrag(ChartPoint at) {
    const auto [dx, dy] = drag_.takeMovement();
    if (dx == 0 && dy == 0) return;
    if (perf_) perf_->bump("flushDrag");
    renderer_.setInteracting(true);
    if (drag_.holds() == PointerDrag::Holds::time) return renderer_.pan(barsFor(dx));
    if (plot().onPriceAxis(at.x)) return renderer_.zoomPrice(std::clamp(1 + dy * 0.005, 0.6, 1.6));
    if (dx != 0) renderer_.pan(barsFor(dx));
    if (dy != 0) renderer_.panByPrice(dy, height_);
}

void ChartInput::mouseUp(ChartPoint at) {
    if (!drag_.holdsLine()) {
        flushDrag(at);
        return letGo();
    }
    const bool moved = drag_.begun();
    drag_.release();
    if (!moved) return;
    pointer.moved(at);
    renderer_.redraw();
}

void ChartInput::letGo() {
    drag_.release();
    renderer_.setInteracting(false);
    endLiveRefresh();
    renderer_.redraw();
}

void ChartInput::scrollWheel(double dx, double dy, bool precise, bool shift) { wheel(dx, dy, precise, !shift, true); }

void ChartInput::scrollTime(double dx, double dy, bool precise) { wheel(dx, dy, precise, true, false); }

void ChartInput::wheel(double dx, double dy, bool precise, bool time, bool price) {
    if (!std::isfinite(dx) || !std::isfinite(dy)) return;
    beginLiveRefresh();
    const double factor = std::clamp(1 - dy * (precise ? 0.0035 : 0.06), 0.6, 1.6);
    if (!time) return renderer_.zoomPrice(factor);
    if (std::abs(dx) < std::abs(dy)) {
        renderer_.zoom(factor);
        if (price) renderer_.zoomPrice(factor);
    } else {
        renderer_.pan(barsFor(dx));
    }
}

void ChartInput::magnify(double magnification) {
    beginLiveRefresh();
    renderer_.zoom(1 - magnification);
}

void ChartInput::panBy(double shareOfWidth, double shareOfHeight) {
    if (shareOfWidth != 0) renderer_.pan(shareOfWidth * renderer_.camera().visibleCount);
    if (shareOfHeight != 0) panByPoints(shareOfHeight * height_);
}

void ChartInput::panByPoints(double dy) { renderer_.panByPrice(dy, height_); }

void ChartInput::zoomBy(double factor) {
    if (factor > 0) renderer_.zoom(factor);
}

void ChartInput::toLiveEdge() { renderer_.pan(static_cast<double>(renderer_.candles().size())); }

void ChartInput::beginLiveRefresh() {
    liveReleaseAt_ = clock_.monotonic() + hold;
    if (liveRefresh_) return;
    liveRefresh_ = true;
    if (onLiveRefresh) onLiveRefresh(true);
    liveTimer_ = main_.every(0.05, 0.033, [this] {
        if (liveReleaseAt_ <= clock_.monotonic()) endLiveRefresh();
    });
}

void ChartInput::endLiveRefresh() {
    main_.cancel(std::exchange(liveTimer_, SerialQueue::noTimer));
    if (!std::exchange(liveRefresh_, false)) return;
    if (onLiveRefresh) onLiveRefresh(false);
    renderer_.redraw();
}

}  // namespace vmr
