// A passing notice over a chart, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <utility>

namespace vmr {

/// Main thread.
class ToastViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(QString notice READ notice NOTIFY changed)
    Q_PROPERTY(QString noticeDetail READ noticeDetail NOTIFY changed)

 public:
    struct State {
        QString notice{};  ///< empty for none
        QString noticeDetail{};
        bool operator==(const State&) const = default;
    };

    using QObject::QObject;

    /// Gives notice when it differs.
    void set(State state) {
        if (std::exchange(state_, std::move(state)) != state_) emit changed();
    }
    void notifyAll() { emit changed(); }

    QString notice() const { return state_.notice; }
    QString noticeDetail() const { return state_.noticeDetail; }

 signals:
    void changed();

 private:
    State state_;
};

}  // namespace vmr
