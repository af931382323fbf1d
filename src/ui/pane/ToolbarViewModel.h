// What a chart shows and what else it could show, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QVariantMap>
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
    Q_PROPERTY(QStringList expirations READ expirations NOTIFY expirationsChanged)
    Q_PROPERTY(QStringList expirationLabels READ expirationLabels NOTIFY expirationsChanged)
    Q_PROPERTY(QString expiration READ expiration NOTIFY expirationsChanged)
    Q_PROPERTY(QString expirationText READ expirationText NOTIFY expirationsChanged)
    Q_PROPERTY(QString gexSource READ gexSource NOTIFY gexSourceChanged)
    Q_PROPERTY(QVariantMap on READ on NOTIFY onChanged)

 public:
    struct State {
        QString symbol{};
        int timeframe = 1;               ///< minutes a bar
        QStringList expirations{};       ///< on offer, yyyy-MM-dd
        QStringList expirationLabels{};  ///< of the same
        QString expiration{};            ///< that is shown; empty for all together
        QString expirationText{};        ///< what tells it
        QString gexSource{};             ///< its name
        QVariantMap on{};                ///< whether each action whose icon tells so is on
        bool operator==(const State&) const = default;
    };
    struct Actions {
        std::function<void(int minutes)> setTimeframe;
        std::function<void(const QString& iso)> setExpiration;  ///< empty for all
        std::function<void(const QVariantMap& shown, const QStringList& folded)> tellShown;
    };

    using QObject::QObject;

    const State& state() const { return state_; }
    /// Gives notice of what differs, once all of it has changed.
    void set(State state);
    void notifyAll();
    void setActions(Actions actions) { actions_ = std::move(actions); }

    QString symbol() const { return state_.symbol; }
    int timeframe() const { return state_.timeframe; }
    QStringList expirations() const { return state_.expirations; }
    QStringList expirationLabels() const { return state_.expirationLabels; }
    QString expiration() const { return state_.expiration; }
    QString expirationText() const { return state_.expirationText; }
    QString gexSource() const { return state_.gexSource; }
    QVariantMap on() const { return state_.on; }

    /// Nothing happens when that is shown already.
    Q_INVOKABLE void setTimeframe(int minutes);
    Q_INVOKABLE void setExpiration(const QString& iso);
    /// Which controls have room in the row, with the places of their middles, and which are in its menu.
    Q_INVOKABLE void tellShown(const QVariantMap& shown, const QStringList& folded);

 signals:
    void symbolChanged();
    void timeframeChanged();
    void expirationsChanged();
    void gexSourceChanged();
    void onChanged();

 private:
    State state_;
    Actions actions_;
};

}  // namespace vmr
