// The oscillator below a chart as a Qt Quick item.
#pragma once

#include <QPointer>
#include <optional>

#include "chart/ChartView.h"
#include "chart/OscillatorPane.h"
#include "ui/chart/ChartItem.h"
#include "ui/gpu/FrameItem.h"

namespace vmr {

/// Lies below the chart, as wide as it, and shows the chart's camera in the frame that the chart shows it in. What a
/// pointer does to time over it, it does to the chart. Main thread.
class OscillatorItem : public FrameItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vmr::ChartItem* chart READ chart WRITE setChart NOTIFY chartChanged)

 public:
    explicit OscillatorItem(QQuickItem* parent = nullptr);
    ~OscillatorItem() override;

    ChartItem* chart() const { return chart_; }
    void setChart(ChartItem* chart);

    /// What it shows is not what it was.
    void ask(ChartView::Need need);
    /// In points; 0 while it is not shown.
    double shownHeight() const { return isVisible() ? height() : 0; }
    /// The camera of the last frame.
    const std::optional<Viewport>& shows() const { return shows_; }

 signals:
    void chartChanged();

 protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void wheelEvent(QWheelEvent* event) override;
    void hoverEnterEvent(QHoverEvent* event) override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    bool record(Gpu& gpu, QSizeF size, double pixelRatio, double now) override;
    bool interacting() const override;

 private:
    void pointAt(std::optional<ChartPoint> point);
    void tellHeight();

    QPointer<ChartItem> chart_;
    OscillatorPane pane_{gpu(), glyphs()};
    std::optional<Viewport> shows_;
};

}  // namespace vmr
