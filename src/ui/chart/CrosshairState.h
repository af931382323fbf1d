// Where the pointer is over a chart, and what lies there.
#pragma once

#include <QList>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <optional>
#include <span>
#include <vector>

#include "chart/AxisLayer.h"
#include "chart/ChartInput.h"
#include "chart/OscGeometry.h"
#include "gpu/PlotArea.h"
#include "market/Records.h"
#include "market/SessionTime.h"

namespace vmr {

/// Watched by the crosshair's views alone, so that moving the pointer redraws nothing else. Points from the chart's top
/// left. Main thread.
class CrosshairState : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a chart")
    Q_PROPERTY(bool shown READ shown NOTIFY changed)
    Q_PROPERTY(qreal x READ x NOTIFY changed)
    Q_PROPERTY(qreal y READ y NOTIFY changed)
    Q_PROPERTY(bool belowChart READ belowChart NOTIFY changed)
    Q_PROPERTY(qreal oscillatorY READ oscillatorY NOTIFY changed)
    Q_PROPERTY(QString oscillatorText READ oscillatorText NOTIFY changed)
    Q_PROPERTY(QList<qreal> oscillatorLabels READ oscillatorLabels NOTIFY changed)
    Q_PROPERTY(QString priceText READ priceText NOTIFY changed)
    Q_PROPERTY(QString timeText READ timeText NOTIFY changed)
    Q_PROPERTY(QList<qreal> priceLabels READ priceLabels NOTIFY changed)
    Q_PROPERTY(QList<qreal> timeLabels READ timeLabels NOTIFY changed)
    Q_PROPERTY(QList<qreal> priceBoxes READ priceBoxes NOTIFY changed)
    Q_PROPERTY(qreal priceAxisWidth READ priceAxisWidth CONSTANT)
    Q_PROPERTY(qreal timeAxisHeight READ timeAxisHeight CONSTANT)

 public:
    using QObject::QObject;

    std::optional<ChartPoint> mousePoint() const { return mousePoint_; }
    void setMousePoint(std::optional<ChartPoint> point) { mousePoint_ = point; }

    /// The same over the oscillator, whose height in points and labels are given, and from whose top left it counts.
    std::optional<ChartPoint> oscHoverPoint() const { return oscHoverPoint_; }
    void setOscHoverPoint(std::optional<ChartPoint> point, double height, const OscGeometry::Labels& labels);

    /// Works out the tags anew: after the pointer, the camera or the bars have moved. `width` and `height` in points.
    void update(const Viewport& viewport, std::span<const Candle> candles, double width, double height,
                SessionTime& session, const AxisLayer::Labels& labels);
    /// The boxes alone: after a frame that moved nothing else. Tells only of others.
    void updateBoxes(const AxisLayer::Labels& labels);

    bool shown() const { return shown_; }
    qreal x() const { return crossX().value_or(0); }
    qreal y() const { return mousePoint_ ? mousePoint_->y : -1; }
    /// The pointer is over the oscillator: there is a time, and no price.
    bool belowChart() const { return !mousePoint_ && oscHoverPoint_; }
    qreal oscillatorY() const { return oscHoverPoint_ ? oscHoverPoint_->y : -1; }
    QString oscillatorText() const { return oscillatorText_; }
    const QList<qreal>& oscillatorLabels() const { return oscillatorLabels_; }  ///< as `priceLabels`
    QString priceText() const { return priceText_; }
    QString timeText() const { return timeText_; }  ///< of the bar under the pointer; empty beyond the bars
    // Of the axes' labels where each begins and ends, one after the other: the tags cover whole ones only.
    const QList<qreal>& priceLabels() const { return priceLabels_; }
    const QList<qreal>& timeLabels() const { return timeLabels_; }
    /// Likewise of what no tag covers, from top to bottom and apart: the last price's box, the countdown, the tags of
    /// the account's lines and of the marked strike.
    const QList<qreal>& priceBoxes() const { return priceBoxes_; }
    qreal priceAxisWidth() const { return PlotArea::priceAxisWidth; }
    qreal timeAxisHeight() const { return PlotArea::timeAxisHeight; }

 signals:
    void changed();

 private:
    bool takeBoxes(const AxisLayer::Labels& labels);
    std::optional<double> crossX() const {
        const auto& point = mousePoint_ ? mousePoint_ : oscHoverPoint_;
        return point ? std::optional(point->x) : std::nullopt;
    }

    std::optional<ChartPoint> mousePoint_, oscHoverPoint_;
    QString oscillatorText_;
    QList<qreal> oscillatorLabels_;
    bool shown_ = false;
    QString priceText_, timeText_;
    QList<qreal> priceLabels_, timeLabels_, priceBoxes_;
    std::vector<AxisLayer::Extent> boxes_;
};

}  // namespace vmr
