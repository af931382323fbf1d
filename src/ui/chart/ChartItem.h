// The chart as a Qt Quick item.
#pragma once

#include <QPointer>
#include <QRectF>
#include <QVariantList>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "chart/Camera.h"
#include "chart/ChartInput.h"
#include "chart/OscGeometry.h"
#include "ui/chart/CrosshairState.h"
#include "ui/chart/EntryPillState.h"
#include "ui/chart/HudState.h"
#include "ui/gpu/FrameItem.h"
#include "ui/pane/PaneViewModel.h"

namespace vmr {

class ChartRenderer;
class OscillatorItem;
class ViewportState;

/// Translates Qt's events for the chart's own rules, and gives QML what lies over the chart. Main thread.
class ChartItem : public FrameItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vmr::PaneViewModel* pane READ pane WRITE setPane NOTIFY paneChanged)
    Q_PROPERTY(vmr::CrosshairState* crosshair READ crosshair CONSTANT)
    Q_PROPERTY(vmr::CrosshairState* peerCrosshair READ peerCrosshair CONSTANT)
    Q_PROPERTY(vmr::HudState* hud READ hud CONSTANT)
    Q_PROPERTY(vmr::EntryPillState* entryPill READ entryPill CONSTANT)
    Q_PROPERTY(bool takesEscape READ takesEscape)
    Q_PROPERTY(QRectF clockBox READ clockBox WRITE setClockBox)
    Q_PROPERTY(qreal barsWidth READ barsWidth NOTIFY widthChanged)
    Q_PROPERTY(QVariantList orderMenu READ orderMenu NOTIFY orderMenuRequested)

 public:
    explicit ChartItem(QQuickItem* parent = nullptr);
    ~ChartItem() override;

    PaneViewModel* pane() const;
    void setPane(PaneViewModel* pane);

    CrosshairState* crosshair();
    /// Where the linked pane's pointer is in this chart.
    CrosshairState* peerCrosshair();
    /// The line of values over the chart, and what else follows the frames in items of its own.
    HudState* hud();
    /// The result on the open position's line.
    EntryPillState* entryPill();
    /// While a line is dragged, which Escape takes back before it closes anything.
    bool takesEscape();
    /// Of the widest bar of a strike, in points.
    qreal barsWidth() const { return Camera::maxBarW(width()); }

    /// What New York's clock covers of the chart; empty for nothing.
    QRectF clockBox() const { return clockBox_; }
    void setClockBox(const QRectF& box);
    /// The line of values has placed its parts.
    Q_INVOKABLE void lineLaidOut(QQuickItem* line);

    /// The entries of the last right click: { text, separator }.
    QVariantList orderMenu() const;
    /// Carries out an entry.
    Q_INVOKABLE void chooseOrder(int index);
    /// A pinch by a touch screen, as a share of its size.
    Q_INVOKABLE void magnify(qreal magnification);

    // For the oscillator below it -------------------------------------------------------------------------------------
    /// Null for none.
    void setOscillator(OscillatorItem* oscillator);
    /// It has another height, or is shown or hidden.
    void oscillatorResized();
    std::optional<OscInput> oscillatorInput() const;
    /// It has drawn a frame: its labels may lie elsewhere.
    void oscillatorDrawn();
    /// Where the pointer is over it; nothing when it has left.
    void pointAtOscillator(std::optional<ChartPoint> point);
    /// A press, move or release on it.
    void dragTime(QMouseEvent& event);
    /// What a press took hold of is let go.
    void endDrag();
    void wheelOverTime(QWheelEvent& event);
    /// A gesture is under way, or was a moment ago.
    bool handsOn() const;

    /// Until a pane with other surroundings is set.
    ChartRenderer& renderer();
    /// The camera, for whoever follows it; another one after a pane with other surroundings is set.
    const std::shared_ptr<ViewportState>& viewportState() const;

 signals:
    void paneChanged();
    void orderMenuRequested(qreal x, qreal y);
    /// The chart that the menu was opened on is gone.
    void orderMenuEnded();

 protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void wheelEvent(QWheelEvent* event) override;
    void hoverEnterEvent(QHoverEvent* event) override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    bool record(Gpu& gpu, QSizeF size, double pixelRatio, double now) override;
    bool interacting() const override;
    bool showsInput() const override;
    void frameShown() override;
    void frameBegins() override;

 private:
    struct Drawing;
    void makeView();
    void watchView();
    void watchOscillatorPointer();
    void showOscillatorPointer(const std::optional<ChartPoint>& point);
    void setLiveRefresh(bool on);
    void leavePane();
    void readPane();
    ChartInput& input();
    void showCursor(ChartCursor cursor);
    void pointerMoved(std::optional<ChartPoint> point);
    void updateCrosshair();
    void updatePeerCrosshair();
    void updateHud();
    void updateEntryPill();
    void coverSoon();
    void coverTexts();
    void refresh(CrosshairState& crosshair);
    void endOrderMenu();
    void endInput();

    void turnWheel(QWheelEvent& event, bool timeAlone);

    std::unique_ptr<Drawing> drawing_;
    QPointer<OscillatorItem> oscillator_;
    QPointer<PaneViewModel> pane_;
    std::optional<ChartPoint> pointerComes_;  ///< where the crosshair goes with the next frame
    bool pillComes_ = false;                  ///< the result is read with the next frame
    QRectF clockBox_;
    ChartPoint lastPress_;                  ///< where a drag has come to
    std::vector<OrderMenuItem> orderMenu_;  ///< empty once its chart is gone
};

}  // namespace vmr
