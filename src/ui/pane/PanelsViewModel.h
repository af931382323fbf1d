// Which of a pane's panels are open, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <functional>
#include <utility>

namespace vmr {

/// Main thread.
class PanelsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(bool accountPanelOpen READ accountPanelOpen WRITE setAccountPanelOpen NOTIFY changed)
    Q_PROPERTY(bool templatesPanelOpen READ templatesPanelOpen WRITE setTemplatesPanelOpen NOTIFY changed)
    Q_PROPERTY(bool configPanelOpen READ configPanelOpen WRITE setConfigPanelOpen NOTIFY changed)
    Q_PROPERTY(bool simPanelOpen READ simPanelOpen WRITE setSimPanelOpen NOTIFY changed)

 public:
    struct State {
        bool accountPanelOpen = false;
        bool configPanelOpen = false;
        bool templatesPanelOpen = false;
        bool simPanelOpen = false;
        bool operator==(const State&) const = default;
    };
    /// Hears of what the person opens and closes.
    using Follower = std::function<void(const State& state)>;

    using QObject::QObject;

    /// Gives notice when it differs.
    void set(State state) {
        if (std::exchange(state_, state) != state) emit changed();
    }
    void setFollower(Follower follower) { follower_ = std::move(follower); }

    bool accountPanelOpen() const { return state_.accountPanelOpen; }
    void setAccountPanelOpen(bool open) { setOpen(&State::accountPanelOpen, open); }
    bool templatesPanelOpen() const { return state_.templatesPanelOpen; }
    void setTemplatesPanelOpen(bool open) { setOpen(&State::templatesPanelOpen, open); }
    bool configPanelOpen() const { return state_.configPanelOpen; }
    void setConfigPanelOpen(bool open) { setOpen(&State::configPanelOpen, open); }
    bool simPanelOpen() const { return state_.simPanelOpen; }
    void setSimPanelOpen(bool open) { setOpen(&State::simPanelOpen, open); }

 signals:
    void changed();

 private:
    void setOpen(bool State::*panel, bool open) {
        if (open == state_.*panel) return;
        State state = state_;
        state.*panel = open;
        set(state);
        if (follower_) follower_(state_);
    }

    State state_;
    Follower follower_;
};

}  // namespace vmr
