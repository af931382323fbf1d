// What a chart hears from pointer, wheel, pinch and keys: translated, and handed to the chart's own rules.
#include <QCursor>
#include <QGuiApplication>
#include <QNativeGestureEvent>
#include <QQuickWindow>
#include <QScreen>
#include <QVariantMap>
#include <cmath>

#include "ui/chart/ChartItem.h"
#include "ui/chart/ChartItemDrawing.h"

namespace vmr {

namespace {
ChartPoint pointOf(const QSinglePointEvent& event) { return {event.position().x(), event.position().y()}; }

// Some platforms give the other axis' deltas with Alt.
bool altSwapsAxes() {
    static const QString platform = QGuiApplication::platformName();
    return platform == QLatin1String("xcb") || platform == QLatin1String("windows");
}

Qt::CursorShape shapeOf(ChartCursor cursor) {
    switch (cursor) {
        case ChartCursor::resizeUpDown:
            return Qt::SizeVerCursor;
        case ChartCursor::pointingHand:
            return Qt::PointingHandCursor;
        case ChartCursor::arrow:
            break;
    }
    return Qt::ArrowCursor;
}
}  // namespace

void ChartItem::makeInput() {
    const PaneViewModel::Surroundings none;
    const auto& at = pane_ ? pane_->surroundings() : none;
    Drawing& own = *drawing_;
    own.drive.reset();
    setLive(false);  // of the input before
    MainLoop& main = at.main ? *at.main : own.loop;
    own.input =
        std::make_unique<ChartInput>(own.renderer, own.session, at.clock ? *at.clock : own.clock, main, at.perf);
    own.input->setSize(width(), height());
    own.input->trading = at.trading;
    own.tradingLines.trading = at.trading;
    own.renderer.perf = at.perf;
    setPerf(at.perf, at.bench.input);
    own.input->onMouseMove = [this](std::optional<ChartPoint> point) { pointerMoved(point); };
    own.input->onCursor = [this](ChartCursor cursor) { setCursor(shapeOf(cursor)); };
    own.input->onMarketClosedOrder = [this] {
        if (pane_ && pane_->chart.actions().marketClosedOrder) pane_->chart.actions().marketClosedOrder();
    };
    own.input->onLiveRefresh = [this, print = at.print](bool on) {
        const auto* screen = window() ? window()->screen() : nullptr;
        if (on && print)
            print("[perf] liveRefresh ON — frame clock @ up to " +
                  std::to_string(std::lround(screen ? screen->refreshRate() : 60)) + " Hz");
        setLive(on);
    };
    if (at.bench.drives() && at.perf && at.print)
        own.drive = std::make_unique<PerfDrive>(own.renderer, *own.input, main, *at.perf, at.bench, at.print, at.quit);
}

CrosshairState* ChartItem::crosshair() { return &drawing_->crosshair; }

// Where it is again told while the chart moves below it; what it is over then changes with the frame.
void ChartItem::pointerMoved(std::optional<ChartPoint> point) {
    if (point && drawing_->crosshair.mousePoint() == point) return;
    drawing_->crosshair.setMousePoint(point);
    updateCrosshair();
}

void ChartItem::updateCrosshair() {
    const ChartRenderer& renderer = drawing_->renderer;
    const auto bars = renderer.camera().settled() ? renderer.candles() : std::span<const Candle>();
    drawing_->crosshair.update(renderer.camera().viewport(), bars, width(), height(), drawing_->session);
    if (renderer.perf && drawing_->crosshair.shown()) renderer.perf->bump("CrosshairHud");
}

void ChartItem::mousePressEvent(QMouseEvent* event) {
    forceActiveFocus(Qt::MouseFocusReason);
    const ChartPoint at = pointOf(*event);
    lastPress_ = at;
    if (event->button() == Qt::LeftButton) return drawing_->input->mouseDown(at);
    orderMenu_ = drawing_->input->orderMenu(at);
    orderMenuRoot_ = drawing_->input->simRoot;
    if (!orderMenu_.empty()) emit orderMenuRequested(at.x, at.y);
}

// Comes after a press of its own.
void ChartItem::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) drawing_->input->doubleClick();
}

void ChartItem::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton)) return;
    lastPress_ = pointOf(*event);
    if (drawing_->input->dragging() && !drawing_->input->draggingLine()) noteInput(event->timestamp());
    drawing_->input->mouseDragged(lastPress_);
}

void ChartItem::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) drawing_->input->mouseUp(pointOf(*event));
}

// The pointer was taken away in the middle of a drag, by a popup or another window.
void ChartItem::mouseUngrabEvent() {
    if (drawing_->input->dragging()) drawing_->input->mouseUp(lastPress_);
}

// The other axis' deltas come with Alt on some platforms, and with Shift on others.
void ChartItem::wheelEvent(QWheelEvent* event) {
    const bool precise = event->phase() != Qt::NoScrollPhase && !event->pixelDelta().isNull();
    QPointF delta = precise ? QPointF(event->pixelDelta()) : QPointF(event->angleDelta()) / 120.0;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool swapped = (altSwapsAxes() && (event->modifiers() & Qt::AltModifier)) || (shift && delta.y() == 0);
    if (swapped) delta = delta.transposed();
    noteInput(event->timestamp());
    drawing_->input->scrollWheel(delta.x(), delta.y(), precise, shift);
    event->accept();
}

void ChartItem::hoverEnterEvent(QHoverEvent* event) { drawing_->input->mouseMoved(pointOf(*event)); }

void ChartItem::hoverMoveEvent(QHoverEvent* event) { drawing_->input->mouseMoved(pointOf(*event)); }

void ChartItem::hoverLeaveEvent(QHoverEvent*) { drawing_->input->mouseExited(); }

bool ChartItem::event(QEvent* event) {
    if (event->type() == QEvent::NativeGesture) {
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            magnify(gesture->value());
            return true;
        }
    }
    return FrameItem::event(event);
}

void ChartItem::magnify(qreal magnification) { drawing_->input->magnify(magnification); }

void ChartItem::keyPressEvent(QKeyEvent* event) {
    constexpr double step = 0.1, zoom = 1.15;  // shares of the view
    ChartInput& input = *drawing_->input;
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) return event->ignore();
    switch (event->key()) {
        case Qt::Key_Left:
            return input.panBy(-step, 0);
        case Qt::Key_Right:
            return input.panBy(step, 0);
        case Qt::Key_Up:
            return input.panBy(0, step);
        case Qt::Key_Down:
            return input.panBy(0, -step);
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            return input.zoomBy(1 / zoom);
        case Qt::Key_Minus:
            return input.zoomBy(zoom);
        case Qt::Key_Home:
            return input.toLiveEdge();
        default:
            event->ignore();
    }
}

QVariantList ChartItem::orderMenu() const {
    QVariantList list;
    for (const OrderMenuItem& item : orderMenu_)
        list.push_back(QVariantMap{{QStringLiteral("text"), QString::fromStdString(item.text)},
                                   {QStringLiteral("separator"), item.action == OrderMenuItem::Action::separator}});
    return list;
}

void ChartItem::chooseOrder(int index) {
    if (index < 0 || static_cast<std::size_t>(index) >= orderMenu_.size()) return;
    if (orderMenuRoot_ != drawing_->input->simRoot) return;  // its prices are those of another chart
    drawing_->input->choose(orderMenu_[static_cast<std::size_t>(index)]);
}

}  // namespace vmr
