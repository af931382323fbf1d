// All plots of the HF pressure panel as one Qt Quick item over its cards.
#pragma once

#include <QPointer>
#include <QRectF>
#include <QStringList>
#include <map>
#include <memory>

#include "chart/HfPressurePlot.h"
#include "gpu/FrameArena.h"
#include "ui/gpu/FrameItem.h"
#include "ui/pane/PaneViewModel.h"

namespace vmr {

/// QML tells where each plot lies. A frame is recorded for other samples, another window and other places, and for
/// nothing that the chart does. Main thread.
class HfPressureItem : public FrameItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(vmr::PaneViewModel* pane READ pane WRITE setPane NOTIFY paneChanged)
    Q_PROPERTY(QRectF mainPlace READ mainPlace WRITE setMainPlace NOTIFY placesChanged)
    Q_PROPERTY(QRectF stripPlace READ stripPlace WRITE setStripPlace NOTIFY placesChanged)
    Q_PROPERTY(QStringList stripTexts READ stripTexts NOTIFY stripTextsChanged)
    Q_PROPERTY(bool calm READ calm NOTIFY calmChanged)

 public:
    explicit HfPressureItem(QQuickItem* parent = nullptr);

    PaneViewModel* pane() const { return pane_; }
    void setPane(PaneViewModel* pane);
    QRectF mainPlace() const { return main_; }
    void setMainPlace(const QRectF& place) { setPlace(main_, place); }
    QRectF stripPlace() const { return strip_; }
    void setStripPlace(const QRectF& place) { setPlace(strip_, place); }
    /// Where the sparkline of a strike lies; no place takes it away.
    Q_INVOKABLE void placeSpark(double strike, const QRectF& place);
    /// The times below the main plot as last drawn.
    QStringList stripTexts() const { return stripTexts_; }
    /// The processor draws, so nothing should glide. Known after the first frame.
    bool calm() const { return calm_; }

 signals:
    void paneChanged();
    void placesChanged();
    void stripTextsChanged();
    void calmChanged();

 protected:
    bool record(Gpu& gpu, QSizeF size, double pixelRatio, double now) override;
    void frameShown() override;

 private:
    void setPlace(QRectF& place, const QRectF& now);
    HfPressurePlot::Places places(const HfPressure::Samples& samples) const;
    void tellStrip();

    QPointer<PaneViewModel> pane_;
    SystemClock clock_;
    std::unique_ptr<HfPressurePlot> plot_;
    FrameArena arena_{gpu()};
    QRectF main_, strip_;
    std::map<double, QRectF> sparks_;
    QStringList stripTexts_;
    bool calm_ = false;
};

}  // namespace vmr
