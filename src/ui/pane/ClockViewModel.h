// What the clocks on a pane's chart say.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <string_view>

namespace vmr {

/// Empty texts are not shown. Main thread.
class ClockViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(QString countdown READ countdown NOTIFY countdownChanged)
    Q_PROPERTY(QString clock READ clock NOTIFY clockChanged)
    Q_PROPERTY(QString practice READ practice NOTIFY clockChanged)

 public:
    using QObject::QObject;

    QString countdown() const { return countdown_; }  ///< market time to the forming bar's close, or "closed"
    QString clock() const { return clock_; }          ///< New York's time
    QString practice() const { return practice_; }    ///< says that the market is a practice one, and its day

    /// Gives notice of what differs.
    void set(std::string_view countdown, std::string_view clock, std::string_view practice) {
        if (take(countdown_, countdown)) emit countdownChanged();
        const bool told = take(clock_, clock);
        if (take(practice_, practice) || told) emit clockChanged();
    }

 signals:
    void countdownChanged();
    void clockChanged();

 private:
    static bool take(QString& text, std::string_view now) {
        const QLatin1String latin(now.data(), static_cast<int>(now.size()));
        if (text == latin) return false;
        text = latin;
        return true;
    }

    QString countdown_, clock_, practice_;
};

}  // namespace vmr
