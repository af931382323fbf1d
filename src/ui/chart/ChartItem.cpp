#include "ui/chart/ChartItem.h"

#include <QCoreApplication>
#include <span>
#include <utility>

#include "base/Log.h"
#include "perf/StartUp.h"
#include "ui/chart/ChartItemDrawing.h"

namespace vmr {

namespace {

template <class T>
std::span<const T> all(const std::vector<T>* list) {
    return list ? std::span<const T>(*list) : std::span<const T>();
}

}  // namespace

ChartItem::ChartItem(QQuickItem* parent) : FrameItem(parent), drawing_(std::make_unique<Drawing>(gpu(), glyphs())) {
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
    setAcceptHoverEvents(true);
    setActiveFocusOnTab(true);
    drawing_->renderer.addScreenLayer(drawing_->barLabels);
    drawing_->renderer.addScreenLayer(drawing_->tradingLines);
    drawing_->renderer.addScreenLayer(drawing_->axis);
    drawing_->renderer.onNeedsDisplay = [this] { requestFrame(); };
    drawing_->renderer.onViewport = [this](double first, double count, double minP, double maxP) {
        if (Perf* perf = drawing_->renderer.perf) perf->bump("ChartOverlay");
        if (pane_ && pane_->chart.actions().viewportChanged)
            pane_->chart.actions().viewportChanged(Viewport{first, count, minP, maxP});
        if (pane_ && pane_->surroundings().bench.baseline) pane_->notifyAll();
    };
    drawing_->renderer.onInteractionEnd = [this] {
        if (pane_ && pane_->chart.actions().interactionEnded) pane_->chart.actions().interactionEnded();
    };
    makeInput();
}

ChartItem::~ChartItem() { leavePane(); }

void ChartItem::leavePane() {
    if (!pane_) return;
    disconnect(&pane_->chart, nullptr, this, nullptr);
    pane_->chart.setInteractingProbe({});
    if (pane_->chart.actions().viewportChanged) pane_->chart.actions().viewportChanged(std::nullopt);
}

PaneViewModel* ChartItem::pane() const { return pane_; }

void ChartItem::setPane(PaneViewModel* pane) {
    if (pane == pane_) return;
    leavePane();
    pane_ = pane;
    makeInput();
    if (pane_) {
        pane_->chart.setInteractingProbe([this] { return drawing_->renderer.interacting(); });
        connect(&pane_->chart, &ChartViewModel::chartChanged, this, &ChartItem::chartTold);
        connect(&pane_->chart, &ChartViewModel::accountChanged, this, &ChartItem::requestFrame);
        drawing_->renderer.setOverlayGeometry({});
        drawing_->renderer.setCandles({});
        chartDirty_ = true;
        drawnOverlays_ = 0;
        requestFrame();
    }
    emit paneChanged();
}

ChartRenderer& ChartItem::renderer() { return drawing_->renderer; }

void ChartItem::geometryChange(const QRectF& now, const QRectF& before) {
    FrameItem::geometryChange(now, before);
    if (now.size() == before.size()) return;
    drawing_->input->setSize(now.width(), now.height());
    updateCrosshair();
}

// Much of what a pane tells changes nothing on the chart. So the news of a turn are taken after it, and the renderer
// finds whether they are worth a frame; while one is on its way, they wait for it.
void ChartItem::chartTold() {
    if (std::exchange(chartDirty_, true) || pump().state() == FramePump::State::asked) return;
    QMetaObject::invokeMethod(this, &ChartItem::takeChart, Qt::QueuedConnection);
}

// The bars come last, so that the camera's rules see the rest as it is.
void ChartItem::takeChart() {
    if (!pane_ || !std::exchange(chartDirty_, false)) return;
    const auto& chart = pane_->chart.chart();
    ChartRenderer& renderer = drawing_->renderer;
    if (drawing_->axis.setTimeframe(chart.timeframe)) requestFrame();
    renderer.sessionHHMM = chart.sessionHHMM;
    renderer.setRenderConfig(chart.config);
    renderer.setLevels(all(chart.levels));
    renderer.setStrikes(all(chart.strikes), chart.etfRatio, chart.flipStrike);
    renderer.setSecStrikes(all(chart.secStrikes), chart.secRatio);
    drawing_->input->simRoot = chart.simRoot;
    if (std::exchange(drawing_->tradingLines.root, chart.simRoot) != chart.simRoot) requestFrame();
    renderer.setBubbles(all(chart.bubbles), all(chart.triangles));
    if (chart.overlays && std::exchange(drawnOverlays_, chart.overlayRevision) != chart.overlayRevision)
        renderer.setOverlayGeometry(*chart.overlays);
    const bool emptied = pane_->chart.empty() && !renderer.candles().empty();
    const auto lastBar = [&] { return renderer.candles().empty() ? 0 : renderer.candles().back().time; };
    const auto before = std::pair(renderer.candles().size(), lastBar());
    renderer.setCandles(all(chart.candles));
    barsMoved_ = barsMoved_ || before != std::pair(renderer.candles().size(), lastBar());
    if (!renderer.candles().empty()) startUpStage("bars");
    if (emptied) requestFrame();
}

bool ChartItem::record(Gpu&, QSizeF size, double pixelRatio, double now) {
    takeChart();
    ChartRenderer& renderer = drawing_->renderer;
    Perf* const perf = renderer.perf;
    if (recordsAgain()) renderer.perf = nullptr;
    const bool moves = renderer.drawFrame(size.width(), size.height(), pixelRatio, now);
    renderer.perf = perf;
    const bool barsMoved = std::exchange(barsMoved_, false);
    if (barsMoved || renderer.camera().snapLerps) updateCrosshair();  // with this frame, not after it
    return moves;
}

bool ChartItem::showsInput() const { return drawing_->renderer.inputLagMs().has_value(); }

void ChartItem::frameShown() {
    if (!drawing_->renderer.candles().empty()) startUpStage("drawn");
}

}  // namespace vmr
