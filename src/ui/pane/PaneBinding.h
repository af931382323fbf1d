// Ties a pane's views to its model.
#pragma once

#include <string>
#include <vector>

#include "base/Signal.h"
#include "chart/RenderConfig.h"
#include "store/GexConfig.h"
#include "ui/pane/PaneViewModel.h"

namespace vmr {

class AppModel;
class SimEngine;

/// The look of the chart that the settings ask for.
RenderConfig renderConfig(const GexConfig& config);

/// Copies `model` into `view` whenever it changes, and hands the view's gestures to the model, until destroyed. Both
/// must outlive it. Main thread.
class PaneBinding {
 public:
    /// `sim` is the account whose lines the chart shows; null for none.
    PaneBinding(AppModel& model, PaneViewModel& view, const std::string& setupProblem, const std::string& signInHint,
                SimEngine* sim = nullptr);
    ~PaneBinding();
    PaneBinding(const PaneBinding&) = delete;
    PaneBinding& operator=(const PaneBinding&) = delete;

 private:
    void watch();
    void copyFields();
    void copyChart();

    AppModel& model_;
    PaneViewModel& view_;
    QString setupProblem_, signInHint_;
    const OverlayLists* overlays_ = nullptr;
    std::uint64_t overlayRevision_ = 0;
    std::vector<Connection> connections_;
};

}  // namespace vmr
