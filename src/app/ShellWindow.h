// One window on the screen, with the view models of its panes.
#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QSize>
#include <functional>
#include <memory>
#include <string>

#include "app/WindowStage.h"
#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "base/WeakTask.h"
#include "model/SimTrading.h"
#include "perf/BenchSettings.h"
#include "ui/pane/PaneBinding.h"
#include "ui/pane/PaneViewModel.h"
#include "ui/shell/ActionsViewModel.h"
#include "ui/shell/HotkeyFilter.h"
#include "ui/shell/PictureViewModel.h"
#include "ui/shell/ServiceViewModel.h"
#include "ui/shell/ShellViewModel.h"
#include "ui/shell/WindowViewModel.h"

class QQmlComponent;
class QQuickWindow;

namespace vmr {

class AppModel;
class HotkeyRouter;
class SettingsTransfer;
class ShellWindows;
class SimEngine;
class WindowPanes;

/// What every window of the process uses; all of it outlives them.
struct WindowKit {
    QQmlComponent& look;
    MainLoop& main;
    SimEngine& sim;
    ServiceViewModel& service;
    ShellWindows& windows;
    SettingsTransfer& settings;
    HotkeyRouter& keys;
    BenchSettings bench;
    HfPressure::Switches pressure;
    std::function<void(std::function<void()>)> later;  ///< runs it in a turn of its own, unless the windows go first
    bool practising = false;                           ///< on the practice market
    std::function<void()> switchPractice;              ///< to it, or from it
    std::function<void(const ShellViewModel::Tell& tell)> checkForUpdates;
    std::string setupProblem, signInHint;  ///< as in `ProgramStart`
    QSize size;                            ///< that the person asked for; empty for none
};

/// Shows `panes` until destroyed. Main thread.
class ShellWindow {
 public:
    /// Kit and panes outlive it.
    ShellWindow(const WindowKit& kit, WindowPanes& panes);
    ~ShellWindow();
    ShellWindow(const ShellWindow&) = delete;
    ShellWindow& operator=(const ShellWindow&) = delete;

    /// Null when the window cannot be made.
    QQuickWindow* window() const { return window_.get(); }
    WindowPanes& panes() const { return panes_; }
    /// The second pane goes: no view refers to its model any more.
    void forget(const AppModel& pane);
    /// Closes the window as its frame's button does; the last one ends the program, after `endNotice` where there is
    /// something to say.
    void close();

 private:
    // The view model of a pane and what ties it to the model. The views may outlive the tie by a turn.
    struct Views : QObject {
        Views(AppModel& model, const WindowKit& kit, int window);
        void setSettingsActions(const WindowKit& kit);
        void resetAccount(const WindowKit& kit);
        AppModel& model;
        SimTrading trading;
        PaneViewModel view;
        std::unique_ptr<PaneBinding> binding;
        Connection panesChanged, keysChanged;
    };
    void setActions();
    ActionsViewModel::Hooks actionHooks();
    ActionContext context(bool second) const;
    void pointerMoved(const std::optional<QPointF>& place, bool byHand);
    void tellPointer();
    bool takeKey(const std::string& chord, bool typing, bool repeated);
    int paneNumber(bool second) const;
    void watchWindow();
    bool perform(WindowDeed deed, bool second);
    bool takePicture();
    void closePopups();
    void follow();
    void closeNow();
    void askToEnd();

    const WindowKit& kit_;
    WindowPanes& panes_;
    std::unique_ptr<Views> first_, second_;
    ActionsViewModel actions_;
    WindowViewModel view_;
    ShellViewModel menu_;
    PictureViewModel picture_;
    std::unique_ptr<QQuickWindow> window_;
    std::unique_ptr<WindowStage> stage_;
    std::unique_ptr<HotkeyFilter> filter_;
    std::optional<QPointF> pointer_;  ///< where it is in the window
    QPointer<QQuickItem> divider_;
    Connection changed_;
    WeakTask whileThere_;
};

}  // namespace vmr
