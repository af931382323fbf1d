// The samples of the key to the chart, as one Qt Quick item.
#pragma once

#include <QPointer>
#include <QVariantList>

#include "chart/ChartMarks.h"
#include "ui/gpu/FrameItem.h"
#include "ui/pane/PaneViewModel.h"
#include "ui/platform/QtLoop.h"

namespace vmr {

/// Draws those of the rows in view, one below the other, in the colours of a pane. It lies under a list of rows of one
/// height, which tells it how far it is scrolled; a frame is drawn when that changes and not otherwise. Main thread.
class MarkSampleItem : public FrameItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vmr::PaneViewModel* pane READ pane WRITE setPane NOTIFY paneChanged)
    Q_PROPERTY(qreal contentY READ contentY WRITE setContentY NOTIFY contentYChanged)
    Q_PROPERTY(qreal rowHeight READ rowHeight CONSTANT)
    Q_PROPERTY(QSizeF sampleSize READ sampleSize CONSTANT)
    Q_PROPERTY(QVariantList marks READ marks CONSTANT)

 public:
    explicit MarkSampleItem(QQuickItem* parent = nullptr);

    PaneViewModel* pane() const { return pane_; }
    void setPane(PaneViewModel* pane);
    qreal contentY() const { return contentY_; }
    void setContentY(qreal y);
    static qreal rowHeight() { return MarkSamples::height + 12; }
    static QSizeF sampleSize() { return {MarkSamples::width, MarkSamples::height}; }
    /// { id, name, meaning } in the order of the rows.
    static QVariantList marks();

 signals:
    void paneChanged();
    void contentYChanged();

 protected:
    bool record(Gpu& gpu, QSizeF size, double pixelRatio, double now) override;

 private:
    void readLook();

    SystemClock clock_;
    SessionTime session_;
    QtLoop loop_;
    MarkSamples samples_;
    QPointer<PaneViewModel> pane_;
    qreal contentY_ = 0;
};

}  // namespace vmr
