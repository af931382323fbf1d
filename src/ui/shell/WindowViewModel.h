// What one window shows, as Qt properties: its panes, the divider, and what it asks before the program ends.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <functional>
#include <utility>

#include "ui/pane/PaneViewModel.h"
#include "ui/shell/ActionsViewModel.h"

namespace vmr {

/// Passes on what the person wants of the window; decides nothing about panes. Main thread.
class WindowViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window's shell")
    Q_PROPERTY(vmr::PaneViewModel* pane READ pane CONSTANT)
    Q_PROPERTY(vmr::PaneViewModel* dual READ dual NOTIFY dualChanged)
    Q_PROPERTY(double split READ split WRITE moveSplit NOTIFY splitChanged)
    Q_PROPERTY(bool sync READ sync NOTIFY syncChanged)
    Q_PROPERTY(vmr::ActionsViewModel* actions READ actions CONSTANT)
    Q_PROPERTY(bool pictureTaken READ pictureTaken NOTIFY pictureTakenChanged)
    Q_PROPERTY(QString endNotice READ endNotice NOTIFY endNoticeChanged)

 public:
    /// Each may be empty: then nothing happens.
    struct Actions {
        std::function<void(double share)> moveSplit;  ///< answered by `setSplit`
        std::function<void()> keepSplit;
        std::function<void(bool second)> activate;
        std::function<void()> close;  ///< this window, which may end the program
        std::function<void()> end;    ///< the program
    };

    /// `actions` may be null, for a window whose buttons do nothing.
    explicit WindowViewModel(PaneViewModel& pane, ActionsViewModel* actions = nullptr)
        : pane_(pane), windowActions_(actions) {}
    void setActions(Actions actions) { actions_ = std::move(actions); }

    PaneViewModel* pane() const { return &pane_; }
    /// Null for one pane. It is told before the second pane's view model goes.
    PaneViewModel* dual() const { return dual_; }
    void setDual(PaneViewModel* dual) {
        if (std::exchange(dual_, dual) != dual) emit dualChanged();
    }
    /// Share of the width that the left pane has.
    double split() const { return split_; }
    void setSplit(double share) {
        if (std::exchange(split_, share) != share) emit splitChanged();
    }
    /// Whether the two panes are in step.
    bool sync() const { return sync_; }
    void setSync(bool on) {
        if (std::exchange(sync_, on) != on) emit syncChanged();
    }
    bool secondHasHand() const { return secondHasHand_ && dual_; }
    /// Null without any.
    ActionsViewModel* actions() const { return windowActions_; }
    /// A picture is being taken, which shows no crosshair.
    bool pictureTaken() const { return pictureTaken_; }
    void setPictureTaken(bool taken) {
        if (std::exchange(pictureTaken_, taken) != taken) emit pictureTakenChanged();
    }
    /// What the person should know before the program ends; empty while nothing is asked.
    QString endNotice() const { return endNotice_; }
    void setEndNotice(const QString& text) {
        if (std::exchange(endNotice_, text) != text) emit endNoticeChanged();
    }

    void moveSplit(double share) {
        if (actions_.moveSplit) actions_.moveSplit(share);
    }
    /// At the end of a drag of the divider.
    Q_INVOKABLE void keepSplit() { call(actions_.keepSplit); }
    /// The hand is in this pane: what is typed elsewhere is for it.
    Q_INVOKABLE void activate(bool second) {
        secondHasHand_ = second;
        if (actions_.activate) actions_.activate(second);
    }
    Q_INVOKABLE void closeWindow() { call(actions_.close); }
    /// The answer to `endNotice`.
    Q_INVOKABLE void end() { call(actions_.end); }
    Q_INVOKABLE void stay() { setEndNotice({}); }

 signals:
    void dualChanged();
    void splitChanged();
    void syncChanged();
    void endNoticeChanged();
    void pictureTakenChanged();
    // what the views are to open or to do
    void symbolMenuAsked(bool inSecond);
    void otherPaneAsked();
    void actionListAsked(bool second);

 private:
    static void call(const std::function<void()>& action) {
        if (action) action();
    }

    PaneViewModel& pane_;
    PaneViewModel* dual_ = nullptr;
    double split_ = 0.5;
    bool sync_ = false, pictureTaken_ = false, secondHasHand_ = false;
    ActionsViewModel* const windowActions_;
    QString endNotice_;
    Actions actions_;
};

}  // namespace vmr
