// What the panel of HF pressure shows, as Qt properties.
#pragma once

#include <QAbstractListModel>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantMap>
#include <array>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include "chart/HfPressure.h"

namespace vmr {

class Perf;

/// The strikes around the money, ascending. A strike that stays keeps its row's item, wherever the row moves to.
/// A flow that reads the same as before is not told of again.
class PressureLadder : public QAbstractListModel {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(int count READ count NOTIFY countChanged)

 public:
    struct Row {
        double strike = 0;
        double call = 0, put = 0;  ///< NaN: not known
        bool atm = false;
        bool operator==(const Row&) const = default;
    };
    using QAbstractListModel::QAbstractListModel;

    void set(const std::vector<Row>& rows);
    int count() const { return static_cast<int>(rows_.size()); }
    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : count(); }
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

 signals:
    void countChanged();

 private:
    enum Role { strikeRole = Qt::UserRole + 1, labelRole, callRole, putRole, atmRole };
    std::vector<Row> rows_;
};

/// Reads the samples only while it is open, and again only when there is another newest one, or another number of them,
/// or another window. Main thread.
class HfPressureViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(bool open READ open NOTIFY openChanged)
    Q_PROPERTY(int windowMin READ windowMin NOTIFY windowMinChanged)
    Q_PROPERTY(QList<int> windows READ windows CONSTANT)
    Q_PROPERTY(bool stale READ stale NOTIFY staleChanged)
    Q_PROPERTY(qreal callShare READ callShare NOTIFY readoutsChanged)
    Q_PROPERTY(qreal putShare READ putShare NOTIFY readoutsChanged)
    Q_PROPERTY(qreal call READ call NOTIFY readoutsChanged)
    Q_PROPERTY(qreal put READ put NOTIFY readoutsChanged)
    Q_PROPERTY(QString notice READ notice NOTIFY noticeChanged)
    Q_PROPERTY(int revision READ revision NOTIFY samplesChanged)
    Q_PROPERTY(vmr::PressureLadder* ladder READ ladder CONSTANT)
    Q_PROPERTY(QString unknown READ unknown CONSTANT)
    Q_PROPERTY(bool hasStats READ hasStats CONSTANT)
    Q_PROPERTY(bool hasChart READ hasChart CONSTANT)
    Q_PROPERTY(bool hasLadder READ hasLadder CONSTANT)
    Q_PROPERTY(bool moves READ moves CONSTANT)

 public:
    /// What of the pane decides whether the samples are looked at.
    struct State {
        bool open = false;
        int windowMin = 5;
        bool stale = false;     ///< the feed is cut off, so the newest sample tells the past
        std::size_t count = 0;  ///< of the samples, with or without those out of the window
        double last = 0;        ///< time of the newest
        bool operator==(const State&) const = default;
    };
    /// Fills in the samples of the window as of now.
    using Read = std::function<void(HfPressure::Samples& out)>;
    struct Actions {
        std::function<void(int minutes)> setWindow;
        std::function<void()> close;
        /// What a view shows; nothing when it goes.
        std::function<void(bool shown, bool overlay, const QStringList& times, const QString& pointed)> tellShown;
    };

    explicit HfPressureViewModel(QObject* parent = nullptr) : QObject(parent) {
        read_.fill(std::numeric_limits<double>::quiet_NaN());
    }

    /// Empty for nothing any more. `perf` may be null. Before the view is made, `switches` too.
    void setSource(Read read, Perf* perf = nullptr);
    void setSwitches(const HfPressure::Switches& switches) { switches_ = switches; }
    void setActions(Actions actions) { actions_ = std::move(actions); }
    /// Gives notice of what differs.
    void set(const State& state);
    /// The pane's samples have changed: what was read of them holds no more.
    void samplesMoved() { current_ = false; }

    /// Those of the window; empty while it is closed. Good until the pane's samples change.
    const HfPressure::Samples& samples();

    const State& state() const { return state_; }
    bool open() const { return state_.open; }
    int windowMin() const { return state_.windowMin; }
    static QList<int> windows() { return {HfPressure::windows.begin(), HfPressure::windows.end()}; }
    bool stale() const { return state_.stale; }
    // Of the newest sample whose text is another one; NaN without a sample.
    qreal callShare() const { return read_[0]; }
    qreal putShare() const { return read_[1]; }
    qreal call() const { return read_[2]; }
    qreal put() const { return read_[3]; }
    /// Why there is nothing in the main plot; empty where there is.
    QString notice() const { return notice_; }
    /// Another one with other samples.
    int revision() const { return revision_; }
    PressureLadder* ladder() { return &ladder_; }
    static QString unknown() { return QString::fromUtf8(HfPressure::unknown.data()); }
    bool hasStats() const { return switches_.stats; }
    bool hasChart() const { return switches_.chart; }
    bool hasLadder() const { return switches_.ladder; }
    bool moves() const { return switches_.anim; }

    Q_INVOKABLE void setWindow(int minutes) {
        if (actions_.setWindow) actions_.setWindow(minutes);
    }
    Q_INVOKABLE void close() {
        if (actions_.close) actions_.close();
    }
    Q_INVOKABLE QString flowText(qreal value) const;
    Q_INVOKABLE QString shareText(qreal percent) const;
    /// What stands in a main plot of that width nearest to `x` points from its left: { x, time, call, put }; empty
    /// where nothing does.
    Q_INVOKABLE QVariantMap spotAt(qreal x, qreal width);
    Q_INVOKABLE void tellShown(bool overlay, const QStringList& times, const QString& pointed) {
        if (actions_.tellShown) actions_.tellShown(true, overlay, times, pointed);
    }
    Q_INVOKABLE void tellHidden() {
        if (actions_.tellShown) actions_.tellShown(false, false, {}, {});
    }

 signals:
    void openChanged();
    void windowMinChanged();
    void staleChanged();
    void samplesChanged();
    void readoutsChanged();
    void noticeChanged();

 private:
    void refresh();
    void readOut(const HfPressure::Samples& seen);

    Read readSamples_;
    Perf* perf_ = nullptr;
    HfPressure::Switches switches_;
    Actions actions_;
    State state_;
    HfPressure::Samples samples_;
    bool current_ = false;        ///< `samples_` are those of the pane
    std::array<double, 4> read_;  ///< shares of calls and puts, and their sums
    QString notice_;
    int revision_ = 0;
    PressureLadder ladder_;
};

}  // namespace vmr
