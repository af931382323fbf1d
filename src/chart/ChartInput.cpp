#include "chart/ChartInput.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "chart/AxisScale.h"
#include "perf/Perf.h"

namespace vmr {

namespace {
constexpr double never = -std::numeric_limits<double>::infinity();
}

ChartInput::ChartInput(ChartRenderer& renderer, SessionTime& session, const Clock& clock, MainLoop& main, Perf* perf)
    : renderer_(renderer),
      session_(session),
      clock_(clock),
      main_(main),
      perf_(perf),
      lastMoveSent_(never),
      lastDragApply_(never) {}

ChartInput::~ChartInput() { main_.cancel(liveTimer_); }

void ChartInput::setSize(double width, double height) {
    width_ = width;
    height_ = height;
}

double ChartInput::closeMarkEdge(double width) {
    return std::max(PlotArea{width, 0}.right() - Camera::maxBarW(width) - 80.0, 240.0);
}

bool ChartInput::closeMarkShown(double y, double height) {
    return y >= closeMarkHeight / 2 && y <= PlotArea{0, height}.bottom() - closeMarkHeight / 2;
}

double ChartInput::priceAt(double y) const {
    if (renderer_.candles().empty()) return std::numeric_limits<double>::quiet_NaN();
    return AxisScale::priceAtY(renderer_.camera().viewport(), y, height_);
}

bool ChartInput::isNear(double price, double y) const {
    return std::abs(AxisScale::yFor(renderer_.camera().viewport(), price, height_) - y) <= hitTolerance;  // not for NaN
}

bool ChartInput::onCloseColumn(double x) const {
    const double edge = closeMarkEdge(width_);
    return x >= edge - 16 && x <= edge + 2;
}

const TradingLines& ChartInput::lines() const {
    if (trades() && !renderer_.candles().empty()) {
        trading->lines(simRoot, lines_);
    } else {
        lines_.position.reset();
        lines_.orders.clear();
        lines_.legs.clear();
    }
    return lines_;
}

const OrderLine* ChartInput::orderLine(double nearY) const {
    for (const OrderLine& order : lines_.orders)
        if (isNear(order.price, nearY)) return &order;
    return nullptr;
}

std::optional<Uuid> ChartInput::simOrder(double nearY) const {
    const OrderLine* line = orderLine(nearY);
    return line ? std::optional(line->id) : std::nullopt;
}

std::optional<std::pair<Uuid, std::string_view>> ChartInput::simProjLeg(double nearY) const {
    for (const ProjectedLeg& leg : lines_.legs)
        if (isNear(leg.price, nearY)) return std::pair(leg.id, leg.leg);
    return std::nullopt;
}

bool ChartInput::positionIsNear(double y) const { return lines_.position && isNear(lines_.position->avg, y); }

bool ChartInput::markIsShown(double price) const {
    return closeMarkShown(AxisScale::yFor(renderer_.camera().viewport(), price, height_), height_);
}

bool ChartInput::onOrderMark(ChartPoint at) const {
    const OrderLine* line = orderLine(at.y);
    return line && onCloseColumn(at.x) && markIsShown(line->price);
}

bool ChartInput::onPositionMark(ChartPoint at) const {
    return onCloseColumn(at.x) && positionIsNear(at.y) && markIsShown(lines_.position->avg);
}

void ChartInput::mouseMoved(ChartPoint at) {
    lines();
    const bool order = simOrder(at.y).has_value();
    const bool onMark = onPositionMark(at) || onOrderMark(at);
    cursorOnRuler_ = plot().onPriceAxis(at.x) || order || simProjLeg(at.y).has_value();
    const ChartCursor cursor = onMark           ? ChartCursor::pointingHand
                               : cursorOnRuler_ ? ChartCursor::resizeUpDown
                                                : ChartCursor::arrow;
    if (std::exchange(cursor_, cursor) != cursor && onCursor) onCursor(cursor);

    const double now = clock_.monotonic();
    if (now - lastMoveSent_ < pace) return;
    lastMoveSent_ = now;
    if (onMouseMove) onMouseMove(at);
}

void ChartInput::mouseExited() {
    if (onMouseMove) onMouseMove(std::nullopt);
}

void ChartInput::mouseDown(ChartPoint at) {
    lines();
    const auto order = simOrder(at.y);
    const bool position = onPositionMark(at);
    closedLine_ = position || onOrderMark(at);
    if (position) return trading->flatten(simRoot);
    if (closedLine_) return trading->cancel(*order);
    if (order) {
        dragOrderId_ = order;
        return;
    }
    if (const auto leg = simProjLeg(at.y)) {
        dragProjLeg_ = leg;
        return;
    }
    lastDrag_ = at;
}

void ChartInput::doubleClick() {
    if (lastDrag_) renderer_.setAutoY(true);  // it took no line and closed none
}

void ChartInput::mouseDragged(ChartPoint at) {
    if (closedLine_) return;
    if (draggingLine()) {
        const double price = priceAt(at.y);
        if (!std::isfinite(price) || !trading) return;
        if (dragOrderId_) return trading->modify(*dragOrderId_, price);
        return trading->modifyProjectedLeg(dragProjLeg_->first, dragProjLeg_->second, price);
    }
    beginLiveRefresh();
    if (lastDrag_) {
        pendingDX_ += at.x - lastDrag_->x;
        pendingDY_ += at.y - lastDrag_->y;
    }
    lastDrag_ = at;
    const double now = clock_.monotonic();
    if (now - lastDragApply_ < pace) return;
    lastDragApply_ = now;
    flushDrag(at);
}

double ChartInput::barsFor(double dx) const {
    return -(dx * (renderer_.camera().visibleCount / std::max(width_, 1.0)));
}

void ChartInput::flushDrag(ChartPoint at) {
    if (pendingDX_ == 0 && pendingDY_ == 0) return;
    if (perf_) perf_->bump("flushDrag");
    const double dx = std::exchange(pendingDX_, 0), dy = std::exchange(pendingDY_, 0);
    renderer_.setInteracting(true);
    if (plot().onPriceAxis(at.x)) return renderer_.zoomPrice(std::clamp(1 + dy * 0.005, 0.6, 1.6));
    if (dx != 0) renderer_.pan(barsFor(dx));
    if (dy != 0) renderer_.panByPrice(dy, height_);
}

void ChartInput::mouseUp(ChartPoint at) {
    if (dragProjLeg_) return dragProjLeg_.reset();
    if (dragOrderId_) return dragOrderId_.reset();
    flushDrag(at);
    lastDrag_.reset();
    renderer_.setInteracting(false);
    endLiveRefresh();
    renderer_.redraw();
}

void ChartInput::scrollWheel(double dx, double dy, bool precise, bool shift) {
    if (!std::isfinite(dx) || !std::isfinite(dy)) return;
    beginLiveRefresh();
    const double factor = std::clamp(1 - dy * (precise ? 0.0035 : 0.06), 0.6, 1.6);
    if (shift) return renderer_.zoomPrice(factor);
    if (std::abs(dx) < std::abs(dy)) {
        renderer_.zoom(factor);
        renderer_.zoomPrice(factor);
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
