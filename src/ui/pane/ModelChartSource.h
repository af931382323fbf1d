// What a chart reads of its pane's model.
#pragma once

#include <optional>
#include <vector>

#include "base/Signal.h"
#include "chart/ChartPort.h"
#include "chart/ChartSource.h"
#include "chart/OverlayStyle.h"
#include "chart/RenderConfig.h"
#include "store/GexConfig.h"

namespace vmr {

class AppModel;

/// The look of the chart that the settings ask for.
RenderConfig renderConfig(const GexConfig& config);
OverlayStyle overlayStyle(const GexConfig& config);

/// Tells the chart of what the model changed. The model must outlive it. Main thread.
class ModelChartSource final : public ChartSource {
 public:
    explicit ModelChartSource(AppModel& model);
    ~ModelChartSource() override;
    ModelChartSource(const ModelChartSource&) = delete;
    ModelChartSource& operator=(const ModelChartSource&) = delete;

    /// Null for no chart.
    void setPort(ChartPort* port);

    ChartContent chartContent() const override;
    void interactionEnded() override;
    void marketClosedOrder() override;

 private:
    template <class... Fields>
    void watch(std::uint64_t ChartContent::Revisions::*part, Fields&... fields);
    void changed(std::uint64_t ChartContent::Revisions::*part);

    AppModel& model_;
    ChartPort* port_ = nullptr;
    RenderConfig look_;
    ChartContent::Revisions revisions_{1, 1, 1, 1, 1, 1, 1, 1};
    std::vector<Connection> connections_;
    Connection camera_;
};

}  // namespace vmr
