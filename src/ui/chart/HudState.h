// The line of values over a chart, and the places of what lies beside it in items of its own.
#pragma once

#include <QList>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <array>
#include <optional>

#include "chart/AxisLayer.h"
#include "chart/HudText.h"

namespace vmr {

/// One label with its value; gives notice of its own, so that a moved pointer lays out only what changed. Main thread.
class HudValue : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a chart")
    Q_PROPERTY(QString label READ label NOTIFY changed)
    Q_PROPERTY(QString value READ value NOTIFY changed)
    Q_PROPERTY(int tone READ tone NOTIFY changed)

 public:
    using QObject::QObject;

    QString label() const { return label_; }
    QString value() const { return value_; }  ///< empty: not shown
    int tone() const { return static_cast<int>(shown_.tone); }

    void set(const HudSegment& segment);

 signals:
    void changed();

 private:
    HudSegment shown_;
    QString label_, value_;
};

/// Watched by the items over the chart alone, so that none of it records a frame of the chart. Points from the chart's
/// top left. Main thread.
class HudState : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a chart")
    Q_PROPERTY(bool shown READ shown NOTIFY shownChanged)
    Q_PROPERTY(QList<QObject*> ofBar READ ofBar CONSTANT)
    Q_PROPERTY(QList<QObject*> ofOptions READ ofOptions CONSTANT)
    Q_PROPERTY(qreal litFrom READ litFrom NOTIFY litChanged)
    Q_PROPERTY(qreal litTo READ litTo NOTIFY litChanged)
    Q_PROPERTY(qreal countdownFrom READ countdownFrom NOTIFY countdownChanged)
    Q_PROPERTY(qreal countdownTo READ countdownTo NOTIFY countdownChanged)

 public:
    explicit HudState(QObject* parent = nullptr);

    /// Nothing of the line: it is not shown.
    void update(const std::optional<HudText>& line, const std::optional<AxisLayer::Extent>& lit,
                const AxisLayer::Extent& countdown);

    bool shown() const { return shown_; }
    QList<QObject*> ofBar() { return values(0, HudText::ofBar); }
    QList<QObject*> ofOptions() { return values(HudText::ofBar, values_.size()); }
    // The row of the strike that the line tells of, and the countdown's room on the price axis. Alike for neither.
    qreal litFrom() const { return lit_.from; }
    qreal litTo() const { return lit_.to; }
    qreal countdownFrom() const { return countdown_.from; }
    qreal countdownTo() const { return countdown_.to; }

 signals:
    void shownChanged();
    void litChanged();
    void countdownChanged();

 private:
    QList<QObject*> values(std::size_t from, std::size_t to);

    std::array<HudValue, std::tuple_size_v<decltype(HudText::segments)>> values_;
    AxisLayer::Extent lit_, countdown_;
    bool shown_ = false;
};

}  // namespace vmr
