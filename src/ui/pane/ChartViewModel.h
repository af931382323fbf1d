// Where a pane's chart gets what it shows, and what is said over it.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <functional>
#include <utility>

#include "chart/ChartPort.h"
#include "chart/ChartSource.h"

namespace vmr {

/// Brings a pane and the chart that shows it together; what the chart draws goes from one to the other without passing
/// here. Main thread.
class ChartViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(bool empty READ empty NOTIFY emptyChanged)
    Q_PROPERTY(QString accountProblem READ accountProblem NOTIFY accountProblemChanged)

 public:
    /// Gets the chart that shows the pane; null when that is gone.
    using SetPort = std::function<void(ChartPort*)>;

    using QObject::QObject;

    /// What the chart reads; null for nothing any more. `setPort` may be empty.
    void setSource(ChartSource* source, SetPort setPort = {}) {
        source_ = source;
        setPort_ = std::move(setPort);
        emit sourceChanged();
    }
    ChartSource* source() const { return source_; }
    /// The chart that shows the pane; null when it goes.
    void setPort(ChartPort* port) {
        if (setPort_) setPort_(port);
    }

    /// Without bars.
    bool empty() const { return empty_; }
    void setEmpty(bool empty) {
        if (std::exchange(empty_, empty) != empty) emit emptyChanged();
    }
    /// What is wrong with the paper account for as long as it lasts; empty for nothing.
    QString accountProblem() const { return accountProblem_; }
    void setAccountProblem(const QString& problem) {
        if (std::exchange(accountProblem_, problem) != problem) emit accountProblemChanged();
    }
    /// Tells that the paper account's lines are not what they were.
    void tellAccountChanged() { emit accountChanged(); }

 signals:
    void sourceChanged();
    void emptyChanged();
    void accountChanged();
    void accountProblemChanged();

 private:
    ChartSource* source_ = nullptr;
    SetPort setPort_;
    bool empty_ = true;
    QString accountProblem_;
};

}  // namespace vmr
