// The chart as a Qt Quick item.
#pragma once

#include <QPointer>
#include <QQuickItem>
#include <QString>
#include <atomic>
#include <cstdint>
#include <memory>

#include "ui/PaneViewModel.h"

namespace vmr {

class ChartRenderer;

/// Records the chart's frames on the main thread while items are polished, and shows them through a render node. Draws
/// on demand: after a change, and as long as something moves. Main thread.
class ChartItem : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vmr::PaneViewModel* pane READ pane WRITE setPane NOTIFY paneChanged)
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)

 public:
    explicit ChartItem(QQuickItem* parent = nullptr);
    ~ChartItem() override;

    PaneViewModel* pane() const;
    void setPane(PaneViewModel* pane);

    /// Why the chart cannot be shown, for the person; empty while it can.
    QString problem() const { return problem_; }

    ChartRenderer& renderer();
    /// Frames recorded so far.
    std::uint64_t framesDrawn() const;
    /// Samples a pixel that the chart was last drawn with; 0 before.
    int sampleCount() const { return *sampleCount_; }

 signals:
    void paneChanged();
    void problemChanged();

 protected:
    void componentComplete() override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void updatePolish() override;
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

 private:
    struct Drawing;
    void requestFrame();
    void takeChart();
    void setProblem(const QString& problem);

    std::unique_ptr<Drawing> drawing_;
    QPointer<PaneViewModel> pane_;
    QString problem_;
    bool chartDirty_ = true;
    bool recording_ = false;
    bool animating_ = false;
    int drawnTimeframe_ = 0;
    std::uint64_t drawnOverlays_ = 0;
    std::shared_ptr<std::atomic<int>> sampleCount_ = std::make_shared<std::atomic<int>>(0);
};

}  // namespace vmr
