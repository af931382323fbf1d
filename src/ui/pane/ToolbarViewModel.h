// What a chart shows and what else it could show, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <functional>
#include <utility>

namespace vmr {

/// Main thread.
class ToolbarViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(QString symbol READ symbol NOTIFY symbolChanged)
    Q_PROPERTY(int timeframe READ timeframe NOTIFY timeframeChanged)
    Q_PROPERTY(QStringList futures READ futures NOTIFY choicesChanged)
    Q_PROPERTY(QStringList stocks READ stocks NOTIFY choicesChanged)

 public:
    struct State {
        QString symbol{};
        int timeframe = 1;  ///< minutes a bar
        QStringList futures{};
        QStringList stocks{};
    };
    struct Actions {
        std::function<void(const QString& symbol)> switchSymbol;
        std::function<void(int minutes)> setTimeframe;
    };

    using QObject::QObject;

    const State& state() const { return state_; }
    /// Gives notice of what differs, once all of it has changed.
    void set(State state);
    void notifyAll();
    void setActions(Actions actions) { actions_ = std::move(actions); }

    QString symbol() const { return state_.symbol; }
    int timeframe() const { return state_.timeframe; }
    QStringList futures() const { return state_.futures; }
    QStringList stocks() const { return state_.stocks; }

    // Nothing happens when that is shown already.
    Q_INVOKABLE void switchSymbol(const QString& symbol);
    Q_INVOKABLE void setTimeframe(int minutes);

 signals:
    void symbolChanged();
    void timeframeChanged();
    void choicesChanged();

 private:
    State state_;
    Actions actions_;
};

}  // namespace vmr
