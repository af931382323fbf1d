// What one pane's views show, a view model for each concern.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <functional>
#include <string>
#include <utility>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "market/SessionTime.h"
#include "perf/BenchSettings.h"
#include "ui/pane/AccountViewModel.h"
#include "ui/pane/ChartViewModel.h"
#include "ui/pane/ClockViewModel.h"
#include "ui/pane/Gex3DViewModel.h"
#include "ui/pane/OscillatorViewModel.h"
#include "ui/pane/PanelsViewModel.h"
#include "ui/pane/SessionViewModel.h"
#include "ui/pane/TemplatesViewModel.h"
#include "ui/pane/ToastViewModel.h"
#include "ui/pane/ToolbarViewModel.h"
#include "ui/panels/pressure/HfPressureViewModel.h"
#include "ui/panels/settings/SettingsViewModel.h"
#include "ui/panels/sim/SimListViewModel.h"
#include "ui/panels/sim/SimViewModel.h"
#include "ui/widgets/PanelFrames.h"

namespace vmr {

class ChartTrading;
class Perf;

/// Mirrors a pane for QML and passes gestures on; decides nothing about the market. Each concern gives notice of its
/// own, so that a passing notice remakes no menu. Main thread. `PaneBinding` ties it to an `AppModel`; without one it
/// shows what it is told.
class PaneViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window's shell")
    Q_PROPERTY(vmr::SessionViewModel* session READ sessionOf CONSTANT)
    Q_PROPERTY(vmr::ToolbarViewModel* toolbar READ toolbarOf CONSTANT)
    Q_PROPERTY(vmr::ToastViewModel* toast READ toastOf CONSTANT)
    Q_PROPERTY(vmr::ChartViewModel* chart READ chartOf CONSTANT)
    Q_PROPERTY(vmr::ClockViewModel* clocks READ clocksOf CONSTANT)
    Q_PROPERTY(vmr::AccountViewModel* account READ accountOf CONSTANT)
    Q_PROPERTY(vmr::OscillatorViewModel* oscillator READ oscillatorOf CONSTANT)
    Q_PROPERTY(vmr::PanelsViewModel* panels READ panelsOf CONSTANT)
    Q_PROPERTY(vmr::TemplatesViewModel* templates READ templatesOf CONSTANT)
    Q_PROPERTY(vmr::SettingsViewModel* settings READ settingsOf CONSTANT)
    Q_PROPERTY(vmr::HfPressureViewModel* pressure READ pressureOf CONSTANT)
    Q_PROPERTY(vmr::Gex3DViewModel* surface READ surfaceOf CONSTANT)
    Q_PROPERTY(vmr::SimViewModel* sim READ simOf CONSTANT)
    Q_PROPERTY(vmr::SimListViewModel* simList READ simListOf CONSTANT)
    Q_PROPERTY(vmr::PanelFrames* panelFrames READ panelFramesOf CONSTANT)

 public:
    /// What the chart's input reaches beside the pane; null and empty where there is none. All outlive the views.
    struct Surroundings {
        const Clock* clock = nullptr;  ///< market time
        /// The pane's and the account's: on the day of a clock change two of them may answer differently.
        SessionTime* session = nullptr;
        MainLoop* main = nullptr;
        ChartTrading* trading = nullptr;
        Perf* perf = nullptr;
        BenchSettings bench;
        std::function<void(const std::string& line)> print;
        std::function<void()> quit;  ///< at the end of a benchmark
        HfPressure::Switches pressure{};
    };

    using QObject::QObject;

    SessionViewModel session;
    ToolbarViewModel toolbar;
    ToastViewModel toast;
    ChartViewModel chart;
    ClockViewModel clocks;
    AccountViewModel account;
    OscillatorViewModel oscillator;
    PanelsViewModel panels;
    TemplatesViewModel templates;
    SettingsViewModel settings;
    HfPressureViewModel pressure;
    Gex3DViewModel surface;
    SimViewModel sim;
    SimListViewModel simList;
    PanelFrames panelFrames;

    const Surroundings& surroundings() const { return surroundings_; }
    void setSurroundings(Surroundings surroundings) { surroundings_ = std::move(surroundings); }

    /// Gives notice of everything, changed or not: the cost that a benchmark compares with.
    void notifyAll() {
        session.notifyAll();
        toolbar.notifyAll();
        toast.notifyAll();
    }

 private:
    SessionViewModel* sessionOf() { return &session; }
    ToolbarViewModel* toolbarOf() { return &toolbar; }
    ToastViewModel* toastOf() { return &toast; }
    ChartViewModel* chartOf() { return &chart; }
    ClockViewModel* clocksOf() { return &clocks; }
    AccountViewModel* accountOf() { return &account; }
    OscillatorViewModel* oscillatorOf() { return &oscillator; }
    PanelsViewModel* panelsOf() { return &panels; }
    TemplatesViewModel* templatesOf() { return &templates; }
    SettingsViewModel* settingsOf() { return &settings; }
    HfPressureViewModel* pressureOf() { return &pressure; }
    Gex3DViewModel* surfaceOf() { return &surface; }
    SimViewModel* simOf() { return &sim; }
    SimListViewModel* simListOf() { return &simList; }
    PanelFrames* panelFramesOf() { return &panelFrames; }

    Surroundings surroundings_;
};

}  // namespace vmr
