#include "ui/chart/OscillatorItem.h"

#include <QNativeGestureEvent>

namespace vmr {

OscillatorItem::OscillatorItem(QQuickItem* parent) : FrameItem(parent) {
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptHoverEvents(true);
}

OscillatorItem::~OscillatorItem() {
    if (chart_) chart_->setOscillator(nullptr);
}

void OscillatorItem::setChart(ChartItem* chart) {
    if (chart == chart_) return;
    if (chart_) chart_->setOscillator(nullptr);
    chart_ = chart;
    if (chart_) chart_->setOscillator(this);
    requestFrame();
    emit chartChanged();
}

void OscillatorItem::ask(ChartView::Need need) {
    if (need == ChartView::Need::calm)
        requestCalmFrame();
    else if (need == ChartView::Need::join)
        joinFrame();
    else
        requestFrame();
}

bool OscillatorItem::record(Gpu&, QSizeF size, double pixelRatio, double) {
    const auto input = chart_ ? chart_->oscillatorInput() : std::nullopt;
    pane_.perf = chart_ ? chart_->renderer().perf : nullptr;
    shows_ = input ? std::optional(input->viewport) : std::nullopt;
    const bool moves = pane_.record(input, size.width(), size.height(), pixelRatio);
    if (chart_) chart_->oscillatorDrawn();
    return moves;
}

bool OscillatorItem::interacting() const { return chart_ && chart_->handsOn(); }

void OscillatorItem::tellHeight() {
    if (chart_) chart_->oscillatorResized();
}

void OscillatorItem::geometryChange(const QRectF& now, const QRectF& before) {
    FrameItem::geometryChange(now, before);
    if (now.size() != before.size()) tellHeight();
}

void OscillatorItem::itemChange(ItemChange change, const ItemChangeData& data) {
    FrameItem::itemChange(change, data);
    if (change == ItemVisibleHasChanged) tellHeight();
}

void OscillatorItem::mousePressEvent(QMouseEvent* event) {
    if (chart_) chart_->dragTime(*event);
}

void OscillatorItem::mouseMoveEvent(QMouseEvent* event) {
    if (chart_) chart_->dragTime(*event);
}

void OscillatorItem::mouseReleaseEvent(QMouseEvent* event) {
    if (chart_) chart_->dragTime(*event);
}

void OscillatorItem::mouseUngrabEvent() {
    if (chart_) chart_->endDrag();
}

void OscillatorItem::wheelEvent(QWheelEvent* event) {
    if (chart_) chart_->wheelOverTime(*event);
}

void OscillatorItem::pointAt(std::optional<ChartPoint> point) {
    if (chart_) chart_->pointAtOscillator(point);
}

void OscillatorItem::hoverEnterEvent(QHoverEvent* event) { hoverMoveEvent(event); }

void OscillatorItem::hoverMoveEvent(QHoverEvent* event) {
    pointAt(ChartPoint{event->position().x(), event->position().y()});
}

void OscillatorItem::hoverLeaveEvent(QHoverEvent*) { pointAt(std::nullopt); }

bool OscillatorItem::event(QEvent* event) {
    if (event->type() == QEvent::NativeGesture && chart_) {
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            chart_->magnify(gesture->value());
            return true;
        }
    }
    return FrameItem::event(event);
}

}  // namespace vmr
