// The saved templates of what a pane shows, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>
#include <array>
#include <functional>
#include <utility>

namespace vmr {

/// Main thread.
class TemplatesViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(QString pair READ pair NOTIFY changed)
    Q_PROPERTY(bool known READ known NOTIFY changed)
    Q_PROPERTY(bool loading READ loading NOTIFY changed)
    Q_PROPERTY(bool busy READ busy NOTIFY changed)
    Q_PROPERTY(QString status READ status NOTIFY changed)
    Q_PROPERTY(bool failed READ failed NOTIFY changed)
    Q_PROPERTY(QVariantList slotRows READ slotRows NOTIFY changed)

 public:
    /// A slot's row in the panel.
    struct Row {
        QString key{}, digit{};
        QString date{};  ///< when it was saved, or that it is empty
        bool present = false, preferred = false;
        bool operator==(const Row&) const = default;
    };
    struct State {
        QString pair{};      ///< symbol and source; empty without a chart
        bool known = false;  ///< the service has told what there is
        bool loading = false, busy = false;
        QString status{};
        bool failed = false;  ///< `status` tells a failure
        std::array<Row, 3> rows{};
        bool operator==(const State&) const = default;
    };
    struct Actions {
        std::function<void(const QString&key)> load, save;
        std::function<void()> refresh;
    };

    using QObject::QObject;

    /// Gives notice when it differs.
    void set(State state) {
        if (std::exchange(state_, std::move(state)) != state_) emit changed();
    }
    void setActions(Actions actions) { actions_ = std::move(actions); }

    QString pair() const { return state_.pair; }
    bool known() const { return state_.known; }
    bool loading() const { return state_.loading; }
    bool busy() const { return state_.busy; }
    QString status() const { return state_.status; }
    bool failed() const { return state_.failed; }
    /// As maps with the names of `Row`.
    QVariantList slotRows() const;

    Q_INVOKABLE void load(const QString& key) {
        if (actions_.load) actions_.load(key);
    }
    Q_INVOKABLE void save(const QString& key) {
        if (actions_.save) actions_.save(key);
    }
    Q_INVOKABLE void refresh() {
        if (actions_.refresh) actions_.refresh();
    }

 signals:
    void changed();

 private:
    State state_;
    Actions actions_;
};

}  // namespace vmr
