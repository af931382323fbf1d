// Where a pane's floating panels lie, and where they lay before.
#pragma once

#include <QObject>
#include <QPointF>
#include <QQmlEngine>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <functional>
#include <optional>

namespace vmr {

class Preferences;

/// The rules of `PanelPlacing` for QML, and the way to the preferences that hold each panel's frame. Without any it
/// remembers nothing. Main thread.
class PanelFrames : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(qreal titleHeight READ titleHeight CONSTANT)
    Q_PROPERTY(qreal step READ step CONSTANT)

 public:
    /// Gets the frame of a panel on the screen whenever it changes, and nothing once it is closed.
    using Follower = std::function<void(const QString& id, const std::optional<QRectF>& frame)>;

    using QObject::QObject;
    /// `preferences` outlives the views; null for none.
    void keepIn(Preferences* preferences, Follower follower = {});

    qreal titleHeight() const;
    qreal step() const;

    /// The frame that was kept last; what is missing of it comes from `otherwise`.
    Q_INVOKABLE QRectF restored(const QString& id, const QRectF& otherwise) const;
    Q_INVOKABLE void keep(const QString& id, const QRectF& frame);
    Q_INVOKABLE void moved(const QString& id, const QRectF& frame);
    Q_INVOKABLE void closed(const QString& id);

    Q_INVOKABLE QSizeF clampedSize(const QSizeF& size, const QSizeF& minimum, const QSizeF& area,
                                   qreal contentHeight) const;
    Q_INVOKABLE QPointF clampedPos(const QPointF& pos, const QSizeF& size, const QSizeF& area) const;

 private:
    Preferences* preferences_ = nullptr;
    Follower follower_;
};

}  // namespace vmr
