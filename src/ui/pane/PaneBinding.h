// Ties a pane's views to its model.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/MarketTimer.h"
#include "base/SerialQueue.h"
#include "base/Signal.h"
#include "base/WeakTask.h"
#include "ui/pane/PaneViewModel.h"
#include "workspace/SettingsEditor.h"

namespace vmr {

class AppModel;
class SimEngine;

/// Keeps `view` as `model` is, and hands the view's gestures to the model, until destroyed. All that it is given must
/// outlive it. Main thread.
///
/// The one path from a model to its views: a change in the model only marks its concern, and one flush on `main`, at
/// most once a turn, copies the marked concerns, which give notice of what differs.
class PaneBinding {
 public:
    /// `sim` is the account whose lines the chart shows; null for none.
    PaneBinding(AppModel& model, PaneViewModel& view, MainLoop& main, const std::string& setupProblem,
                const std::string& signInHint, SimEngine* sim = nullptr);
    ~PaneBinding();
    PaneBinding(const PaneBinding&) = delete;
    PaneBinding& operator=(const PaneBinding&) = delete;

    /// Flushes so far.
    std::uint64_t flushes() const { return flushes_; }

 private:
    enum Concern : unsigned {
        sessionConcern = 1,
        toolbarConcern = 2,
        toastConcern = 4,
        chartConcern = 8,
        panelsConcern = 16,
        templatesConcern = 32,
        settingsConcern = 64,
        clockConcern = 128,
        surfaceConcern = 256,
        pressureConcern = 512,
        everyConcern = ~0U
    };

    void setActions();
    void setSessionActions();
    void bindPanels();
    void watch();
    template <class... Fields>
    void watch(Concern concern, Fields&... fields);
    void mark(Concern concern);
    void flush();
    void closePanels();
    void showClocks();
    void bindPressure();
    void showPressure();
    bool pressureWaits(const HfPressureViewModel::State& now);
    TemplatesViewModel::State templatesState() const;
    SessionViewModel::State sessionState() const;
    ToolbarViewModel::State toolbarState() const;
    ToastViewModel::State toastState() const;

    AppModel& model_;
    PaneViewModel& view_;
    SettingsEditor editor_;
    MainLoop& main_;
    QString setupProblem_, signInHint_;
    unsigned marked_ = 0;  ///< concerns that the next flush copies
    std::uint64_t flushes_ = 0;
    SerialQueue::TimerId daysTimer_ = SerialQueue::noTimer;
    SerialQueue::TimerId pressureTimer_ = SerialQueue::noTimer;  ///< until newer samples are shown
    double pressureShown_ = 0;                                   ///< when samples were, monotonic
    std::vector<Connection> connections_;
    MarketTimer second_;  ///< while a clock is shown
    ClockWatch steered_;
    WeakTask whileThere_;
};

}  // namespace vmr
