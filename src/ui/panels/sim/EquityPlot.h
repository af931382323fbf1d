// The running result of the trades as a plot.
#pragma once

#include <QColor>
#include <QPointF>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>
#include <QString>
#include <vector>

#include "ui/panels/sim/SimViewModel.h"
#include "workspace/ArtVertex.h"

namespace vmr {

/// One node of coloured triangles, drawn anew only when the curve, the size or a colour have changed. Main thread.
class EquityPlot : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vmr::SimViewModel* sim READ sim WRITE setSim NOTIFY simChanged)
    Q_PROPERTY(QColor gain MEMBER gain_ NOTIFY lookChanged)
    Q_PROPERTY(QColor loss MEMBER loss_ NOTIFY lookChanged)
    /// The trade that the pointer is over, -1 for none: where it stands, and what is said of it.
    Q_PROPERTY(int spot READ spot NOTIFY spotChanged)
    Q_PROPERTY(QPointF spotPlace READ spotPlace NOTIFY spotChanged)
    Q_PROPERTY(QString spotText READ spotText NOTIFY spotChanged)

 public:
    explicit EquityPlot(QQuickItem* parent = nullptr);

    SimViewModel* sim() const { return sim_; }
    void setSim(SimViewModel* sim);
    int spot() const { return spot_; }
    QPointF spotPlace() const;
    QString spotText() const { return spotText_; }

    /// The pointer is at `x`; below 0 it is elsewhere.
    Q_INVOKABLE void point(qreal x);

 signals:
    void simChanged();
    void lookChanged();
    void spotChanged();

 protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

 private:
    void take();
    void change();
    void aim(bool moved);

    QPointer<SimViewModel> sim_;
    QColor gain_{"white"}, loss_{"white"};
    SimCurvePlot plot_;
    qreal pointer_ = -1;
    int spot_ = -1;
    QString spotText_;
    std::vector<ArtVertex> vertices_;
    bool changed_ = true;
};

}  // namespace vmr
