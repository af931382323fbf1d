// The chart as a Qt Quick item.
#pragma once

#include <QBasicTimer>
#include <QPointer>
#include <QQuickItem>
#include <QString>
#include <QVariantList>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "chart/ChartInput.h"
#include "ui/chart/CrosshairState.h"
#include "ui/pane/PaneViewModel.h"

namespace vmr {

class ChartRenderer;

/// Records the chart's frames on the main thread while items are polished, and shows them through a render node. Draws
/// on demand: after a change, and as long as something moves. Main thread.
class ChartItem : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vmr::PaneViewModel* pane READ pane WRITE setPane NOTIFY paneChanged)
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)
    Q_PROPERTY(vmr::CrosshairState* crosshair READ crosshair CONSTANT)
    Q_PROPERTY(QVariantList orderMenu READ orderMenu NOTIFY orderMenuRequested)

 public:
    explicit ChartItem(QQuickItem* parent = nullptr);
    ~ChartItem() override;

    PaneViewModel* pane() const;
    void setPane(PaneViewModel* pane);

    /// Why the chart cannot be shown, for the person; empty while it can.
    QString problem() const { return problem_; }

    CrosshairState* crosshair();

    /// The entries of the last right click: { text, separator }.
    QVariantList orderMenu() const;
    /// Carries out an entry.
    Q_INVOKABLE void chooseOrder(int index);
    /// A pinch by a touch screen, as a share of its size.
    Q_INVOKABLE void magnify(qreal magnification);

    /// The last frame went into a picture and not to the screen.
    void frameTaken();

    ChartRenderer& renderer();
    /// Frames recorded so far.
    std::uint64_t framesDrawn() const;
    /// Samples a pixel that the chart was last drawn with; 0 before.
    int sampleCount() const { return *sampleCount_; }
    /// Bytes that the chart has given to the GPU so far, as of the last repaint.
    std::uint64_t uploadedBytes() const { return *uploadedBytes_; }

 signals:
    void paneChanged();
    void problemChanged();
    void orderMenuRequested(qreal x, qreal y);

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
    void timerEvent(QTimerEvent* event) override;
    void componentComplete() override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void updatePolish() override;
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

 private:
    struct Drawing;
    void requestFrame();
    void chartTold();
    void leavePane();
    void takeChart();
    void makeInput();
    void pointerMoved(std::optional<ChartPoint> point);
    void updateCrosshair();
    void watchSwapsOf(QQuickWindow* window);
    void frameShown();
    void setProblem(const QString& problem);

    std::unique_ptr<Drawing> drawing_;
    QPointer<PaneViewModel> pane_;
    QString problem_;
    bool chartDirty_ = true;  ///< the pane told of a chart that `takeChart` has not seen
    bool frameAwaited_ = false;
    QMetaObject::Connection following_, swaps_;
    QBasicTimer unshown_;  ///< runs while a frame is wanted and the one before is on its way to the screen
    bool recording_ = false;
    bool animating_ = false;
    bool barsMoved_ = false;  ///< bars came or went since the crosshair was told
    std::uint64_t drawnOverlays_ = 0;
    ChartPoint lastPress_;  ///< where a drag has come to
    std::vector<OrderMenuItem> orderMenu_;
    std::string orderMenuRoot_;  ///< what it trades
    std::shared_ptr<std::atomic<int>> sampleCount_ = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<std::atomic<std::uint64_t>> uploadedBytes_ = std::make_shared<std::atomic<std::uint64_t>>(0);
};

}  // namespace vmr
