// What a chart hears from pointer, wheel, pinch and keys: translated, and handed to the chart's own rules.
#include <QCursor>
#include <QGuiApplication>
#include <QNativeGestureEvent>
#include <QQuickWindow>
#include <QVariantMap>
#include <cmath>

#include "perf/Perf.h"
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

void ChartItem::showCursor(ChartCursor cursor) { setCursor(shapeOf(cursor)); }

CrosshairState* ChartItem::crosshair() { return &drawing_->crosshair; }

CrosshairState* ChartItem::peerCrosshair() { return &drawing_->peerCrosshair; }

HudState* ChartItem::hud() { return &drawing_->hud; }

void ChartItem::updateHud() {
    const auto line = drawing_->view->hud();
    drawing_->hud.update(line, line ? drawing_->view->litStrike(*line, height()) : std::nullopt,
                         drawing_->view->axes().labels().countdown);
}

void ChartItem::setClockBox(const QRectF& box) {
    clockBox_ = box;
    if (drawing_->covered.setClock(box)) coverSoon();
}

void ChartItem::lineLaidOut(QQuickItem* line) {
    if (line && drawing_->covered.setLine(*line, *this)) coverSoon();
}

// Not at once: the line may change while a frame is recorded, which could not ask for the next one.
void ChartItem::coverSoon() { QMetaObject::invokeMethod(this, &ChartItem::coverTexts, Qt::QueuedConnection); }

void ChartItem::coverTexts() { drawing_->view->setCovered(drawing_->covered.boxes(drawing_->hud.shown())); }

EntryPillState* ChartItem::entryPill() { return &drawing_->pill; }

// The timer rests where nobody sees the result; the frame that comes with the window's next exposure starts it again.
void ChartItem::updateEntryPill() {
    const bool seen = isVisible() && window() && window()->isExposed();
    const auto pill = drawing_->view->entryPill();
    drawing_->pill.update(pill);
    if (!pill || !seen)
        drawing_->pillTimer.stop();
    else if (!drawing_->pillTimer.isActive())
        drawing_->pillTimer.start();
}

// Where it is again told while the chart moves below it; what it is over then changes with the frame.
void ChartItem::pointerMoved(std::optional<ChartPoint> point) {
    pointerComes_ = point;
    if (point) return joinNextFrame();
    drawing_->crosshair.setMousePoint(point);
    updateCrosshair();
    updateHud();
}

void ChartItem::frameBegins() {
    if (std::exchange(pillComes_, false)) updateEntryPill();
    CrosshairState& own = drawing_->crosshair;
    const auto point = std::exchange(pointerComes_, std::nullopt);
    const auto below = std::exchange(drawing_->oscPointerComes, std::nullopt);
    const bool moved = point && own.mousePoint() != point, movedBelow = below && own.oscHoverPoint() != below;
    if (!moved && !movedBelow) return;
    if (moved) own.setMousePoint(point);
    if (movedBelow) showOscillatorPointer(below);
    updateCrosshair();
    updateHud();
}

void ChartItem::showOscillatorPointer(const std::optional<ChartPoint>& point) {
    const auto input = drawing_->view->oscillator();
    const double height = drawing_->view->below.height;
    drawing_->crosshair.setOscHoverPoint(point, height,
                                         input ? OscGeometry::labels(input->content, height) : OscGeometry::Labels{});
}

void ChartItem::oscillatorDrawn() {
    CrosshairState& own = drawing_->crosshair;
    if (!own.belowChart()) return;
    showOscillatorPointer(own.oscHoverPoint());
    refresh(own);
}

// At the same pace as over the chart.
void ChartItem::watchOscillatorPointer() {
    drawing_->oscPointer = std::make_unique<PointerReports>(*drawing_->given.clock, *drawing_->given.main);
    drawing_->oscPointer->onReport = [this](std::optional<ChartPoint> point) {
        drawing_->oscPointerComes = point;
        if (point) return joinNextFrame();
        if (!drawing_->crosshair.oscHoverPoint()) return;
        showOscillatorPointer(std::nullopt);
        updateCrosshair();
        updateHud();
    };
}

void ChartItem::pointAtOscillator(std::optional<ChartPoint> point) {
    if (!drawing_->oscPointer) return;
    if (point)
        drawing_->oscPointer->moved(*point);
    else
        drawing_->oscPointer->left();
}

void ChartItem::refresh(CrosshairState& crosshair) {
    const ChartRenderer& shown = renderer();
    const auto bars = shown.camera().settled() ? shown.candles() : std::span<const Candle>();
    crosshair.update(shown.camera().viewport(), bars, width(), height(), *drawing_->given.session,
                     drawing_->view->axes().labels());
}

// The linked pane is told of the same place once more where the chart has moved below the pointer.
void ChartItem::updateCrosshair() {
    CrosshairState& own = drawing_->crosshair;
    refresh(own);
    if (Perf* perf = renderer().perf; perf && own.shown()) perf->bump("CrosshairHud");
    const bool below = !own.mousePoint() && own.oscHoverPoint();
    drawing_->view->pointerAt(below ? own.oscHoverPoint() : own.mousePoint(), width(), height(), below);
    updatePeerCrosshair();
}

void ChartItem::updatePeerCrosshair() {
    drawing_->peerCrosshair.setMousePoint(drawing_->view->peerCrosshair(width(), height()));
    refresh(drawing_->peerCrosshair);
}

