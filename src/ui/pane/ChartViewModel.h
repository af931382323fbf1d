// What a pane's chart draws, and what the chart tells of itself.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "chart/OverlayLists.h"
#include "chart/RenderConfig.h"
#include "market/Records.h"

namespace vmr {

/// Main thread.
class ChartViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    Q_PROPERTY(bool empty READ empty NOTIFY emptyChanged)

 public:
    /// What the chart draws. The lists stay valid until the next `setChart`; null counts as empty.
    struct Chart {
        const std::vector<Candle>* candles = nullptr;
        int timeframe = 1;  ///< minutes a bar
        RenderConfig config;
        int sessionHHMM = 1800;
        const OverlayLists* overlays = nullptr;
        std::uint64_t overlayRevision = 0;  ///< raised when they were rebuilt
        const std::vector<PriceLevel>* levels = nullptr;
        const std::vector<StrikeRow>* strikes = nullptr;
        double etfRatio = 1;
        std::optional<double> flipStrike;
        const std::vector<StrikeRow>* secStrikes = nullptr;
        double secRatio = 1;
        const std::vector<BubblePt>* bubbles = nullptr;
        const std::vector<TrianglePt>* triangles = nullptr;
        std::string simRoot;  ///< empty: no trading on this chart
    };
    struct Actions {
        std::function<void()> marketClosedOrder;  ///< an order was chosen while the market is closed
        std::function<void()> interactionEnded;   ///< a drag of the chart ended
        /// The chart's camera moved; nothing: the chart is gone.
        std::function<void(const std::optional<Viewport>& viewport)> viewportChanged;
    };

    using QObject::QObject;

    void setActions(Actions actions) { actions_ = std::move(actions); }
    const Actions& actions() const { return actions_; }
    /// The chart answers here whether the person drags it; empty takes the chart away.
    void setInteractingProbe(std::function<bool()> probe) { interactingProbe_ = std::move(probe); }
    bool interacting() const { return interactingProbe_ && interactingProbe_(); }

    /// Tells that something of the chart is not what it was. Copies no list.
    void setChart(const Chart& chart) {
        chart_ = chart;
        emit chartChanged();
        if (std::exchange(wasEmpty_, empty()) != wasEmpty_) emit emptyChanged();
    }
    const Chart& chart() const { return chart_; }
    /// Tells that the paper account's lines are not what they were.
    void tellAccountChanged() { emit accountChanged(); }

    bool empty() const { return !chart_.candles || chart_.candles->empty(); }

 signals:
    void emptyChanged();
    void chartChanged();
    void accountChanged();

 private:
    Actions actions_;
    std::function<bool()> interactingProbe_;
    Chart chart_;
    bool wasEmpty_ = true;
};

}  // namespace vmr
