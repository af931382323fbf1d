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

 public:
    struct State {
        bool accountPanelOpen = false;
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
    void setAccountPanelOpen(bool open) {
        if (open == state_.accountPanelOpen) return;
        State state = state_;
        state.accountPanelOpen = open;
        set(state);
        if (follower_) follower_(state_);
    }

 signals:
    void changed();

 private:
    State state_;
    Follower follower_;
};

}  // namespace vmr