void ChartItem::mousePressEvent(QMouseEvent* event) {
    forceActiveFocus(Qt::MouseFocusReason);
    const ChartPoint at = pointOf(*event);
    lastPress_ = at;
    if (event->button() == Qt::LeftButton) return input().mouseDown(at);
    orderMenu_ = input().orderMenu(at);
    if (!orderMenu_.empty()) emit orderMenuRequested(at.x, at.y);
}

// Comes after a press of its own.
void ChartItem::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) input().doubleClick();
}

void ChartItem::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton)) return;
    lastPress_ = pointOf(*event);
    if (input().dragging() && !input().draggingLine()) noteInput(event->timestamp());
    input().mouseDragged(lastPress_);
}

void ChartItem::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) input().mouseUp(pointOf(*event));
}

// The pointer was taken away in the middle of a drag, by a popup or another window.
void ChartItem::mouseUngrabEvent() { endDrag(); }

void ChartItem::endDrag() {
    if (input().dragging()) input().mouseUp(lastPress_);
}

void ChartItem::dragTime(QMouseEvent& event) {
    lastPress_ = pointOf(event);
    if (event.type() == QEvent::MouseButtonPress) {
        forceActiveFocus(Qt::MouseFocusReason);
        return input().mouseDownOnTime(lastPress_);
    }
    if (event.type() == QEvent::MouseButtonRelease) return input().mouseUp(lastPress_);
    if (input().dragging()) noteInput(event.timestamp());
    input().mouseDragged(lastPress_);
}

void ChartItem::wheelOverTime(QWheelEvent& event) { turnWheel(event, true); }

void ChartItem::wheelEvent(QWheelEvent* event) { turnWheel(*event, false); }

// The other axis' deltas come with Alt on some platforms, and with Shift on others.
void ChartItem::turnWheel(QWheelEvent& event, bool timeAlone) {
    const bool precise = event.phase() != Qt::NoScrollPhase && !event.pixelDelta().isNull();
    QPointF delta = precise ? QPointF(event.pixelDelta()) : QPointF(event.angleDelta()) / 120.0;
    const bool shift = event.modifiers() & Qt::ShiftModifier;
    const bool swapped = (altSwapsAxes() && (event.modifiers() & Qt::AltModifier)) || (shift && delta.y() == 0);
    if (swapped) delta = delta.transposed();
    noteInput(event.timestamp());
    if (timeAlone)
        input().scrollTime(delta.x(), delta.y(), precise);
    else
        input().scrollWheel(delta.x(), delta.y(), precise, shift);
    event.accept();
}

void ChartItem::hoverEnterEvent(QHoverEvent* event) { input().mouseMoved(pointOf(*event)); }

void ChartItem::hoverMoveEvent(QHoverEvent* event) { input().mouseMoved(pointOf(*event)); }

void ChartItem::hoverLeaveEvent(QHoverEvent*) { input().mouseExited(); }

// Nobody can aim at a chart that is not drawn.
bool ChartItem::event(QEvent* event) {
    if (!problem().isEmpty() && event->isInputEvent()) {
        event->ignore();
        return false;
    }
    if (event->type() == QEvent::NativeGesture) {
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            magnify(gesture->value());
            return true;
        }
    }
    return FrameItem::event(event);
}

void ChartItem::magnify(qreal magnification) { input().magnify(magnification); }

bool ChartItem::takesEscape() { return drawing_->view->input().draggingLine(); }

void ChartItem::keyPressEvent(QKeyEvent* event) {
    constexpr double step = 0.1, zoom = 1.15;  // shares of the view
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) return event->ignore();
    switch (event->key()) {
        case Qt::Key_Left:
            return input().panBy(-step, 0);
        case Qt::Key_Right:
            return input().panBy(step, 0);
        case Qt::Key_Up:
            return input().panBy(0, step);
        case Qt::Key_Down:
            return input().panBy(0, -step);
        case Qt::Key_Plus:
        case Qt::Key_Equal:
            return input().zoomBy(1 / zoom);
        case Qt::Key_Minus:
            return input().zoomBy(zoom);
        case Qt::Key_Home:
            return input().toLiveEdge();
        case Qt::Key_Escape:
            if (!input().takeBack()) event->ignore();
            return;
        default:
            event->ignore();
    }
}

QVariantList ChartItem::orderMenu() const {
    QVariantList list;
    for (const OrderMenuItem& item : orderMenu_)
        list.push_back(QVariantMap{{QStringLiteral("text"), QString::fromStdString(item.text)},
                                   {QStringLiteral("note"), item.action == OrderMenuItem::Action::note},
                                   {QStringLiteral("separator"), item.action == OrderMenuItem::Action::separator}});
    return list;
}

void ChartItem::chooseOrder(int index) {
    ChartInput& now = input();  // which ends the menu when another chart is open
    if (index < 0 || static_cast<std::size_t>(index) >= orderMenu_.size()) return;
    now.choose(orderMenu_[static_cast<std::size_t>(index)]);
}

void ChartItem::endOrderMenu() {
    orderMenu_.clear();
    emit orderMenuEnded();
}

void ChartItem::endInput() {
    if (problem().isEmpty()) return;
    drawing_->view->input().letGo();
    pointerMoved(std::nullopt);
    endOrderMenu();
}

}  // namespace vmr
