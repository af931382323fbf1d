// The result of the open position, written on its line.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QRectF>
#include <QString>
#include <optional>

#include "chart/EntryPill.h"

namespace vmr {

/// Watched by an item over the chart alone, so that a result that changes records no frame of the chart. Points from
/// the chart's top left. Main thread.
class EntryPillState : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a chart")
    Q_PROPERTY(bool shown READ shown NOTIFY changed)
    Q_PROPERTY(QRectF box READ box NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(bool gain READ gain NOTIFY changed)

 public:
    using QObject::QObject;

    /// Nothing: it is not shown. Gives notice where something differs.
    void update(const std::optional<EntryPill>& pill);

    bool shown() const { return shown_; }
    QRectF box() const { return box_; }
    QString text() const { return text_; }
    bool gain() const { return gain_; }

 signals:
    void changed();

 private:
    bool shown_ = false, gain_ = true;
    QRectF box_;
    QString text_;
};

}  // namespace vmr
