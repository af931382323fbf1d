// Ties a pane's views to its model.
#pragma once

#include <string>
#include <vector>

#include "base/Signal.h"
#include "chart/ChartContent.h"
#include "chart/ChartPort.h"
#include "chart/OverlayRibbons.h"
#include "ui/pane/PaneViewModel.h"

namespace vmr {

class AppModel;
class SimEngine;

/// Copies `model` into `view` whenever it changes, and hands the view's gestures to the model, until destroyed. Both
/// must outlive it. Main thread.
class PaneBinding final : public ChartPort {
 public:
    /// `sim` is the account whose lines the chart shows; null for none.
    PaneBinding(AppModel& model, PaneViewModel& view, const std::string& setupProblem, const std::string& signInHint,
                SimEngine* sim = nullptr);
    ~PaneBinding() override;
    PaneBinding(const PaneBinding&) = delete;
    PaneBinding& operator=(const PaneBinding&) = delete;

    void contentChanged() override;
    bool interacting() const override { return view_.interacting(); }
    std::optional<Viewport> viewport() const override { return viewport_; }

 private:
    void watch();
    void copyFields();

    AppModel& model_;
    PaneViewModel& view_;
    QString setupProblem_, signInHint_;
    std::optional<Viewport> viewport_;
    OverlayRibbons ribbons_;
    const OverlayLists* overlays_ = nullptr;
    std::uint64_t overlayRevision_ = 0;
    std::uint64_t chart_ = 0;
    ChartContent::Revisions overlaysOf_;
    std::vector<Connection> connections_;
};

}  // namespace vmr
